// Headings, widths, heights, looks and settings.
#include <algorithm>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

#include "numeric/Text.h"
#include "workbook/WorkbookData.h"

namespace tellurix {

namespace {

constexpr double NarrowestFit = 8;
constexpr double WidestFit = 60;
constexpr int FirstCellsFitted = 1000;
constexpr int SampledCellsFitted = 1000;

// Characters of "2001-03-12 13:45:10" and its beginnings; 0 of other formats.
double WidthOfDate(NumberFormat::Form form) {
  switch (form) {
    case NumberFormat::Form::Date:
      return 10;
    case NumberFormat::Form::DateMinutes:
      return 16;
    case NumberFormat::Form::DateSeconds:
      return 19;
    default:
      return 0;
  }
}

}  // namespace

std::string Workbook::ColText(int column) const { return Active().HeadingAt(ColumnHeadings, column); }
std::string Workbook::RowText(int row) const { return Active().HeadingAt(RowHeadings, row); }

int Workbook::LastTitledRow() const {
  const CellColumn* titles = Active().Find(RowHeadings);
  return titles ? titles->LastRow() : 0;
}

int Workbook::LastTitledColumn() const {
  const CellColumn* titles = Active().Find(ColumnHeadings);
  return titles ? titles->LastRow() : 0;
}

void Workbook::SetHeading(int slot, int at, std::string_view text) {
  if (IsRefused() || (text.empty() && Active().HeadingAt(slot, at).empty())) return;
  const AutoStep step(*this, "Heading");
  if (text.empty()) {
    ForCell(slot, at).Clear(at, at);
    DropIfEmpty(slot);
  } else {
    const TextRef interned = texts_->Intern(text);
    ForCell(slot, at).Set(at, interned);
  }
  if (slot == RowHeadings) {
    Touch(WorkbookChange::Kind::Headings, at, 0, at, 0);
  } else {
    Touch(WorkbookChange::Kind::Headings, 0, at, 0, at);
  }
}

void Workbook::ColText(int column, std::string_view text) {
  if (Fits(1, column)) SetHeading(ColumnHeadings, column, text);
}

void Workbook::RowText(int row, std::string_view text) {
  if (Fits(row, 1)) SetHeading(RowHeadings, row, text);
}

double Workbook::ColumnWidth(int column) const {
  const CellColumn* widths = Active().Find(Widths);
  if (!widths || column < 1 || widths->Type(column) != NumberCell) return settings_.columnWidth;
  return widths->Number(column);
}

void Workbook::SetColumnWidth(int column, double width) {
  if (!Fits(1, column)) return;
  const bool toDefault = !std::isfinite(width) || width < 0;
  const CellColumn* widths = Active().Find(Widths);
  if (toDefault && (!widths || widths->Type(column) == EmptyCell)) return;
  const AutoStep step(*this, "Column width");
  if (toDefault) {
    ForCell(Widths, column).Clear(column, column);
    DropIfEmpty(Widths);
  } else {
    ForCell(Widths, column).Set(column, width);
  }
  Touch(WorkbookChange::Kind::Widths, 0, column, 0, column);
}

void Workbook::SetColWidthAuto(const CellRange& range, bool defaults) {
  const CellRange fitted = OnSheet(range);
  const AutoStep step(*this, "Column width");
  const CellColumn* headings = Active().Find(ColumnHeadings);
  const CellColumn* widths = Active().Find(Widths);
  // Beyond all of these there is nothing to fit and nothing to put back.
  const int used = std::max({LastCol(), headings ? headings->LastRow() : 0, widths ? widths->LastRow() : 0});
  for (int column = fitted.firstColumn; column <= std::min(fitted.lastColumn, used); ++column) {
    std::size_t widest = DisplayWidth(ColText(column));
    if (const CellColumn* cells = ColumnAt(1, column)) {
      const auto measure = [&](int row) { widest = std::max(widest, DisplayWidth(FormattedTextRC(row, column))); };
      const int last = std::min(fitted.lastRow, cells->LastRow());
      const int dense = std::min<long long>(last, fitted.firstRow + FirstCellsFitted - 1LL);
      for (int row = fitted.firstRow; row <= dense; ++row) measure(row);
      const int stride = std::max(1, (last - dense) / SampledCellsFitted + 1);
      for (int row = dense + stride; row <= last; row += stride) measure(row);
    }
    if (widest > 0) {
      SetColumnWidth(column, std::clamp(static_cast<double>(widest), NarrowestFit, WidestFit));
    } else if (defaults) {
      SetColumnWidth(column, -1);
    }
  }
}

double Workbook::RowHeight(int row) const {
  const CellColumn* heights = Active().Find(Heights);
  if (!heights || row < 1 || heights->Type(row) != NumberCell) return settings_.rowHeight;
  return heights->Number(row);
}

void Workbook::SetRowHeight(int firstRow, int lastRow, double height) {
  if (!Fits(firstRow, 1) || !Fits(lastRow, 1) || firstRow > lastRow) return;
  const bool toDefault = !std::isfinite(height) || height < 0;
  const CellColumn* heights = Active().Find(Heights);
  if (toDefault && (!heights || heights->IsEmpty(firstRow, lastRow))) return;
  const AutoStep step(*this, "Row height");
  if (toDefault) {
    ForMany(Heights).Clear(firstRow, lastRow);
    DropIfEmpty(Heights);
  } else if (firstRow == lastRow) {
    ForCell(Heights, firstRow).Set(firstRow, height);
  } else {
    const std::vector<double> all(static_cast<std::size_t>(lastRow - firstRow + 1), height);
    ForMany(Heights).Set(firstRow, std::span<const double>(all));
  }
  Touch(WorkbookChange::Kind::Heights, firstRow, 0, lastRow, 0);
}

// --- looks ---

const std::shared_ptr<const LookRuns>& Workbook::LookRunsAt(int column) const {
  static const std::shared_ptr<const LookRuns> none;
  const SheetLooks& looks = *Active().looks;
  return column >= 1 && Index(column) < looks.size() ? looks[Index(column)] : none;
}

CellLook Workbook::LookAt(int row, int column) const {
  const auto& runs = LookRunsAt(column);
  return runs && row >= 1 ? looks_[runs->At(row)] : CellLook();
}

NumberFormat Workbook::NumberFormatAt(int row, int column) const {
  const auto& runs = LookRunsAt(column);
  return runs && row >= 1 ? looks_[runs->At(row)].number : NumberFormat();
}

std::vector<Workbook::LookRun> Workbook::LooksDown(int column) const {
  std::vector<LookRun> looks;
  const auto& runs = LookRunsAt(column);
  if (!runs || runs->At(1) == 0) looks.push_back({});
  if (runs) {
    runs->EachRun([&](int firstRow, std::uint32_t look) { looks.push_back({firstRow, looks_[look]}); });
  }
  return looks;
}

int Workbook::LastLookColumn() const { return static_cast<int>(Active().looks->size()); }

std::uint32_t Workbook::NumberOf(const CellLook& look) {
  const auto found = std::find(looks_.begin(), looks_.end(), look);
  const auto number = static_cast<std::uint32_t>(found - looks_.begin());
  if (found == looks_.end()) looks_.push_back(look);
  return number;
}

// Gives the active sheet other looks. Within a step; of changes that follow one another only the first is recorded.
void Workbook::ReplaceLooks(SheetLooks looks) {
  const SheetLooks& old = *Active().looks;
  for (std::size_t i = 0; i < looks.size(); ++i) {
    auto& column = looks[i];
    if (column && column->IsPlain()) column = nullptr;
    if (column && i < old.size() && old[i] && *column == *old[i]) column = old[i];
  }
  while (!looks.empty() && !looks.back()) looks.pop_back();
  const SheetRef& sheet = sheets_[static_cast<std::size_t>(active_)];
  if (looks == *sheet->looks) return;
  const auto* last = open_->log.empty() ? nullptr : std::get_if<LooksChange>(&open_->log.back());
  if (!last || last->sheet != sheet) {
    if (logging_) open_->bytes += sheet->looks->size() * sizeof(looks[0]);
    Log(LooksChange{sheet, sheet->looks});
  }
  sheet->looks = std::make_shared<const SheetLooks>(std::move(looks));
}

bool Workbook::SetLook(const CellRange& range, const LookChange& change) {
  if (!IsOnSheet(range) || IsRefused()) return false;
  const AutoStep step(*this, "Format");
  // Looks that are alike before are so after.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> known;
  const auto changed = [&](std::uint32_t look) {
    for (const auto& [from, to] : known) {
      if (from == look) return to;
    }
    const std::uint32_t to = NumberOf(change.AppliedTo(looks_[look]));
    known.emplace_back(look, to);
    return to;
  };
  SheetLooks looks = *Active().looks;
  looks.resize(std::max(looks.size(), static_cast<std::size_t>(range.lastColumn)));
  static const auto plain = std::make_shared<const LookRuns>();
  std::shared_ptr<const LookRuns> before;  // of the column to the left
  std::shared_ptr<const LookRuns> after;
  for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
    auto& runs = looks[Index(column)];
    if (!after || runs != before) {
      before = runs;
      const LookRuns& old = runs ? *runs : *plain;
      after = std::make_shared<const LookRuns>(old.Changed(range.firstRow, range.lastRow, changed));
    }
    runs = after;
  }
  ReplaceLooks(std::move(looks));
  Touch(WorkbookChange::Kind::Looks, range.firstRow, range.firstColumn, range.lastRow, range.lastColumn);
  return true;
}

bool Workbook::GiveNumberFormats(int column, std::span<const FormatRun> runs) {
  if (runs.empty()) return true;
  if (!Fits(runs.front().firstRow, column) || !Fits(runs.back().lastRow, column) || IsRefused()) return false;
  const AutoStep step(*this, "Format");
  std::vector<std::pair<int, std::uint32_t>> given;  // the looks that come of it
  auto run = runs.begin();
  const auto give = [&](int firstRow, int lastRow, std::uint32_t look) {
    int row = firstRow;
    const bool isGeneral = looks_[look].number.form == NumberFormat::Form::General;
    while (run != runs.end() && run->lastRow < firstRow) ++run;
    for (auto next = run; isGeneral && next != runs.end() && next->firstRow <= lastRow; ++next) {
      if (next->firstRow > row) given.emplace_back(row, look);
      const LookChange change{.number = next->format};
      given.emplace_back(std::max(next->firstRow, row), NumberOf(change.AppliedTo(looks_[look])));
      row = next->lastRow + 1;
    }
    if (row <= lastRow) given.emplace_back(row, look);
  };
  int firstRow = 1;
  std::uint32_t look = 0;
  if (const auto& before = LookRunsAt(column)) {
    before->EachRun([&](int row, std::uint32_t next) {
      if (row > firstRow) give(firstRow, row - 1, look);
      firstRow = row;
      look = next;
    });
  }
  give(firstRow, MaxRows, look);
  SheetLooks looks = *Active().looks;
  looks.resize(std::max(looks.size(), static_cast<std::size_t>(column)));
  looks[Index(column)] = std::make_shared<const LookRuns>(given);
  ReplaceLooks(std::move(looks));
  Touch(WorkbookChange::Kind::Looks, runs.front().firstRow, column, runs.back().lastRow, column);
  double widest = 0;
  for (const FormatRun& each : runs) widest = std::max(widest, WidthOfDate(each.format.form));
  const double width = ColumnWidth(column);
  const bool hasOwnWidth = width != settings_.columnWidth && width != WidthOfDate(NumberFormat::Form::DateMinutes);
  if (!hasOwnWidth && width < widest) SetColumnWidth(column, widest);
  return true;
}

void Workbook::ShiftLooks(const CellsMoved& moved) {
  if (Active().looks->empty()) return;
  SheetLooks looks = *Active().looks;
  const auto size = static_cast<int>(looks.size());
  if (moved.rows) {
    for (int column = moved.firstAcross; column <= std::min(moved.lastAcross, size); ++column) {
      auto& runs = looks[Index(column)];
      if (runs) runs = std::make_shared<const LookRuns>(runs->Shifted(moved.at, moved.inserted, moved.deleted));
    }
  } else if (moved.lastAcross - moved.firstAcross + 1 == MaxRows) {
    const auto at = looks.begin() + std::min(moved.at - 1, size);
    if (moved.inserted > 0) {
      const auto left = moved.at > 1 ? LookRunsAt(moved.at - 1) : LookRunsAt(1);
      looks.insert(at, static_cast<std::size_t>(moved.inserted), left);
      if (looks.size() > MaxColumns) looks.resize(MaxColumns);
    } else {
      looks.erase(at, at + std::min<std::ptrdiff_t>(moved.deleted, looks.end() - at));
    }
  } else {
    const int rows = moved.lastAcross - moved.firstAcross + 1;
    const SheetLooks before = looks;
    static const LookRuns plain;
    const auto old = [&](int column) -> const LookRuns& {
      return column >= 1 && column <= size && before[Index(column)] ? *before[Index(column)] : plain;
    };
    const int last = std::min(size + moved.inserted, MaxColumns);
    looks.resize(std::max(looks.size(), static_cast<std::size_t>(last)));
    for (int column = moved.at; column <= last; ++column) {
      const bool isNew = column < moved.at + moved.inserted;
      const int from = isNew ? std::max(moved.at - 1, 1) : column - moved.inserted + moved.deleted;
      looks[Index(column)] =
          std::make_shared<const LookRuns>(old(column).With(old(from), moved.firstAcross, rows, moved.firstAcross));
    }
  }
  ReplaceLooks(std::move(looks));
}

void Workbook::CopyLooks(const CellRange& from, int toRow, int toColumn) {
  const SheetLooks before = *Active().looks;
  const int size = static_cast<int>(before.size());
  const int columns =
      std::min(from.lastColumn - from.firstColumn + 1, std::max(size - from.firstColumn, size - toColumn) + 1);
  if (columns <= 0) return;
  const int rows = from.lastRow - from.firstRow + 1;
  SheetLooks looks = before;
  looks.resize(std::max(before.size(), static_cast<std::size_t>(toColumn + columns - 1)));
  static const LookRuns plain;
  for (int i = 0; i < columns; ++i) {
    const std::size_t source = Index(from.firstColumn + i);
    auto& runs = looks[Index(toColumn + i)];
    const LookRuns& old = source < before.size() && before[source] ? *before[source] : plain;
    runs = std::make_shared<const LookRuns>((runs ? *runs : plain).With(old, from.firstRow, rows, toRow));
  }
  ReplaceLooks(std::move(looks));
  Touch(WorkbookChange::Kind::Looks, toRow, toColumn, toRow + rows - 1, toColumn + columns - 1);
}

// Looks of the first row go down the others, or those of the first column to the right.
void Workbook::FillLooks(const CellRange& range, bool isDown) {
  if (Active().looks->empty()) return;
  SheetLooks looks = *Active().looks;
  static const LookRuns plain;
  if (isDown) {
    for (int column = range.firstColumn; column <= std::min(range.lastColumn, static_cast<int>(looks.size()));
         ++column) {
      auto& runs = looks[Index(column)];
      if (!runs) continue;
      const std::uint32_t first = runs->At(range.firstRow);
      runs = std::make_shared<const LookRuns>(
          runs->Changed(range.firstRow + 1, range.lastRow, [&](std::uint32_t) { return first; }));
    }
  } else {
    const auto source = LookRunsAt(range.firstColumn);
    const int rows = range.lastRow - range.firstRow + 1;
    looks.resize(std::max(looks.size(), static_cast<std::size_t>(range.lastColumn)));
    for (int column = range.firstColumn + 1; column <= range.lastColumn; ++column) {
      auto& runs = looks[Index(column)];
      runs = std::make_shared<const LookRuns>(
          (runs ? *runs : plain).With(source ? *source : plain, range.firstRow, rows, range.firstRow));
    }
  }
  ReplaceLooks(std::move(looks));
  Touch(WorkbookChange::Kind::Looks, range.firstRow, range.firstColumn, range.lastRow, range.lastColumn);
}

// Each row's look goes where its cells go.
void Workbook::ArrangeLooks(const CellRange& range, std::span<const std::uint32_t> order) {
  if (Active().looks->empty()) return;
  SheetLooks looks = *Active().looks;
  const int last = std::min(range.lastColumn, static_cast<int>(looks.size()));
  for (int column = range.firstColumn; column <= last; ++column) {
    auto& runs = looks[Index(column)];
    if (!runs) continue;
    std::vector<std::uint32_t> before;
    before.reserve(order.size());
    for (int row = range.firstRow; row <= range.lastRow; ++row) before.push_back(runs->At(row));
    std::vector<std::pair<int, std::uint32_t>> moved;
    for (std::size_t i = 0; i < order.size(); ++i) {
      const std::uint32_t look = before[order[i]];
      if (moved.empty() || moved.back().second != look) moved.emplace_back(static_cast<int>(i) + 1, look);
    }
    runs = std::make_shared<const LookRuns>(
        runs->With(LookRuns(moved), 1, static_cast<int>(order.size()), range.firstRow));
  }
  ReplaceLooks(std::move(looks));
  Touch(WorkbookChange::Kind::Looks, range.firstRow, range.firstColumn, range.lastRow, range.lastColumn);
}

// --- settings ---

const SheetSettings& Workbook::SettingsOfSheet() const { return Active().settings; }

void Workbook::SetSettingsOfSheet(const SheetSettings& settings) {
  SheetData& sheet = Active();
  SheetSettings made = settings;
  made.isLocked = sheet.settings.isLocked;
  made.frozenRows = std::clamp(made.frozenRows, 0, MaxRows - 1);
  made.frozenColumns = std::clamp(made.frozenColumns, 0, MaxColumns - 1);
  if (made == sheet.settings) return;
  const AutoStep step(*this, "Sheet settings");
  Log(SheetSettingsChange{sheets_[static_cast<std::size_t>(active_)], sheet.settings});
  sheet.settings = made;
  Touch(WorkbookChange::Kind::Settings, 1, 1, 1, 1);
}

void Workbook::LockSheet(bool locked) {
  SheetData& sheet = Active();
  if (sheet.settings.isLocked == locked) return;
  const AutoStep step(*this, locked ? "Lock sheet" : "Unlock sheet");
  Log(SheetSettingsChange{sheets_[static_cast<std::size_t>(active_)], sheet.settings});
  sheet.settings.isLocked = locked;
  Touch(WorkbookChange::Kind::Settings, 1, 1, 1, 1);
}

void Workbook::SetSettings(const WorkbookSettings& settings) {
  if (settings == settings_) return;
  const AutoStep step(*this, "Workbook options");
  Log(SettingsChange{std::make_unique<WorkbookSettings>(settings_)});
  settings_ = settings;
  open_->Touch(WorkbookChange::Kind::Settings, nullptr, {1, 1, 1, 1});
}

}  // namespace tellurix
