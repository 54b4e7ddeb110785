#include "workbook/DelimitedText.h"

#include <fast_float/fast_float.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <system_error>
#include <vector>

#include "numeric/Text.h"
#include "workbook/CellColumn.h"
#include "workbook/TextFile.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MaxCodePointBytes = 4;
constexpr std::size_t MostHeld = std::size_t{1} << 18;  // numbers that wait in all columns

// What stands between the fields of a text that begins like this. Under a decimal comma it is the semicolon, unless
// the first line has commas alone and is not a number itself: such a file comes from elsewhere.
char SeparatorOf(std::string_view start, const Regional& regional) {
  bool quoted = false, hasComma = false, hasSemicolon = false;
  std::size_t length = 0;
  for (; length < start.size(); ++length) {
    const char c = start[length];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '\n' || c == '\r') break;
    if (c == '\t') return '\t';
    hasComma = hasComma || c == ',';
    hasSemicolon = hasSemicolon || c == ';';
  }
  if (regional.decimalSymbol != ",") return hasSemicolon && !hasComma ? ';' : ',';
  return hasComma && !hasSemicolon && !ReadNumber(start.substr(0, length), regional) ? ',' : ';';
}

// How the numbers of a file are written: by the user's rule, but with a point where the decimal symbol separates
// fields.
Regional NumberRule(const Regional& regional, char separator) {
  return regional.decimalSymbol == std::string(1, separator) ? Regional() : regional;
}

// Takes the bytes of a file in chunks and puts the fields into the workbook. Every member that answers false has set
// the error.
class DelimitedReader {
 public:
  // `start` is the beginning of the file.
  DelimitedReader(Workbook& workbook, std::string_view start, const Regional& regional, std::string& error)
      : workbook_(workbook),
        separator_(SeparatorOf(start, regional)),
        rule_(NumberRule(regional, separator_)),
        decimal_(rule_.decimalSymbol.size() == 1 ? rule_.decimalSymbol.front() : '.'),
        error_(error) {}

  bool Read(std::string_view chunk) {
    const char* at = chunk.data();
    const char* const end = at + chunk.size();
    if (skipLineFeed_ && at != end) {
      if (*at == '\n') ++at;
      skipLineFeed_ = false;
    }
    while (at != end) {
      switch (state_) {
        case State::FieldStart:
          if (!lineOpen_ && !OpenLine()) return false;
          if (*at == '"') {
            state_ = State::Quoted;
            isQuoted_ = true;
            fieldLine_ = line_;
            ++at;
            break;
          }
          if (ReadPlainNumber(at, end)) break;
          isQuoted_ = false;
          state_ = State::Plain;
          [[fallthrough]];
        case State::Plain: {
          const char* stop = at;
          while (stop != end && *stop != separator_ && *stop != '\n' && *stop != '\r') ++stop;
          const std::string_view part(at, static_cast<std::size_t>(stop - at));
          at = stop;
          if (stop == end || !held_.empty()) {
            if (!Hold(part)) return false;
            if (stop == end) break;
          }
          if (!EndPlainField(held_.empty() ? part : std::string_view(held_)) || !Delimit(at, end)) return false;
          break;
        }
        case State::Quoted: {
          const char* stop = at;
          while (stop != end && *stop != '"') {
            // CR LF counts once, also across chunks.
            if (*stop == '\r' || (*stop == '\n' && !wasReturn_)) ++line_;
            wasReturn_ = *stop == '\r';
            ++stop;
          }
          if (!Hold({at, static_cast<std::size_t>(stop - at)})) return false;
          at = stop;
          if (stop == end) break;
          wasReturn_ = false;
          state_ = State::QuoteInQuoted;
          ++at;
          break;
        }
        case State::QuoteInQuoted:
          if (*at == '"') {
            if (!Hold("\"")) return false;
            state_ = State::Quoted;
            ++at;
          } else if (*at == separator_ || *at == '\n' || *at == '\r') {
            if (!EndField(held_) || !Delimit(at, end)) return false;
          } else {
            state_ = State::Plain;  // what follows a closing quote belongs to the field as it stands
          }
          break;
      }
    }
    return true;
  }

  bool Finish() {
    if (state_ == State::Quoted) {
      return Fail(fmt::format("A quote that opens in line {} of the file is never closed.", fieldLine_));
    }
    if (lineOpen_ && !(state_ == State::Plain ? EndPlainField(held_) : EndField(held_))) return false;
    Flush();
    return true;
  }

 private:
  enum class State { FieldStart, Plain, Quoted, QuoteInQuoted };

  // Numbers of a column, one below the other, that are not in the sheet yet: those of one segment of the column.
  struct Run {
    int nextRow = 0;
    int endRow = 0;
    std::vector<double> numbers;
  };

  // The usual field, a number without blanks or grouping that ends in this chunk: read where it stands.
  bool ReadPlainNumber(const char*& at, const char* end) {
    double value = 0;
    const auto [stop, problem] = fast_float::from_chars_advanced(
        at, end, value, fast_float::parse_options(fast_float::chars_format::general, decimal_));
    if (problem != std::errc() || stop == end || !std::isfinite(value)) return false;
    if (*stop != separator_ && *stop != '\n' && *stop != '\r') return false;
    AddNumber(value);
    at = stop;
    Delimit(at, end);
    return true;
  }

  // A field that did not end with its closing quote. One that did not begin with a quote either loses the quotes at its
  // ends.
  bool EndPlainField(std::string_view field) {
    if (!isQuoted_ && !field.empty() && std::memchr(field.data(), '"', field.size())) {
      const std::string_view trimmed = Trim(field);
      if (trimmed.size() > 1 && trimmed.starts_with('"') && trimmed.ends_with('"')) field = trimmed;
      if (field.starts_with('"')) field.remove_prefix(1);
      if (field.ends_with('"')) field.remove_suffix(1);
    }
    return EndField(field);
  }

  bool Fail(std::string message) {
    error_ = std::move(message);
    return false;
  }

  bool OpenLine() {
    if (row_ == GridStore::MaxRows) {
      return Fail(
          fmt::format("The file has more than {} rows, which is all that a sheet can hold.", GridStore::MaxRows));
    }
    ++row_;
    column_ = 1;
    lineOpen_ = true;
    return true;
  }

  bool Hold(std::string_view part) {
    // Longer than this in bytes it is too long in characters, whatever it holds; NUL bytes have no place in it either.
    if (held_.size() + part.size() > MaxFieldLength * MaxCodePointBytes) return TooLong();
    held_ += part;
    return true;
  }

  bool TooLong() {
    return Fail(fmt::format("A field in line {} of the file has more than {} characters.", line_, MaxFieldLength));
  }

  // Past the separator or line end at `at`.
  bool Delimit(const char*& at, const char* end) {
    state_ = State::FieldStart;
    held_.clear();
    const char delimiter = *at++;
    if (delimiter == separator_) {
      if (column_ == GridStore::MaxColumns) {
        return Fail(fmt::format("Line {} of the file has more than {} columns, which is all that a sheet can hold.",
                                line_, GridStore::MaxColumns));
      }
      ++column_;
      // A separator at the very end of the file has an empty field after it; lineOpen_ stays.
      return true;
    }
    lineOpen_ = false;
    ++line_;
    if (delimiter == '\r') {
      if (at == end) {
        skipLineFeed_ = true;
      } else if (*at == '\n') {
        ++at;
      }
    }
    return true;
  }

  bool EndField(std::string_view field) {
    if (field.empty()) return true;
    std::string cleaned;
    if (std::memchr(field.data(), 0, field.size())) {
      cleaned = field;
      std::erase(cleaned, '\0');
      field = cleaned;
    }
    if (field.size() > MaxFieldLength && CharacterCount(ToUtf8(field)) > MaxFieldLength) return TooLong();
    if (const auto number = ReadNumber(field, rule_)) {
      AddNumber(*number);
      return true;
    }
    std::string converted;
    if (!IsValidUtf8(field)) {
      converted = ToUtf8(field);
      field = converted;
    }
    workbook_.TextRC(row_, column_, field);
    return true;
  }

  void AddNumber(double number) {
    const auto index = static_cast<std::size_t>(column_ - 1);
    if (index >= runs_.size()) runs_.resize(index + 1);
    Run& run = runs_[index];
    if (run.nextRow != row_ || row_ == run.endRow) {
      HandOver(column_);
      run.nextRow = row_;
      run.endRow = row_ + CellColumn::SegmentRows - (row_ - 1) % CellColumn::SegmentRows;
    }
    run.numbers.push_back(number);
    ++run.nextRow;
    if (++numbersHeld_ == MostHeld) Flush();
  }

  void HandOver(int column) {
    Run& run = runs_[static_cast<std::size_t>(column - 1)];
    if (run.numbers.empty()) return;
    workbook_.SetColumnNumbers(column, run.nextRow - static_cast<int>(run.numbers.size()), run.numbers);
    numbersHeld_ -= run.numbers.size();
    run.numbers.clear();
  }

  void Flush() {
    for (int column = 1; column <= static_cast<int>(runs_.size()); ++column) HandOver(column);
  }

  Workbook& workbook_;
  const char separator_;
  const Regional rule_;
  const char decimal_;
  std::string& error_;
  State state_ = State::FieldStart;
  bool isQuoted_ = false;  // the field began with a quote
  std::string held_;       // of a field that did not come in one piece
  bool lineOpen_ = false;
  bool skipLineFeed_ = false;
  bool wasReturn_ = false;
  int row_ = 0;
  int column_ = 1;
  long long line_ = 1;
  long long fieldLine_ = 1;
  std::vector<Run> runs_;
  std::size_t numbersHeld_ = 0;
};

}  // namespace

bool ReadDelimited(const fs::path& path, Workbook& workbook, const Regional& regional, std::string& error,
                   const Poll& poll) {
  error.clear();
  TextFile file;
  std::string_view chunk;
  if (!file.Open(path, error) || !file.Read(chunk, error)) return false;

  Workbook::Loading loading(workbook);
  workbook.ClearRange({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
  DelimitedReader reader(workbook, chunk, regional, error);
  while (!chunk.empty()) {
    if (!reader.Read(chunk)) return false;
    if (poll && !poll("Reading " + path.filename().string(), file.Share())) return false;
    if (!file.Read(chunk, error)) return false;
  }
  if (!reader.Finish()) return false;
  loading.Accept();
  return true;
}

}  // namespace tellurix
