#include "workbook/GridStore.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "numeric/Text.h"

namespace tellurix {

namespace {

// One corner: letters, digits or both; a missing part is 0.
struct Corner {
  int row = 0;
  int column = 0;
};

bool ReadCorner(std::string_view text, Corner& corner) {
  const auto digits = std::min(text.find_first_of("0123456789"), text.size());
  if (digits > 0) {
    corner.column = ColumnNumber(text.substr(0, digits));
    if (corner.column < 1 || corner.column > GridStore::MaxColumns) return false;
  }
  text.remove_prefix(digits);
  if (text.empty()) return digits > 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), corner.row);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  return corner.row >= 1 && corner.row <= GridStore::MaxRows;
}

}  // namespace

std::string ColumnLetters(int column) {
  std::string letters;
  for (; column > 0; column = (column - 1) / 26) letters.push_back(static_cast<char>('A' + (column - 1) % 26));
  std::reverse(letters.begin(), letters.end());
  return letters;
}

int ColumnNumber(std::string_view letters) {
  long long number = 0;
  for (const char c : letters) {
    const char lower = static_cast<char>(c | 0x20);
    if (lower < 'a' || lower > 'z') return 0;
    number = number * 26 + (lower - 'a' + 1);
    if (number > std::numeric_limits<int>::max()) return 0;
  }
  return static_cast<int>(number);
}

std::string RangeText(const CellRange& range) {
  std::string text = ColumnLetters(range.firstColumn) + std::to_string(range.firstRow);
  if (!range.IsOneCell())
    text.append(":").append(ColumnLetters(range.lastColumn)).append(std::to_string(range.lastRow));
  return text;
}

bool ReadRange(std::string_view text, CellRange& range) {
  text = Trim(text);
  const auto colon = text.find(':');
  Corner first;
  Corner last;
  if (!ReadCorner(text.substr(0, colon), first)) return false;
  if (colon == std::string_view::npos) {
    if (first.row == 0 || first.column == 0) return false;
    last = first;
  } else {
    if (!ReadCorner(text.substr(colon + 1), last)) return false;
    if ((first.row == 0) != (last.row == 0) || (first.column == 0) != (last.column == 0)) return false;
  }
  if (first.row == 0) {
    first.row = 1;
    last.row = GridStore::MaxRows;
  }
  if (first.column == 0) {
    first.column = 1;
    last.column = GridStore::MaxColumns;
  }
  range = {std::min(first.row, last.row), std::min(first.column, last.column), std::max(first.row, last.row),
           std::max(first.column, last.column)};
  return true;
}

}  // namespace tellurix
