#include "report/RtfRow.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tellurix {

namespace {

constexpr std::size_t MaxCells = 1000;  // beyond what word processors define for a row
constexpr int DefaultCellWidth = 1440;

bool IsEmpty(const RtfRow::Cell& cell) {
  return std::all_of(cell.begin(), cell.end(), [](const Paragraph& one) { return one.runs.empty(); });
}

void MergeWithLast(TableRow& row, RtfRow::Cell cell, int rightEdge, int rightBorder) {
  TableCell& whole = row.cells.back();
  whole.rightEdge = rightEdge;
  whole.borders.right = rightBorder;
  if (!IsEmpty(cell)) std::move(cell.begin(), cell.end(), std::back_inserter(whole.paragraphs));
}

// No line runs between a cell, the next one of its row, and the one above that it is merged with.
void OpenToTheOneAbove(TableCell& cell, std::size_t place, TableRow& rowAbove) {
  cell.borders.top = 0;
  auto& above = rowAbove.cells;
  if (place < above.size() && above[place].rightEdge == cell.rightEdge) above[place].borders.bottom = 0;
}

}  // namespace

Borders RtfRow::CellState::Widths() const {
  const auto width = [](const BorderState& border) { return border.drawn ? border.width : 0; };
  return {width(borders[0]), width(borders[1]), width(borders[2]), width(borders[3])};
}

void RtfRow::SetProperty(const RtfKeyword& keyword, const RtfToken& token) {
  const int length = RtfLength(token);
  switch (keyword.word) {
    case RtfWord::RowDefaults:
      Reset();
      break;
    case RtfWord::RowGap:
      row_.cellGap = length;
      break;
    case RtfWord::Padding:
      padding_ = std::max(padding_, length);
      break;
    case RtfWord::RowLeft:
      row_.leftEdge = length;
      break;
    case RtfWord::RowAlign:
      row_.alignment = static_cast<Alignment>(keyword.value);
      break;
    case RtfWord::RowHeader:
      row_.header = IsOn(token);
      break;
    case RtfWord::CellMerge:
      cell_.merged = true;
      break;
    case RtfWord::CellMergeDown:
      cell_.mergedDown = true;
      break;
    case RtfWord::CellBorder:
      border_ = &cell_.borders[keyword.value];
      *border_ = BorderState{};
      break;
    case RtfWord::OtherBorder:
      border_ = nullptr;
      break;
    case RtfWord::BorderStyle:
      if (border_ != nullptr) border_->drawn = keyword.value != 0;
      break;
    case RtfWord::BorderWidth:
      if (border_ != nullptr) border_->width = std::max(1, length);
      break;
    case RtfWord::CellEdge:
      EndCellState(length);
      break;
    default:
      break;
  }
}

void RtfRow::Reset() {
  row_ = TableRow{};
  row_.cellGap = 0;
  padding_ = 0;
  cells_.clear();
  cell_ = CellState{};
  border_ = nullptr;
}

void RtfRow::EndCellState(int rightEdge) {
  cell_.rightEdge = rightEdge;
  if (cells_.size() < MaxCells) cells_.push_back(cell_);
  cell_ = CellState{};
  border_ = nullptr;
}

void RtfRow::AddTo(Table& table, std::span<Cell> cells) const {
  TableRow row = row_;
  if (row.cellGap == 0) row.cellGap = padding_;
  row.cells.reserve(cells.size());
  int edge = row.leftEdge;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const bool defined = i < cells_.size();
    if (!defined && !cells_.empty() && IsEmpty(cells[i])) continue;  // some writers end a cell too many
    const CellState state = defined ? cells_[i] : CellState{};
    edge = defined ? state.rightEdge : std::min(edge + DefaultCellWidth, MaxRtfLength);
    if (state.merged && !row.cells.empty()) {
      MergeWithLast(row, std::move(cells[i]), edge, state.Widths().right);
      continue;
    }
    TableCell cell{std::move(cells[i]), edge, state.Widths()};
    if (state.mergedDown && !table.rows.empty()) OpenToTheOneAbove(cell, row.cells.size(), table.rows.back());
    row.cells.push_back(std::move(cell));
  }
  table.rows.push_back(std::move(row));
}

}  // namespace tellurix
