#include "workbook/Workbook.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "workbook/TypedText.h"
#include "workbook/WorkbookData.h"

namespace tellurix {

namespace {

constexpr std::string_view MissingMark = "*";

}  // namespace

std::string Displayed(const CellView& cell) {
  switch (std::abs(cell.type)) {
    case NumberCell:
      return GeneralText(cell.number);
    case TextCell:
      return std::string(cell.text);
    case LogicalCell:
      return cell.number != 0 ? "TRUE" : "FALSE";
    default:
      return {};
  }
}

Workbook::Workbook()
    : texts_(std::make_unique<TextPool>()),
      cells_(std::make_unique<Cells>(*this)),
      formulas_(std::make_unique<FormulaEngine>(*cells_)) {
  sheets_.push_back(std::make_shared<SheetData>());
  sheets_.back()->name = "Sheet1";
}

Workbook::~Workbook() = default;

// --- cells ---

const CellColumn* Workbook::ColumnAt(int row, int column) const {
  const auto& columns = Active().columns;
  if (row < 1 || static_cast<std::size_t>(column) - 1 >= columns.size()) return nullptr;
  return columns[Index(column)].get();
}

CellView Workbook::ReadRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->View(row) : CellView{};
}

int Workbook::TypeRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->Type(row) : EmptyCell;
}

double Workbook::NumberRC(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  return cells ? cells->Number(row) : 0;
}

std::string Workbook::TextRC(int row, int column) const { return Displayed(ReadRC(row, column)); }

std::string Workbook::FormattedTextRC(int row, int column) const {
  const CellView cell = ReadRC(row, column);
  if (std::abs(cell.type) != NumberCell) return Displayed(cell);
  const auto& runs = LookRunsAt(column);
  return runs ? FormatNumber(cell.number, looks_[runs->At(row)].number) : Displayed(cell);
}

std::string Workbook::FormattedTextRC(int row, int column, const Regional& regional) const {
  const CellView cell = ReadRC(row, column);
  if (std::abs(cell.type) != NumberCell) return Displayed(cell);
  return FormatNumber(cell.number, NumberFormatAt(row, column), regional);
}

void Workbook::NumberRC(int row, int column, double value) {
  if (!std::isfinite(value)) return TextRC(row, column, MissingMark);
  if (!Fits(row, column) || IsRefused()) return;
  const AutoStep step(*this, "Enter");
  ForCell(column, row).Set(row, value);
  TouchCells(row, column, row, column, true);
}

void Workbook::TextRC(int row, int column, std::string_view text) {
  if (!Fits(row, column) || IsRefused()) return;
  const AutoStep step(*this, text.empty() ? "Clear" : "Enter");
  if (text.empty()) return ClearCells(column, row, row);
  // Interned first: the text may be a view into the very cell.
  const TextRef interned = texts_->Intern(text);
  ForCell(column, row).Set(row, interned);
  TouchCells(row, column, row, column, true);
}

void Workbook::SetLogical(int row, int column, bool value) {
  if (!Fits(row, column) || IsRefused()) return;
  const AutoStep step(*this, "Enter");
  ForCell(column, row).Set(row, value);
  TouchCells(row, column, row, column, true);
}

void Workbook::PutFormula(int row, int column, std::shared_ptr<Formula> formula) {
  if (!Fits(row, column) || IsRefused()) return;
  const AutoStep step(*this, "Enter");
  formulas_->Use();
  ForCell(column, row).Set(row, FormulaRef(std::move(formula)));
  TouchCells(row, column, row, column, true);
}

void Workbook::SetFormula(int row, int column, std::string_view formula, const FormulaResult& result) {
  auto made = std::make_shared<Formula>(formula);
  made->Take(result);
  PutFormula(row, column, std::move(made));
}

void Workbook::Enter(int row, int column, std::string_view text, const Regional& regional) {
  if (NumberFormatAt(row, column).form == NumberFormat::Form::Text) return TextRC(row, column, text);
  if (text.size() > 1 && text[0] == '=') return PutFormula(row, column, std::make_shared<Formula>(text));
  if (text.starts_with('\'')) return TextRC(row, column, text.substr(1));
  const TypedValue value = ReadTyped(text, regional);
  if (value.type == LogicalCell) return SetLogical(row, column, value.number != 0);
  if (value.type != NumberCell) return TextRC(row, column, text);
  const AutoStep step(*this, "Enter");
  NumberRC(row, column, value.number);
  if (value.format) GiveNumberFormats(column, std::array{FormatRun{row, row, *value.format}});
}

FormulaResult Workbook::Compute(std::string_view formula) const {
  const FormulaCode code(formula);
  code.Resolve(*cells_, active_);
  return code.Evaluate(*cells_);
}

std::string Workbook::FormulaText(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  const Formula* formula = cells ? cells->FormulaAt(row) : nullptr;
  return formula ? formula->text : std::string();
}

bool Workbook::IsError(int row, int column) const {
  const CellColumn* cells = ColumnAt(row, column);
  const Formula* formula = cells ? cells->FormulaAt(row) : nullptr;
  return formula && formula->isError;
}

bool Workbook::SetColumnNumbers(int column, int firstRow, std::span<const double> values) {
  if (!Fits(firstRow, column) || values.size() > MaxRows - Index(firstRow) || IsRefused()) return false;
  if (values.empty()) return true;
  const AutoStep step(*this, "Fill");
  CellColumn& cells = ForMany(column);
  const TextRef missing = texts_->Intern(MissingMark);
  const int count = static_cast<int>(values.size());
  for (int i = 0; i < count;) {
    int end = i;
    while (end < count && std::isfinite(values[static_cast<std::size_t>(end)])) ++end;
    cells.Set(firstRow + i, values.subspan(static_cast<std::size_t>(i), static_cast<std::size_t>(end - i)));
    i = end;
    while (end < count && !std::isfinite(values[static_cast<std::size_t>(end)])) ++end;
    const std::vector<TextRef> marks(static_cast<std::size_t>(end - i), missing);
    cells.Set(firstRow + i, std::span<const TextRef>(marks));
    i = end;
  }
  TouchCells(firstRow, column, firstRow + count - 1, column, true);
  return true;
}

bool Workbook::SetColumnTexts(int column, int firstRow, std::span<const std::string> texts) {
  if (!Fits(firstRow, column) || texts.size() > MaxRows - Index(firstRow) || IsRefused()) return false;
  if (texts.empty()) return true;
  const AutoStep step(*this, "Fill");
  CellColumn& cells = ForMany(column);
  std::vector<TextRef> run;
  int row = firstRow;
  const auto flush = [&] {
    cells.Set(row - static_cast<int>(run.size()), std::span<const TextRef>(run));
    run.clear();
  };
  for (const auto& text : texts) {
    if (text.empty()) {
      flush();
      cells.Clear(row, row);
    } else {
      run.push_back(texts_->Intern(text));
    }
    ++row;
    if (run.size() == CellColumn::SegmentRows) flush();
  }
  flush();
  TouchCells(firstRow, column, row - 1, column);
  DropIfEmpty(column);
  return true;
}

// --- extent and sheets ---

int Workbook::LastRow() const { return Active().LastRow(); }
int Workbook::LastCol() const { return static_cast<int>(Active().columns.size()); }

int Workbook::LastRowOf(int column) const {
  const CellColumn* cells = column >= 1 ? Active().Find(column) : nullptr;
  return cells ? cells->LastRow() : 0;
}

void Workbook::Sheet(int index) {
  if (index >= 1 && index <= SheetCount()) active_ = index - 1;
}

std::string Workbook::SheetName(int index) const {
  return index >= 1 && index <= SheetCount() ? sheets_[Index(index)]->name : std::string();
}

int Workbook::FindSheet(std::string_view name) const {
  for (int i = 1; i <= SheetCount(); ++i) {
    if (EqualNoCase(sheets_[Index(i)]->name, name)) return i;
  }
  return 0;
}

bool Workbook::NameIsFree(std::string_view name, int exceptIndex) const {
  if (Trim(name).empty() || CharacterCount(name) > MaxSheetName) return false;
  const int found = FindSheet(name);
  return found == 0 || found == exceptIndex;
}

int Workbook::AddSheet(std::string_view name) {
  std::string given(name);
  for (int n = SheetCount() + 1; given.empty(); ++n) {
    if (const std::string next = "Sheet" + std::to_string(n); FindSheet(next) == 0) given = next;
  }
  if (!NameIsFree(given, 0)) return 0;
  const AutoStep step(*this, "Add sheet");
  LogSheets();
  sheets_.push_back(std::make_shared<SheetData>());
  sheets_.back()->name = std::move(given);
  active_ = SheetCount() - 1;
  return SheetCount();
}

bool Workbook::RenameSheet(int index, std::string_view name) {
  if (index < 1 || index > SheetCount() || !NameIsFree(name, index)) return false;
  const AutoStep step(*this, "Rename sheet");
  LogSheets();
  SheetData& sheet = *sheets_[Index(index)];
  const std::string before = std::exchange(sheet.name, std::string(name));
  RewriteFormulas(
      sheet, [&](const Formula& formula, bool) { return formula.code.AfterRename(formula.text, before, sheet.name); });
  return true;
}

bool Workbook::DeleteSheet(int index) {
  if (index < 1 || index > SheetCount() || SheetCount() == 1 || sheets_[Index(index)]->settings.isLocked) return false;
  const AutoStep step(*this, "Delete sheet");
  LogSheets();
  if (logging_) {
    const SheetData& gone = *sheets_[Index(index)];
    for (const auto& column : gone.columns) open_->bytes += column ? column->OwnBytes() : 0;
  }
  const SheetRef gone = sheets_[Index(index)];
  sheets_.erase(sheets_.begin() + (index - 1));
  if (active_ >= index || active_ == SheetCount()) --active_;
  RewriteFormulas(
      *gone, [&](const Formula& formula, bool) { return formula.code.AfterSheetDeleted(formula.text, gone->name); });
  return true;
}

bool Workbook::MoveSheet(int from, int to) {
  if (from < 1 || from > SheetCount() || to < 1 || to > SheetCount()) return false;
  if (from == to) return true;
  const AutoStep step(*this, "Move sheet");
  LogSheets();
  const SheetRef active = sheets_[static_cast<std::size_t>(active_)];
  const auto first = sheets_.begin() + (from - 1);
  const auto last = sheets_.begin() + (to - 1);
  if (from < to) {
    std::rotate(first, first + 1, last + 1);
  } else {
    std::rotate(last, first, first + 1);
  }
  active_ = static_cast<int>(std::find(sheets_.begin(), sheets_.end(), active) - sheets_.begin());
  return true;
}

// --- selection ---

int Workbook::SelectionCount() const { return static_cast<int>(Active().selection.size()); }

CellRange Workbook::GetSelection(int index) const {
  if (index < 0 || index >= SelectionCount()) return {};
  return Active().selection[static_cast<std::size_t>(index)];
}

std::string Workbook::Selection() const {
  std::string text;
  for (const auto& range : Active().selection) {
    if (!text.empty()) text += ',';
    text += RangeText(range);
  }
  return text;
}

void Workbook::SetSelection(const CellRange& range) {
  SheetData& sheet = Active();
  sheet.selection.assign(1, OnSheet(range));
  sheet.activeRow = sheet.selection[0].firstRow;
  sheet.activeColumn = sheet.selection[0].firstColumn;
}

void Workbook::AddSelection(const CellRange& range) { Active().selection.push_back(OnSheet(range)); }

void Workbook::SetActiveCell(int row, int column) {
  if (!Fits(row, column)) return;
  Active().activeRow = row;
  Active().activeColumn = column;
}

int Workbook::ActiveRow() const { return Active().activeRow; }
int Workbook::ActiveColumn() const { return Active().activeColumn; }

}  // namespace tellurix
