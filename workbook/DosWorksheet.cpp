#include "workbook/DosWorksheet.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <vector>

#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Text.h"
#include "report/RtfCodePage.h"
#include "workbook/DelimitedText.h"
#include "workbook/TextFile.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr double EmptyMark = 3.456789e+33;
constexpr int DosCodePage = 850;
constexpr char EndOfDosFile = 0x1A;
constexpr int FirstYear = 100;

// ---------------------------------------------------------------------------------------------------------------------
// Dates
// ---------------------------------------------------------------------------------------------------------------------

bool IsDay(int year, int month, int day) {
  if (year < FirstYear) year += 1900;  // two figures
  return (std::chrono::year(year) / month / day).ok();
}

std::optional<int> WholeNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// 1 to 12 for an English name of at least three letters, else 0.
int MonthOf(std::string_view name) {
  constexpr std::array<const char*, 12> names{"January", "February", "March",     "April",   "May",      "June",
                                              "July",    "August",   "September", "October", "November", "December"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (name.size() >= 3 && StartsWithNoCase(names[i], name)) return static_cast<int>(i) + 1;
  }
  return 0;
}

// A day in any usual order, in figures or with the month's name; a time of day may follow.
bool IsDate(std::string_view text) {
  text = Trim(text);
  if (const auto colon = text.find(':'); colon != std::string_view::npos) {
    text = Trim(text.substr(0, text.substr(0, colon).find_last_of(" T")));
  }
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of("-/., "), text.size());
    if (end > 0) parts.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (parts.size() != 3) return false;
  std::array<int, 3> figures{};
  int named = -1;
  for (std::size_t i = 0; i < 3; ++i) {
    const auto number = WholeNumber(parts[i]);
    if (!number && (named >= 0 || MonthOf(parts[i]) == 0)) return false;
    if (!number) named = static_cast<int>(i);
    figures[i] = number ? *number : MonthOf(parts[i]);
    if (figures[i] < 0) return false;
  }
  const auto [a, b, c] = figures;
  if (named == 0) return IsDay(c, a, b);
  if (named == 1) return IsDay(c, b, a) || IsDay(a, b, c);
  return named < 0 && (IsDay(c, b, a) || IsDay(c, a, b) || IsDay(a, b, c));
}

// ---------------------------------------------------------------------------------------------------------------------
// Items
// ---------------------------------------------------------------------------------------------------------------------

// Free-format input, item by item.
class Items {
 public:
  explicit Items(std::string_view text) : all_(text.size()), rest_(text.substr(0, text.find(EndOfDosFile))) {}

  // The next item without its quotes; nothing at the end.
  std::optional<std::string_view> Text() {
    if (!SkipTo()) return std::nullopt;
    if (rest_.front() != '"') return Trim(TakeTo(",\r\n"));
    rest_.remove_prefix(1);
    const std::string_view item = TakeTo("\"");
    TakeTo(",\r\n");  // what follows the closing quote
    return item;
  }

  // The next item as a number, which a blank ends too.
  std::optional<double> Number() {
    if (!SkipTo()) return std::nullopt;
    std::string_view item = TakeTo(",\r\n \t");
    if (item.size() > 1 && item.starts_with('"') && item.ends_with('"')) item = item.substr(1, item.size() - 2);
    if (item.find_first_of("dD") == std::string_view::npos) return ReadNumber(item, Regional());
    std::string plain(item);  // the exponent of a number of double precision
    std::ranges::replace_if(
        plain, [](char c) { return c == 'd' || c == 'D'; }, 'e');
    return ReadNumber(plain, Regional());
  }

  // A whole number from 0 to `most`.
  std::optional<int> Count(int most) {
    const auto number = Number();
    if (!number || *number < 0 || *number > most || *number != static_cast<int>(*number)) return std::nullopt;
    return static_cast<int>(*number);
  }

  bool AtEnd() { return !SkipTo(); }
  double Share() const { return all_ == 0 ? 1 : static_cast<double>(all_ - rest_.size()) / static_cast<double>(all_); }

 private:
  // Past blanks and line breaks, and the one comma after a number that a blank has ended.
  bool SkipTo() {
    SkipBlanks();
    if (endedByBlank_ && rest_.starts_with(',')) {
      rest_.remove_prefix(1);
      SkipBlanks();
    }
    endedByBlank_ = false;
    return !rest_.empty();
  }

  void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }

  // Up to one of the characters, which is taken too.
  std::string_view TakeTo(std::string_view ends) {
    const auto end = std::min(rest_.find_first_of(ends), rest_.size());
    const std::string_view taken = rest_.substr(0, end);
    endedByBlank_ = end < rest_.size() && (rest_[end] == ' ' || rest_[end] == '\t');
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return taken;
  }

  std::size_t all_;
  std::string_view rest_;
  bool endedByBlank_ = false;
};

struct ColumnHead {
  std::string_view title;
  int rows = 0;
};

// All that comes before the values; false when the text is no worksheet.
bool ReadHeads(Items& items, std::vector<ColumnHead>& heads) {
  const auto columns = items.Count(GridStore::MaxColumns);
  const auto date = columns ? items.Text() : std::nullopt;
  if (!date || *columns < 1 || !IsDate(*date) || !items.Text()) return false;
  for (int i = 0; i < *columns; ++i) {
    const auto title = items.Text();
    const auto rows = title ? items.Count(GridStore::MaxRows - 1) : std::nullopt;  // the title takes a row
    if (!rows) return false;
    heads.push_back({*title, *rows});
  }
  return true;
}

std::string Decoded(std::string_view title) {
  if (IsValidUtf8(title)) return std::string(title);
  RtfDecoder decoder;
  std::string text;
  for (const char c : title) text += decoder.Decode(static_cast<unsigned char>(c), DosCodePage);
  return text + decoder.Flush();
}

// The values of one column beneath its title; false, with the reason in words, when they are not there.
bool ReadValues(Items& items, const ColumnHead& head, int column, Workbook& workbook, std::string& problem) {
  for (int i = 0; i < head.rows; ++i) {
    const bool isOver = items.AtEnd();
    const auto value = items.Number();
    if (!value) {
      problem = isOver ? fmt::format("The file ends after {} of the {} values of column {}.", i, head.rows, column)
                       : fmt::format("Value {} of column {} is not a number.", i + 1, column);
      return false;
    }
    if (*value == EmptyMark) continue;
    if (*value == MissingValue) {
      workbook.TextRC(i + 2, column, "*");
    } else {
      workbook.NumberRC(i + 2, column, *value);
    }
  }
  return true;
}

}  // namespace

bool IsDosWorksheet(const fs::path& path) {
  TextFile file;
  std::string problem;
  std::string_view start;
  if (!file.Open(path, problem) || !file.Read(start, problem)) return false;
  Items items(start);
  std::vector<ColumnHead> heads;
  return ReadHeads(items, heads);
}

bool ReadDosWorksheet(const fs::path& path, Workbook& workbook, std::string& problem, const Poll& poll) {
  problem.clear();
  std::string text;
  if (!ReadWholeText(path, text, problem)) return false;
  Items items(text);
  std::vector<ColumnHead> heads;
  if (!ReadHeads(items, heads)) {
    problem = fmt::format("\"{}\" is not a DOS worksheet.", path.filename().string());
    return false;
  }
  Workbook::Loading loading(workbook);
  workbook.ClearRange({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
  for (int column = 1; column <= static_cast<int>(heads.size()); ++column) {
    const ColumnHead& head = heads[static_cast<std::size_t>(column - 1)];
    const std::string title = Decoded(Trim(head.title));
    if (CharacterCount(title) > MaxFieldLength) {
      problem = fmt::format("The title of column {} has more than {} characters.", column, MaxFieldLength);
      return false;
    }
    workbook.TextRC(1, column, title);
    if (!ReadValues(items, head, column, workbook, problem)) return false;
    if (poll && !poll("Reading " + path.filename().string(), items.Share())) return false;
  }
  loading.Accept();
  return true;
}

}  // namespace tellurix
