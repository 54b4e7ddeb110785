#include "workbook/TypedText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "numeric/DateTime.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

using Form = NumberFormat::Form;

constexpr int MostDecimals = 15;
constexpr std::size_t ShortestDate = 6, LongestDate = 48;  // "1/2/03"; "September 12, 2001 01:45:10.123 pm"

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// ---------------------------------------------------------------------------------------------------------------------
// Reading
// ---------------------------------------------------------------------------------------------------------------------

// The exponent makes the reader of numbers divide by 100 without a second rounding.
std::optional<TypedValue> ReadPercentage(std::string_view text, const Regional& regional) {
  text = Trim(text);
  if (text.size() < 2 || text.back() != '%') return std::nullopt;
  text = Trim(text.substr(0, text.size() - 1));
  if (text.empty() || text.find_first_of("eE") != std::string_view::npos) return std::nullopt;
  const auto number = ReadNumber(std::string(text) + "e-2", regional);
  if (!number) return std::nullopt;
  const std::size_t point = text.find(regional.decimalSymbol);
  const std::size_t decimals =
      point == std::string_view::npos ? 0 : text.size() - point - regional.decimalSymbol.size();
  return TypedValue{
      NumberCell, *number,
      NumberFormat{.form = Form::Percent, .decimals = std::min(static_cast<int>(decimals), MostDecimals)}};
}

// Whether it is worth asking: of a million texts most are sorted out here.
bool MayBeDate(std::string_view text) {
  text = Trim(text);
  if (text.size() < ShortestDate || text.size() > LongestDate) return false;
  const bool endsLikeOne = IsDigit(text.back()) || std::string_view("mMzZ").find(text.back()) != std::string_view::npos;
  if (!endsLikeOne) return false;
  // The first letters of the months.
  if (!IsDigit(text.front()) && std::string_view("JFMASONDjfmasond").find(text.front()) == std::string_view::npos)
    return false;
  int separators = 0, digits = 0;
  for (const char c : text) {
    separators += c == '-' || c == '/' || c == '.' || c == ' ';
    digits += IsDigit(c);
  }
  return separators >= 2 && digits >= 3;
}

std::optional<TypedValue> ReadTypedDate(std::string_view text, const Regional& regional) {
  if (!MayBeDate(text)) return std::nullopt;
  const auto moment = ReadMoment(text, regional);
  if (!moment || !moment->hasDate) return std::nullopt;
  const auto colons = std::count(text.begin(), text.end(), ':');
  const Form form = colons == 0 ? Form::Date : colons == 1 ? Form::DateMinutes : Form::DateSeconds;
  return TypedValue{NumberCell, SerialOf(*moment), NumberFormat{.form = form}};
}

// ---------------------------------------------------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------------------------------------------------

// Date and, where there is one or the format shows it, time of day; nothing for a number that is no date.
std::optional<std::string> EditedDate(double number, const NumberFormat& format, const Regional& regional) {
  const auto moment = MomentOfSerial(number);
  if (!moment) return std::nullopt;
  std::string time;
  const bool hasTime = SerialOf(*moment) != std::floor(SerialOf(*moment));
  if (hasTime || format.form != Form::Date) {
    const TimeForm shown = format.form == Form::DateSeconds ? TimeForm::Seconds : TimeForm::Minutes;
    time = " " + TimeText(*moment, std::max(shown, TimeFormOf(*moment)), regional);
  }
  // A region whose own form cannot be read back has the ISO one, which is read everywhere.
  static const Regional iso;
  for (const Regional* written : {&regional, &iso}) {
    std::string text = DateText(*moment, *written) + time;
    const TypedValue read = ReadTyped(text, regional);
    if (read.format && read.format->IsDate() && MomentOfSerial(read.number) == moment) return text;
  }
  return std::nullopt;
}

// The digits of the number with the decimal point moved: no second rounding here either. Nothing for numbers so large
// or small that they are written with an exponent.
std::optional<std::string> EditedPercentage(double number, const Regional& regional) {
  std::string text = fmt::format("{}", number);
  if (text.find_first_not_of("-.0123456789") != std::string::npos) return std::nullopt;
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  std::size_t point = text.find('.');
  if (point == std::string::npos) point = text.size();
  std::string digits = text.substr(first);
  if (point < text.size()) digits.erase(point - first, 1);
  const std::size_t whole = point - first + 2;
  if (digits.size() < whole) digits.append(whole - digits.size(), '0');
  if (whole < digits.size()) digits.insert(whole, 1, '.');
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  if (digits.starts_with('.')) digits.insert(0, 1, '0');
  return Localized(text.substr(0, first) + digits + "%", regional);
}

}  // namespace

TypedValue ReadTyped(std::string_view text, const Regional& regional) {
  if (text.empty()) return {};
  if (const auto number = ReadNumber(text, regional)) return {NumberCell, *number, {}};
  if (const auto percentage = ReadPercentage(text, regional)) return *percentage;
  if (text.size() <= 16) {
    const std::string_view word = Trim(text);
    if (EqualNoCase(word, "TRUE")) return {LogicalCell, -1, {}};
    if (EqualNoCase(word, "FALSE")) return {LogicalCell, 0, {}};
  }
  if (const auto date = ReadTypedDate(text, regional)) return *date;
  return {TextCell, 0, {}};
}

std::string TypedText(double number, const NumberFormat& format, const Regional& regional) {
  std::optional<std::string> text;
  if (format.IsDate()) text = EditedDate(number, format, regional);
  if (format.form == Form::Percent) text = EditedPercentage(number, regional);
  return text ? *text : Localized(fmt::format("{}", number), regional);
}

std::string ExactTypedText(double number, const NumberFormat& format, const Regional& regional) {
  std::string text = TypedText(number, format, regional);
  if (!format.IsDate() || ReadTyped(text, regional).number == number) return text;
  return TypedText(number, {}, regional);
}

}  // namespace tellurix
