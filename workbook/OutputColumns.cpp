#include "workbook/OutputColumns.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "numeric/Missing.h"

namespace tellurix {

namespace {

constexpr const char* OutputTitle = "Saving Data to Workbook";
constexpr const char* Reserved = "        ";  // eight blanks mark a column as used

std::size_t RowsOf(const OutputColumn& column) { return std::max(column.values.size(), column.texts.size()); }

std::size_t HeightOf(std::span<const OutputColumn> block) {
  std::size_t height = 0;
  for (const OutputColumn& column : block) height = std::max(height, RowsOf(column));
  return height;
}

int FirstValueRow(int row) { return std::max(row, 0) + 1; }

// As the workbook takes a column: what is not finite is written as "*".
std::vector<double> WithMissingAsNaN(std::vector<double> values) {
  std::ranges::replace(values, MissingValue, std::numeric_limits<double>::quiet_NaN());
  return values;
}

// The row of the list of worksheets for the sheet that is worked on; the first where there is none.
int RowOfActiveSheet(Documents& documents, const std::vector<WorksheetRow>& rows) {
  const Workbook* active = documents.ActiveWorkbook();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (&documents.WorkbookAt(rows[i].workbook) == active && rows[i].sheet == active->Sheet()) {
      return static_cast<int>(i);
    }
  }
  return 0;
}

}  // namespace

bool FitEmptySheet(Host& host, std::size_t columns, const SheetRoom& room) {
  if (columns <= static_cast<std::size_t>(room.lastColumn)) return true;
  std::string text(room.whenFull);
  if (text.empty()) {
    text = fmt::format("The result needs {} columns, but a worksheet has room for {}.", columns, room.lastColumn);
  }
  const NormalPointerHere pointer(host);
  host.ShowMessage({.text = text, .title = OutputTitle, .style = WarningIcon});
  return false;
}

OutputColumns::OutputColumns(Host& host, Documents& documents, Prompts& prompts, ResultsLog& results)
    : host_(host), documents_(documents), prompts_(prompts), results_(results) {}

OutputColumns::~OutputColumns() {
  if (!grid_) return;
  // What was reserved and never written is free again.
  for (int column = before_ + 1; column <= before_ + reserved_; ++column) {
    if (grid_->TextRC(1, column) == Reserved) grid_->TextRC(1, column, "");
  }
  grid_->EndStep();
}

bool OutputColumns::GetOutputColumns(int& columns, const SheetRoom& room) {
  const int wanted = columns;
  if (!FitEmptySheet(host_, static_cast<std::size_t>(wanted), room)) return false;
  if (documents_.WorkbookCount() == 0) {
    grid_ = &documents_.NewWorkbook();
    grid_->BeginStep("New columns");
    workbook_ = 0;
    columns = before_ = 0;
    return true;
  }
  for (;;) {
    const auto rows = prompts_.WorksheetRows();
    const int picked = prompts_.PickFromList("Worksheet", RowOfActiveSheet(documents_, rows));
    if (picked == PickedCancel) return false;
    const WorksheetRow row =
        picked == PickedNew ? WorksheetRow{documents_.WorkbookCount(), 0} : rows[static_cast<std::size_t>(picked)];
    int used = 0;
    if (row.sheet > 0) {
      documents_.ActivateWorkbook(row.workbook);
      Workbook& workbook = documents_.WorkbookAt(row.workbook);
      workbook.Sheet(row.sheet);
      used = workbook.LastCol();
    }
    const bool isFull = wanted + used > room.lastColumn;
    if (isFull && !room.whenFull.empty()) {
      const NormalPointerHere pointer(host_);
      host_.ShowMessage({.text = std::string(room.whenFull), .title = OutputTitle, .style = WarningIcon});
      return false;
    }
    if (isFull || (row.sheet > 0 && documents_.WorkbookAt(row.workbook).SheetLocked())) {
      const NormalPointerHere pointer(host_);
      host_.ShowMessage({.text = isFull ? "The worksheet does not contain enough free columns, please select another."
                                        : "The worksheet is locked, please select another.",
                         .title = OutputTitle,
                         .style = WarningIcon});
      continue;
    }
    Workbook& workbook = picked == PickedNew ? documents_.NewWorkbook() : documents_.WorkbookAt(row.workbook);
    documents_.ActivateWorkbook(row.workbook);
    workbook.BeginStep("New columns");
    if (picked != PickedNew && row.sheet == 0) workbook.Sheet(workbook.AddSheet());
    for (int k = 1; k <= wanted; ++k) workbook.TextRC(1, used + k, Reserved);
    grid_ = &workbook;
    workbook_ = row.workbook;
    reserved_ = wanted;
    columns = before_ = used;
    return true;
  }
}

bool OutputColumns::FitsRows(std::span<const OutputColumn> block, int row) const {
  if (HeightOf(block) <= static_cast<std::size_t>(GridStore::MaxRows - FirstValueRow(row) + 1)) return true;
  const NormalPointerHere pointer(host_);
  host_.ShowMessage({.text = "The worksheet does not contain enough free rows for the result.",
                     .title = OutputTitle,
                     .style = WarningIcon});
  return false;
}

bool OutputColumns::Write(std::span<const OutputColumn> block, int row) {
  if (!grid_ || block.empty() || !FitsRows(block, row)) return false;
  const int firstValueRow = FirstValueRow(row);
  for (std::size_t k = 0; k < block.size(); ++k) {
    const OutputColumn& column = block[k];
    const int target = before_ + static_cast<int>(k) + 1;
    grid_->TextRC(1, target, "");
    if (row < 1) {
      grid_->ColText(target, column.title);
    } else {
      grid_->TextRC(row, target, column.title);
    }
    if (column.texts.empty()) {
      grid_->SetColumnNumbers(target, firstValueRow, WithMissingAsNaN(column.values));
    } else {
      grid_->SetColumnTexts(target, firstValueRow, column.texts);
    }
    results_.Current().columns.push_back(
        {documents_.SheetNames(workbook_)[static_cast<std::size_t>(grid_->Sheet() - 1)], column.title, column.values});
  }
  results_.Current().delivered = true;
  const int lastRow = std::max(1, firstValueRow + static_cast<int>(HeightOf(block)) - 1);
  const CellRange written{1, before_ + 1, lastRow, before_ + static_cast<int>(block.size())};
  grid_->SetColWidthAuto(written, true);
  grid_->SetSelection(written);
  return true;
}

}  // namespace tellurix
