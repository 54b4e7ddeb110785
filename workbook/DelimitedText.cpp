#include "workbook/DelimitedText.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "numeric/Text.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t ChunkBytes = std::size_t{1} << 20;
constexpr std::size_t MaxCodePointBytes = 4;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t RunLength = 1024;                 // numbers of one column that are handed over together
constexpr std::size_t MostHeld = std::size_t{1} << 18;  // numbers that wait in all columns

constexpr int MostBeside = 100;  // names tried for the file beside

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string Reason(int code) { return std::generic_category().message(code); }

// Takes the bytes of a file in chunks and puts the fields into the workbook. Every member that answers false has set
// the error.
class DelimitedReader {
 public:
  DelimitedReader(Workbook& workbook, const Regional& regional, std::string& error)
      : workbook_(workbook),
        regional_(regional),
        plainNumbers_(regional.decimalSymbol == "." && regional.groupingSymbol.empty()),
        error_(error) {}

  // Looks at the first chunk: the byte order mark and the separator. Answers what is to be read of it.
  std::string_view Start(std::string_view chunk) {
    if (chunk.starts_with(ByteOrderMark)) chunk.remove_prefix(ByteOrderMark.size());
    bool quoted = false;
    for (const char c : chunk) {
      if (c == '"') quoted = !quoted;
      if (quoted) continue;
      if (c == '\n' || c == '\r') break;
      if (c == '\t') {
        separator_ = '\t';
        break;
      }
    }
    return chunk;
  }

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
            fieldLine_ = line_;
            ++at;
            break;
          }
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
          if (!EndField(held_.empty() ? part : std::string_view(held_)) || !Delimit(at, end)) return false;
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
    if (lineOpen_ && !EndField(held_)) return false;
    Flush();
    return true;
  }

 private:
  enum class State { FieldStart, Plain, Quoted, QuoteInQuoted };

  // Numbers of a column, one below the other, that are not in the sheet yet.
  struct Run {
    int firstRow = 0;
    std::vector<double> numbers;
  };

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

  std::optional<double> Number(std::string_view field) const {
    if (plainNumbers_) {
      double value = 0;
      const auto [end, problem] = fast_float::from_chars(field.data(), field.data() + field.size(), value);
      if (problem == std::errc() && end == field.data() + field.size() && std::isfinite(value)) return value;
    }
    return ReadNumber(field, regional_);
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
    if (const auto number = Number(field)) {
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
    if (run.firstRow + static_cast<int>(run.numbers.size()) != row_ || run.numbers.size() == RunLength) {
      HandOver(column_);
      run.firstRow = row_;
    }
    run.numbers.push_back(number);
    if (++numbersHeld_ == MostHeld) Flush();
  }

  void HandOver(int column) {
    Run& run = runs_[static_cast<std::size_t>(column - 1)];
    workbook_.SetColumnNumbers(column, std::max(run.firstRow, 1), run.numbers);
    numbersHeld_ -= run.numbers.size();
    run.firstRow += static_cast<int>(run.numbers.size());
    run.numbers.clear();
  }

  void Flush() {
    for (int column = 1; column <= static_cast<int>(runs_.size()); ++column) HandOver(column);
  }

  Workbook& workbook_;
  const Regional& regional_;
  const bool plainNumbers_;
  std::string& error_;
  char separator_ = ',';
  State state_ = State::FieldStart;
  std::string held_;  // of a field that did not come in one piece
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

// A field in its written form.
void AppendField(const CellView& cell, char separator, std::string& to) {
  switch (std::abs(cell.type)) {
    case NumberCell: {
      char digits[40];
      to.append(digits, std::to_chars(digits, digits + sizeof digits, cell.number).ptr);
      return;
    }
    case LogicalCell:
      to += cell.number != 0 ? "TRUE" : "FALSE";
      return;
    case TextCell:
      break;
    default:
      return;
  }
  // Tab and comma always, so that reading finds the same separator; and what would be taken for a byte order mark.
  const char special[] = {separator, '"', '\n', '\r', '\t', ','};
  if (cell.text.find_first_of({special, sizeof special}) == std::string_view::npos &&
      !cell.text.starts_with(ByteOrderMark)) {
    to += cell.text;
    return;
  }
  to += '"';
  for (const char c : cell.text) {
    if (c == '"') to += '"';
    to += c;
  }
  to += '"';
}

}  // namespace

bool ReadDelimited(const fs::path& path, Workbook& workbook, const Regional& regional, std::string& error,
                   const Poll& poll) {
  error.clear();
  const std::string name = path.filename().string();
  std::error_code problem;
  const auto status = fs::status(path, problem);
  if (fs::is_directory(status)) {
    error = fmt::format("\"{}\" is a folder, not a file.", name);
    return false;
  }
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    error = fmt::format("\"{}\" is not a plain file.", name);
    return false;
  }
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    error = fmt::format("\"{}\" cannot be opened: {}.", name, Reason(errno));
    return false;
  }
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // whole chunks are asked for
  const auto size = static_cast<double>(std::max<std::uintmax_t>(fs::file_size(path, problem), 1));

  Workbook::Loading loading(workbook);
  workbook.ClearRange({1, 1, GridStore::MaxRows, GridStore::MaxColumns});
  DelimitedReader reader(workbook, regional, error);
  std::vector<char> buffer(ChunkBytes);
  double done = 0;
  for (bool first = true;; first = false) {
    const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get());
    if (got < buffer.size() && std::ferror(file.get())) {
      error = fmt::format("\"{}\" cannot be read: {}.", name, Reason(errno));
      return false;
    }
    std::string_view chunk(buffer.data(), got);
    if (first) chunk = reader.Start(chunk);
    if (!reader.Read(chunk)) return false;
    if (got < buffer.size()) break;
    done += static_cast<double>(got);
    if (poll && !poll("Reading " + name, std::min(done / size, 1.0))) return false;
  }
  if (!reader.Finish()) return false;
  loading.Accept();
  return true;
}

bool WriteDelimited(const Workbook& workbook, const fs::path& path, char separator, std::string& error) {
  error.clear();
  // Beside the file, so that the rename stays within one file system. A link is followed: what it names is replaced.
  std::error_code problem;
  const bool isLink = fs::is_symlink(fs::symlink_status(path, problem));
  problem.clear();
  const fs::path target = isLink ? fs::canonical(path, problem) : path;
  const auto fail = [&](int code) {
    error = fmt::format("\"{}\" cannot be written: {}.", path.filename().string(), Reason(code));
    return false;
  };
  if (problem) return fail(problem.value());
  fs::path beside;
  File file;
  for (int n = 1; !file; ++n) {
    beside = target;
    beside += fmt::format(".new{}", n);
    file.reset(std::fopen(beside.c_str(), "wbx"));  // never over a file that is there
    if (!file && (errno != EEXIST || n == MostBeside)) return fail(errno);
  }
  const auto drop = [&](int code) {
    file.reset();
    fs::remove(beside, problem);
    return fail(code);
  };

  std::string buffer;
  buffer.reserve(ChunkBytes + ChunkBytes / 4);
  const auto flush = [&] {
    const bool written = std::fwrite(buffer.data(), 1, buffer.size(), file.get()) == buffer.size();
    buffer.clear();
    return written;
  };
  const int lastRow = workbook.LastRow();
  const int lastColumn = workbook.LastCol();
  for (int row = 1; row <= lastRow; ++row) {
    for (int column = 1; column <= lastColumn; ++column) {
      if (column > 1) buffer += separator;
      AppendField(workbook.ReadRC(row, column), separator, buffer);
      if (buffer.size() >= ChunkBytes && !flush()) return drop(errno);
    }
    buffer += '\n';
  }
  if (!flush() || std::fflush(file.get()) != 0) return drop(errno);
  if (std::fclose(file.release()) != 0) return drop(errno);
  if (const auto old = fs::status(target, problem); fs::exists(old))
    fs::permissions(beside, old.permissions(), problem);
  fs::rename(beside, target, problem);
  return problem ? drop(problem.value()) : true;
}

}  // namespace tellurix
