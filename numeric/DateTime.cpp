#include "numeric/DateTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

#include "numeric/Text.h"

namespace tellurix {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days FirstDay = std::chrono::year(1899) / 12 / 30;
constexpr std::int64_t Second = 1000, Minute = 60 * Second, Hour = 60 * Minute, Day = 24 * Hour;
constexpr double LeastSerial = -693593, EndSerial = 2958466;  // 0001-01-01 to the end of 9999-12-31
constexpr int LastYear = 9999;
constexpr int FirstOfTwoFigures = 30;  // 30 is 1930, 29 is 2029
constexpr std::string_view MonthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                           "July",    "August",   "September", "October", "November", "December"};
constexpr std::string_view Digits = "0123456789";

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

year_month_day DateOf(const Moment& moment) {
  return year_month_day(FirstDay + days(FloorDivide(moment.milliseconds, Day)));
}

bool IsNumber(std::string_view text, std::size_t mostFigures) {
  return !text.empty() && text.size() <= mostFigures && text.find_first_not_of(Digits) == std::string_view::npos;
}

int WholeNumber(std::string_view figures) {
  int number = 0;
  std::from_chars(figures.data(), figures.data() + figures.size(), number);
  return number;
}

// ---------------------------------------------------------------------------------------------------------------------
// Dates
// ---------------------------------------------------------------------------------------------------------------------

struct DateParts {
  std::string_view year, month, day;
};

// 1 to 12 of a name of at least three letters, or 0.
int MonthNumber(std::string_view name) {
  for (int k = 0; k < 12; ++k) {
    if (name.size() >= 3 && StartsWithNoCase(MonthNames[k], name)) return k + 1;
  }
  return 0;
}

std::optional<int> YearNumber(std::string_view year) {
  if (year.size() == 4) return WholeNumber(year);
  if (year.size() != 2) return std::nullopt;
  const int number = WholeNumber(year);
  return number + (number < FirstOfTwoFigures ? 2000 : 1900);
}

// The three parts of a date and whether blanks part them: "12 Mar 2001", "March 12, 2001", "12.03.2001".
bool SplitDate(std::string_view text, std::array<std::string_view, 3>& parts, bool& hasBlanks) {
  hasBlanks = false;
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("-/., ", at), text.size());
    if (end == at || count == 3) return false;
    parts[count++] = text.substr(at, end - at);
    at = end;
    if (at == text.size()) break;
    if (text[at] == ',' && (++at == text.size() || text[at] != ' ')) return false;  // only before a blank
    hasBlanks = hasBlanks || text[at] == ' ';
    if (++at == text.size()) return false;
  }
  return count == 3;
}

// Which part is which; false when that cannot be told.
bool ArrangeDate(const std::array<std::string_view, 3>& parts, bool hasBlanks, const Regional& regional,
                 DateParts& date) {
  const auto [a, b, c] = parts;
  if (MonthNumber(b) > 0) {
    date = {c, b, a};
    return IsNumber(a, 2) && IsNumber(c, 4);
  }
  if (MonthNumber(a) > 0) {
    date = {c, a, b};
    return IsNumber(b, 2) && IsNumber(c, 4);
  }
  if (hasBlanks) return false;
  if (a.size() == 4) {
    date = {a, b, c};
    return IsNumber(a, 4) && IsNumber(b, 2) && IsNumber(c, 2);
  }
  const std::size_t day = regional.dateForm.find('d'), month = regional.dateForm.find('m');
  if (regional.dateForm.starts_with('y') || day == std::string::npos || month == std::string::npos) return false;
  date = day < month ? DateParts{c, b, a} : DateParts{c, a, b};
  return IsNumber(a, 2) && IsNumber(b, 2) && IsNumber(c, 4);
}

std::optional<std::int64_t> ReadDate(std::string_view text, const Regional& regional) {
  std::array<std::string_view, 3> parts;
  bool hasBlanks = false;
  DateParts date;
  if (!SplitDate(text, parts, hasBlanks) || !ArrangeDate(parts, hasBlanks, regional, date)) return std::nullopt;
  const auto year = YearNumber(date.year);
  const int named = MonthNumber(date.month);
  const auto month = static_cast<unsigned>(named > 0 ? named : WholeNumber(date.month));
  const year_month_day given{std::chrono::year(year.value_or(0)), std::chrono::month(month),
                             std::chrono::day(static_cast<unsigned>(WholeNumber(date.day)))};
  if (!year || *year < 1 || *year > LastYear || !given.ok()) return std::nullopt;
  return (sys_days(given) - FirstDay).count() * Day;
}

// ---------------------------------------------------------------------------------------------------------------------
// Times of day
// ---------------------------------------------------------------------------------------------------------------------

// "am" or "pm" at the end, taken off; 0 for neither.
char TakeHalfOfDay(std::string_view& text) {
  if (text.size() < 3) return 0;
  const std::string_view end = text.substr(text.size() - 2);
  const char half = EqualNoCase(end, "am") ? 'a' : EqualNoCase(end, "pm") ? 'p' : 0;
  if (half) text = Trim(text.substr(0, text.size() - 2));
  return half;
}

std::optional<std::int64_t> ReadTime(std::string_view text) {
  const char half = TakeHalfOfDay(text);
  std::int64_t fraction = 0;
  if (const auto point = text.find_first_of(".,"); point != std::string_view::npos) {
    const std::string_view figures = text.substr(point + 1);
    if (!IsNumber(figures, 9)) return std::nullopt;
    for (std::size_t k = 0; k < 3; ++k) fraction = fraction * 10 + (k < figures.size() ? figures[k] - '0' : 0);
    text = text.substr(0, point);
    if (std::count(text.begin(), text.end(), ':') != 2) return std::nullopt;
  }
  std::array<int, 3> parts{};
  std::size_t count = 0;
  for (std::size_t at = 0;; ++at) {
    const std::size_t end = std::min(text.find(':', at), text.size());
    const std::string_view part = text.substr(at, end - at);
    if (count == 3 || !IsNumber(part, 2) || (count > 0 && part.size() != 2)) return std::nullopt;
    parts[count++] = WholeNumber(part);
    if ((at = end) == text.size()) break;
  }
  auto [hour, minute, second] = parts;
  if (count < 2 || minute > 59 || second > 59 || (half ? hour < 1 || hour > 12 : hour > 23)) return std::nullopt;
  if (half) hour = hour % 12 + (half == 'p' ? 12 : 0);
  return hour * Hour + minute * Minute + second * Second + fraction;
}

// Where the time of day begins: behind the "T" of ISO text, or behind the last blank that is not one before "am" or
// "pm"; 0 when the whole text is a time.
std::size_t StartOfTime(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return text.size();
  const std::size_t before = text.find_last_of("Tt ", colon);
  return before == std::string_view::npos ? 0 : before + 1;
}

}  // namespace

std::optional<Moment> MomentOfSerial(double serial) {
  if (!(serial >= LeastSerial && serial < EndSerial)) return std::nullopt;
  const std::int64_t milliseconds = std::llround(serial * static_cast<double>(Day));
  // Just before the end it would be the next day, of no year that there is.
  if (milliseconds >= static_cast<std::int64_t>(EndSerial) * Day) return std::nullopt;
  return Moment{milliseconds, true};
}

double SerialOf(const Moment& moment) { return static_cast<double>(moment.milliseconds) / static_cast<double>(Day); }

std::optional<Moment> ReadMoment(std::string_view text, const Regional& regional) {
  text = Trim(text);
  const std::size_t timeAt = StartOfTime(text);
  std::string_view time = text.substr(timeAt);
  if (time.empty()) {
    const auto date = ReadDate(text, regional);
    return date ? std::optional(Moment{*date, true}) : std::nullopt;
  }
  if (timeAt > 0 && (time.back() == 'Z' || time.back() == 'z')) time.remove_suffix(1);
  const auto ofDay = ReadTime(time);
  if (!ofDay) return std::nullopt;
  if (timeAt == 0) return Moment{*ofDay, false};
  const auto date = ReadDate(Trim(text.substr(0, timeAt - 1)), regional);
  return date ? std::optional(Moment{*date + *ofDay, true}) : std::nullopt;
}

std::string DateText(const Moment& moment, const Regional& regional) {
  const year_month_day date = DateOf(moment);
  std::string text = ReplaceAll(regional.dateForm, "yyyy", fmt::format("{:04}", static_cast<int>(date.year())));
  text = ReplaceAll(text, "mm", fmt::format("{:02}", static_cast<unsigned>(date.month())));
  return ReplaceAll(text, "dd", fmt::format("{:02}", static_cast<unsigned>(date.day())));
}

std::string TimeText(const Moment& moment, TimeForm form, const Regional& regional) {
  const std::int64_t ofDay = moment.milliseconds - FloorDivide(moment.milliseconds, Day) * Day;
  std::string text = fmt::format("{:02}:{:02}", ofDay / Hour, ofDay % Hour / Minute);
  if (form != TimeForm::Minutes) text += fmt::format(":{:02}", ofDay % Minute / Second);
  // Of decimal symbols a time knows these two.
  const char point = regional.decimalSymbol == "," ? ',' : '.';
  if (form == TimeForm::Milliseconds) text += fmt::format("{}{:03}", point, ofDay % Second);
  return text;
}

TimeForm TimeFormOf(const Moment& moment) {
  if (moment.milliseconds % Second != 0) return TimeForm::Milliseconds;
  return moment.milliseconds % Minute != 0 ? TimeForm::Seconds : TimeForm::Minutes;
}

std::int64_t IntervalBetween(const Moment& from, const Moment& to, IntervalUnit unit) {
  const auto boundaries = [&](std::int64_t length) {
    return FloorDivide(to.milliseconds, length) - FloorDivide(from.milliseconds, length);
  };
  const year_month_day first = DateOf(from), last = DateOf(to);
  const int years = static_cast<int>(last.year()) - static_cast<int>(first.year());
  switch (unit) {
    case IntervalUnit::Years:
      return years;
    case IntervalUnit::Months:
      return years * 12 + static_cast<int>(static_cast<unsigned>(last.month())) -
             static_cast<int>(static_cast<unsigned>(first.month()));
    case IntervalUnit::Weeks:
      return boundaries(Day) / 7;
    case IntervalUnit::Days:
      return boundaries(Day);
    case IntervalUnit::Hours:
      return boundaries(Hour);
    case IntervalUnit::Minutes:
      return boundaries(Minute);
    default:
      return boundaries(Second);
  }
}

}  // namespace tellurix
