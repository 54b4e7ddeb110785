#include "workbook/data/RotateBlock.h"

#include <algorithm>
#include <new>
#include <optional>

#include "session/Skeleton.h"
#include "workbook/BlockRotation.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Rotate Data Block";
constexpr int MaxRows = 256;  // since they become columns
enum Option { MaintainFormulae, ResultsOnly };

void Refuse(Session& session, const char* text) { ShowMessage(session, text, WarningIcon, Caption); }

// The marked rectangles as far as the sheet is used; single rows count only where there is nothing else.
std::vector<CellRange> MarkedBlock(const Workbook& workbook) {
  std::vector<CellRange> ranges;
  for (int i = 0; i < workbook.SelectionCount(); ++i) {
    CellRange range = workbook.GetSelection(i);
    range.lastRow = std::min(range.lastRow, workbook.LastRow());
    range.lastColumn = std::min(range.lastColumn, workbook.LastCol());
    if (range.lastRow >= range.firstRow && range.lastColumn >= range.firstColumn) ranges.push_back(range);
  }
  const auto isOneRow = [](const CellRange& range) { return range.firstRow == range.lastRow; };
  if (!std::ranges::all_of(ranges, isOneRow)) std::erase_if(ranges, isOneRow);
  return ranges;
}

void Rotate(Session& session) {
  std::vector<RawColumn> columns;
  if (!session.data.SelectRange(1, GridStore::MaxColumns, "Select data to ROTATE", columns)) return;
  const Workbook& workbook = *session.documents.ActiveWorkbook();
  const std::vector<CellRange> ranges = MarkedBlock(workbook);
  if (!ranges.empty() && ranges.front().lastRow - ranges.front().firstRow >= MaxRows) {
    return Refuse(session, "Error: you must select fewer than 257 rows.");
  }
  const auto block = CellBlock::Read(workbook, ranges);
  if (!block) return session.data.ShowInvalidData();
  for (const CellRange& range : ranges) {
    session.results.Current().selection.push_back({"", RangeText(range), range.lastRow - range.firstRow + 1});
  }
  if (!session.prompts.ShowOptions("^Maintain formulae|^Rotate results only",
                                   "Select what happens to formulae in the rotated block")) {
    return;
  }

  OutputColumns output(session.host, session.documents, session.prompts, session.results);
  int before = block->Rows();
  if (!output.GetOutputColumns(before, {.lastColumn = GridStore::MaxColumns,
                                        .whenFull = "Error: not enough room in this sheet for rotation."})) {
    return;
  }
  BusyPointer(session);
  Workbook& target = *output.Grid();
  block->WriteRotated(target, 1, before + 1, session.prompts.OptionOn(MaintainFormulae));
  const CellRange written{1, before + 1, block->Columns(), before + block->Rows()};
  target.SetColWidthAuto(written, true);
  target.SetSelection(written);
  session.results.Current().delivered = true;
  AfterDataCommand(session);
}

}  // namespace

void RotateDataBlock(Session& session) {
  try {
    Rotate(session);
  } catch (const std::bad_alloc&) {
    Refuse(session, "Error: not enough memory for this operation.");
    NormalPointer(session);
  }
}

}  // namespace tellurix
