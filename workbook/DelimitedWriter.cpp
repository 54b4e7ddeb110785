#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <vector>

#include "workbook/DelimitedText.h"
#include "workbook/FileBeside.h"
#include "workbook/TypedText.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t ChunkBytes = std::size_t{1} << 20;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

// Puts fields in their written form.
class FieldWriter {
 public:
  FieldWriter(char separator, const Regional& regional)
      : decimalSymbol_(regional.decimalSymbol),
        // Every separator that there is, so that reading finds the same one.
        special_({separator, '"', '\n', '\r', '\t', ',', ';'}) {}

  void Append(const CellView& cell, const NumberFormat& format, std::string& to) const {
    switch (std::abs(cell.type)) {
      case NumberCell:
        if (!format.IsDate()) return AppendNumber(cell.number, to);
        to += TypedText(cell.number, format, iso_);
        return;
      case LogicalCell:
        to += cell.number != 0 ? "TRUE" : "FALSE";
        return;
      case TextCell:
        return AppendText(cell.text, to);
      default:
        return;
    }
  }

 private:
  void AppendNumber(double number, std::string& to) const {
    char digits[40];
    char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    char* const point = decimalSymbol_ == "." ? end : std::find(digits, end, '.');
    to.append(digits, point);
    if (point == end) return;
    to += decimalSymbol_;
    to.append(point + 1, end);
  }

  void AppendText(std::string_view text, std::string& to) const {
    // What would be taken for a byte order mark is quoted too.
    if (text.find_first_of(special_) == std::string_view::npos && !text.starts_with(ByteOrderMark)) {
      to += text;
      return;
    }
    to += '"';
    for (const char c : text) {
      if (c == '"') to += '"';
      to += c;
    }
    to += '"';
  }

  const Regional iso_;
  std::string decimalSymbol_;
  std::string special_;
};

// Ranges without the rows and columns in which the sheet has nothing.
std::vector<CellRange> InUse(const Workbook& workbook, std::span<const CellRange> ranges) {
  std::vector<CellRange> used;
  for (CellRange range : ranges) {
    range.lastRow = std::min(range.lastRow, workbook.LastRow());
    range.lastColumn = std::min(range.lastColumn, workbook.LastCol());
    if (range.firstRow <= range.lastRow && range.firstColumn <= range.lastColumn) used.push_back(range);
  }
  return used;
}

}  // namespace

bool WriteDelimited(const Workbook& workbook, std::span<const CellRange> ranges, const fs::path& path, char separator,
                    const Regional& regional, std::string& error) {
  error.clear();
  FileBeside file(path);
  const auto fail = [&] {
    error = fmt::format("{}: {}", path.filename().string(), file.Problem());
    return false;
  };
  if (!file.IsMade()) return fail();
  const std::vector<CellRange> used = InUse(workbook, ranges);
  int rows = 0;
  for (const CellRange& range : used) rows = std::max(rows, range.lastRow - range.firstRow + 1);
  const FieldWriter fields(separator, regional);
  std::string buffer;
  buffer.reserve(ChunkBytes + ChunkBytes / 4);
  for (int row = 0; row < rows; ++row) {
    bool isFirst = true;
    for (const CellRange& range : used) {
      for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
        if (!isFirst) buffer += separator;
        isFirst = false;
        if (const int at = range.firstRow + row; at <= range.lastRow) {
          fields.Append(workbook.ReadRC(at, column), workbook.NumberFormatAt(at, column), buffer);
        }
        if (buffer.size() < ChunkBytes) continue;
        if (!file.Write(buffer)) return fail();
        buffer.clear();
      }
    }
    buffer += '\n';
  }
  return (file.Write(buffer) && file.PutInPlace()) || fail();
}

bool WriteDelimited(const Workbook& workbook, const fs::path& path, char separator, std::string& error,
                    const Regional& regional) {
  const CellRange all{1, 1, GridStore::MaxRows, GridStore::MaxColumns};
  return WriteDelimited(workbook, {&all, 1}, path, separator, regional, error);
}

char CsvSeparator(const Regional& regional) { return regional.decimalSymbol == "," ? ';' : ','; }

}  // namespace tellurix
