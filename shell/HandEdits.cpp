#include "shell/HandEdits.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Script.h"
#include "shell/ScriptEdits.h"

namespace tellurix {

namespace {

constexpr std::size_t MostRanges = 100;  // kept apart of one sheet; beyond that, the rectangle around them

CellRange Around(const CellRange& a, const CellRange& b) {
  return {std::min(a.firstRow, b.firstRow), std::min(a.firstColumn, b.firstColumn), std::max(a.lastRow, b.lastRow),
          std::max(a.lastColumn, b.lastColumn)};
}

constexpr CellRange AllHeadings[] = {{0, 1, 0, Workbook::MaxColumns}, {1, 0, Workbook::MaxRows, 0}};

double Cells(const CellRange& range) {
  return (range.lastRow - range.firstRow + 1.0) * (range.lastColumn - range.firstColumn + 1.0);
}

// Adds a range; one that makes a rectangle with the last one, or lies in it, is joined with it.
void Add(std::vector<CellRange>& ranges, const CellRange& range) {
  if (!ranges.empty()) {
    const CellRange joined = Around(ranges.back(), range);
    if (Cells(joined) <= Cells(ranges.back()) + Cells(range)) {
      ranges.back() = joined;
      return;
    }
  }
  ranges.push_back(range);
  if (ranges.size() <= MostRanges) return;
  for (const CellRange& other : ranges) ranges.front() = Around(ranges.front(), other);
  ranges.resize(1);
}

// The part of a range within the first rows and columns; false when there is none.
bool CutTo(CellRange& range, int lastRow, int lastColumn) {
  range.firstRow = std::max(range.firstRow, 1);
  range.firstColumn = std::max(range.firstColumn, 1);
  range.lastRow = std::min(range.lastRow, lastRow);
  range.lastColumn = std::min(range.lastColumn, lastColumn);
  return range.firstRow <= range.lastRow && range.firstColumn <= range.lastColumn;
}

std::vector<std::string> SheetNames(const Workbook& workbook) {
  std::vector<std::string> names;
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) names.push_back(workbook.SheetName(sheet));
  return names;
}

std::string ActiveSheet(const Workbook& workbook) { return workbook.SheetName(workbook.Sheet()); }

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

HandEdits::~HandEdits() {
  for (const auto& watched : watched_) watched->workbook->RemoveListener(watched->listener);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is open
// ---------------------------------------------------------------------------------------------------------------------

void HandEdits::Start() {
  const Workbook* front = documents_.ActiveWorkbook();
  const Report* frontReport = documents_.ActiveReport();
  for (int i = 0; i < documents_.WorkbookCount(); ++i) Introduce(documents_.WorkbookAt(i));
  for (int i = 0; i < documents_.ReportCount(); ++i) Opened(documents_.ReportAt(i));
  if (front) BringToFront(*front);
  if (frontReport) WriteDown();
}

void HandEdits::Watch(Workbook& workbook) {
  auto watched = std::make_unique<Watched>();
  watched->workbook = &workbook;
  watched->sheets = SheetNames(workbook);
  watched->activeSheet = ActiveSheet(workbook);
  KnowExtents(*watched);
  Watched& kept = *watched_.emplace_back(std::move(watched));
  const int active = workbook.Sheet();
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) {
    workbook.Sheet(sheet);
    SheetEdits& edits = kept.edits[workbook.SheetName(sheet)];
    for (const CellRange& headings : AllHeadings) NoteHeadings(workbook, edits, headings, false);
  }
  workbook.Sheet(active);
  kept.listener = workbook.AddListener([this, &kept](const WorkbookChange& change) { Changed(kept, change); });
  front_ = &workbook;
}

// One that is a file's contents is opened from there; any other one is made anew, cell by cell.
void HandEdits::Introduce(Workbook& workbook) {
  const bool isFile = !workbook.document.path.empty() && !workbook.document.changed;
  write_(isFile ? "open " + QuotedText(workbook.document.path) : std::string("new workbook"));
  Watch(workbook);
  if (isFile) return;
  Watched& watched = *watched_.back();
  watched.sheets = {"Sheet1"};
  watched.activeSheet = "Sheet1";
  watched.edits.clear();
  SheetsChanged(watched);
  const int active = workbook.Sheet();
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) {
    workbook.Sheet(sheet);
    MarkWhole(watched.edits[workbook.SheetName(sheet)], workbook);
  }
  workbook.Sheet(active);
  WriteDown();
}

void HandEdits::Opened(Workbook& workbook) {
  if (commandActs_) return Watch(workbook);
  WriteDown();
  Introduce(workbook);
}

void HandEdits::Opened(const Report& report) {
  if (!commandActs_) write_("new report");
  reports_.push_back(&report);
  frontReport_ = &report;
}

void HandEdits::Closing(const Workbook& workbook) {
  const auto at = std::ranges::find_if(watched_, [&](const auto& watched) { return watched->workbook == &workbook; });
  if (at == watched_.end()) return;
  if (!commandActs_) write_(fmt::format("close workbook {}", at - watched_.begin() + 1));
  (*at)->workbook->RemoveListener((*at)->listener);
  watched_.erase(at);
  if (front_ == &workbook) front_ = nullptr;  // which one comes to the front is written when it matters
}

void HandEdits::Closing(const Report& report) {
  const auto at = std::ranges::find(reports_, &report);
  if (at == reports_.end()) return;
  if (!commandActs_) write_(fmt::format("close report {}", at - reports_.begin() + 1));
  reports_.erase(at);
  if (frontReport_ == &report) frontReport_ = nullptr;
}

void HandEdits::BringToFront(const Workbook& workbook) {
  if (front_ == &workbook) return;
  front_ = &workbook;
  for (std::size_t i = 0; i < watched_.size(); ++i) {
    if (watched_[i]->workbook == &workbook) write_(fmt::format("workbook {}", i + 1));
  }
}

void HandEdits::CommandActs() { commandActs_ = true; }

// What the command has done so far, the script's command does as well.
void HandEdits::PersonActs() {
  if (!commandActs_) return;
  commandActs_ = false;
  front_ = documents_.ActiveWorkbook();
  frontReport_ = documents_.ActiveReport();
  for (const auto& watched : watched_) {
    watched->sheets = SheetNames(*watched->workbook);
    watched->activeSheet = ActiveSheet(*watched->workbook);
    KnowExtents(*watched);
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// What changes
// ---------------------------------------------------------------------------------------------------------------------

void HandEdits::KnowExtents(Watched& watched) {
  Workbook& workbook = *watched.workbook;
  const int active = workbook.Sheet();
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) {
    workbook.Sheet(sheet);
    SheetEdits& edits = watched.edits[workbook.SheetName(sheet)];
    edits.lastRow = std::max(edits.lastRow, workbook.LastRow());
    edits.lastColumn = std::max(edits.lastColumn, workbook.LastCol());
    edits.formats = FormatsOf(workbook);
  }
  workbook.Sheet(active);
}

void HandEdits::Changed(Watched& watched, const WorkbookChange& change) {
  using Kind = WorkbookChange::Kind;
  if (change.kind == Kind::Sheets && !commandActs_) return SheetsChanged(watched);
  const bool isContents = change.kind == Kind::Cells || change.kind == Kind::Headings;
  if (change.sheet < 1 || (!isContents && change.kind != Kind::Looks)) return;
  SheetEdits& edits = watched.edits[watched.workbook->SheetName(change.sheet)];
  const CellRange& range = change.range;
  // Cells that move take their headings along.
  const auto note = [&](const CellRange& headings) {
    if (!commandActs_) return Add(edits.headings, headings);
    // Of the sheet that the command works on, as it is now: the script's command does the same.
    if (change.sheet == watched.workbook->Sheet()) NoteHeadings(*watched.workbook, edits, headings, false);
  };
  if (isContents && range.firstRow == 0) note({0, std::max(1, range.firstColumn), 0, range.lastColumn});
  if (isContents && range.firstColumn == 0) note({std::max(1, range.firstRow), 0, range.lastRow, 0});
  if (commandActs_) return;
  edits.formatsMayDiffer = true;
  if (change.kind == Kind::Cells) Add(edits.cells, range);
}

// A step renames, deletes, adds or moves sheets; whatever it was, it is told from the names before and after.
void HandEdits::SheetsChanged(Watched& watched) {
  Workbook& workbook = *watched.workbook;
  if (documents_.WorkbookCount() > 0) BringToFront(workbook);
  std::vector<std::string>& before = watched.sheets;
  const std::vector<std::string> now = SheetNames(workbook);
  for (std::size_t i = 0; i < before.size() && before.size() == now.size(); ++i) {
    if (Holds(now, before[i]) || Holds(before, now[i])) continue;
    write_(fmt::format("rename sheet {} {}", QuotedText(before[i]), QuotedText(now[i])));
    auto edits = watched.edits.extract(before[i]);
    if (edits) {
      edits.key() = now[i];
      watched.edits.insert(std::move(edits));
    }
    if (watched.activeSheet == before[i]) watched.activeSheet = now[i];
    before[i] = now[i];
  }
  const int active = workbook.Sheet();
  for (const std::string& name : now) {
    if (Holds(before, name)) continue;
    write_("add sheet " + QuotedText(name));
    before.push_back(name);
    workbook.Sheet(workbook.FindSheet(name));
    MarkWhole(watched.edits[name], workbook);
  }
  workbook.Sheet(active);
  for (std::size_t i = before.size(); i-- > 0;) {
    if (Holds(now, before[i])) continue;
    write_("delete sheet " + QuotedText(before[i]));
    watched.edits.erase(before[i]);
    if (watched.activeSheet == before[i]) watched.activeSheet.clear();
    before.erase(before.begin() + static_cast<std::ptrdiff_t>(i));
  }
  for (std::size_t i = 0; i < now.size(); ++i) {
    if (before[i] == now[i]) continue;
    write_(fmt::format("move sheet {} {}", QuotedText(now[i]), i + 1));
    const auto at = std::ranges::find(before, now[i]);
    std::rotate(before.begin() + static_cast<std::ptrdiff_t>(i), at, at + 1);
  }
}

void HandEdits::MarkWhole(SheetEdits& edits, const Workbook& workbook) {
  const CellRange whole{1, 1, std::max(1, workbook.LastRow()), std::max(1, workbook.LastCol())};
  edits.cells = {whole};
  edits.formatsMayDiffer = true;
  edits.headings.assign(std::begin(AllHeadings), std::end(AllHeadings));
}

// ---------------------------------------------------------------------------------------------------------------------
// Writing it down
// ---------------------------------------------------------------------------------------------------------------------

void HandEdits::WriteDown() {
  if (commandActs_) return;
  for (const auto& watched : watched_) {
    Workbook& workbook = *watched->workbook;
    const int active = workbook.Sheet();
    for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) {
      SheetEdits& edits = watched->edits[workbook.SheetName(sheet)];
      if (edits.cells.empty() && edits.headings.empty() && !edits.formatsMayDiffer) continue;
      workbook.Sheet(sheet);
      WriteSheet(*watched, edits);
    }
    workbook.Sheet(active);
  }
  if (const Workbook* front = documents_.ActiveWorkbook()) BringToFront(*front);
  for (const auto& watched : watched_) {
    if (watched->workbook != front_ || watched->activeSheet == ActiveSheet(*watched->workbook)) continue;
    watched->activeSheet = ActiveSheet(*watched->workbook);
    write_("sheet " + QuotedText(watched->activeSheet));
  }
  const Report* report = documents_.ActiveReport();
  const auto at = std::ranges::find(reports_, report);
  if (report && report != frontReport_ && at != reports_.end()) {
    write_(fmt::format("report {}", at - reports_.begin() + 1));
    frontReport_ = report;
  }
}

// Of the sheet that is now the workbook's active one. The script's may be another one, so the sheet is named.
void HandEdits::WriteSheet(Watched& watched, SheetEdits& edits) {
  const Workbook& workbook = *watched.workbook;
  BringToFront(workbook);
  for (const CellRange& range : std::exchange(edits.cells, {})) WriteCells(workbook, edits, range);
  for (const CellRange& range : std::exchange(edits.headings, {})) NoteHeadings(workbook, edits, range, true);
  if (std::exchange(edits.formatsMayDiffer, false)) WriteFormats(workbook, edits);
}

void HandEdits::WriteCells(const Workbook& workbook, SheetEdits& edits, const CellRange& range) {
  CellRange held = range;
  const bool isHeld = CutTo(held, edits.lastRow, edits.lastColumn);
  CellRange filled = range;
  const bool isFilled = CutTo(filled, workbook.LastRow(), workbook.LastCol());
  edits.lastRow = std::max(edits.lastRow, isFilled ? filled.lastRow : 0);
  edits.lastColumn = std::max(edits.lastColumn, isFilled ? filled.lastColumn : 0);
  // What was there goes first, where it reached further than what is there now.
  if (isHeld && (!isFilled || Around(held, filled) != filled)) write_("clear " + ReferenceWord(workbook, held));
  if (!isFilled) return;
  for (const std::string& step : CellsSteps(workbook, filled)) write_(step);
}

// Headings that are not the script's, written down if `write`; from then on they are the script's.
void HandEdits::NoteHeadings(const Workbook& workbook, SheetEdits& edits, const CellRange& range, bool write) {
  const auto note = [&](int row, int column, std::string title) {
    const auto known = edits.titles.find({row, column});
    if (known == edits.titles.end() ? title.empty() : title == known->second) return;
    if (write) {
      const std::string place = row == 0 ? ColumnLetters(column) : std::to_string(row);
      const std::string sheet = workbook.SheetCount() == 1 ? "" : workbook.SheetName(workbook.Sheet()) + "!";
      write_(fmt::format("heading {} {}", ScriptText(sheet + place), QuotedText(title)));
    }
    edits.titles[{row, column}] = std::move(title);
  };
  int lastRow = workbook.LastTitledRow(), lastColumn = workbook.LastTitledColumn();
  for (const auto& [place, title] : edits.titles) {
    lastRow = std::max(lastRow, place.first);
    lastColumn = std::max(lastColumn, place.second);
  }
  if (range.firstRow == 0) {
    lastColumn = std::min(lastColumn, range.lastColumn);
    for (int column = range.firstColumn; column <= lastColumn; ++column) note(0, column, workbook.ColText(column));
  } else {
    lastRow = std::min(lastRow, range.lastRow);
    for (int row = range.firstRow; row <= lastRow; ++row) note(row, 0, workbook.RowText(row));
  }
}

// Number formats, which say what a number means; how else cells look says nothing to a command.
std::vector<std::vector<HandEdits::FormatRun>> HandEdits::FormatsOf(const Workbook& workbook) {
  std::vector<std::vector<FormatRun>> formats;
  for (int column = 1; column <= workbook.LastLookColumn(); ++column) {
    std::vector<FormatRun>& runs = formats.emplace_back();
    for (const Workbook::LookRun& run : workbook.LooksDown(column)) {
      const NumberFormat format = run.look.number;
      if (runs.empty() ? format != NumberFormat() : format != runs.back().format)
        runs.push_back({run.firstRow, format});
    }
  }
  return formats;
}

// Columns whose formats are not the script's are formatted anew.
void HandEdits::WriteFormats(const Workbook& workbook, SheetEdits& edits) {
  auto now = FormatsOf(workbook);
  std::size_t columns = std::max(now.size(), edits.formats.size());
  now.resize(columns);
  edits.formats.resize(columns);
  for (std::size_t i = 0; i < columns; ++i) {
    if (now[i] == edits.formats[i]) continue;
    const int column = static_cast<int>(i) + 1;
    const auto write = [&](int first, int last, const NumberFormat& format) {
      const std::string reference = ReferenceWord(workbook, {first, column, last, column});
      write_(fmt::format("format {} {}", reference, FormatWords(format)));
    };
    if (!edits.formats[i].empty()) write(1, Workbook::MaxRows, {});
    for (std::size_t k = 0; k < now[i].size(); ++k) {
      const int last = k + 1 < now[i].size() ? now[i][k + 1].firstRow - 1 : Workbook::MaxRows;
      if (now[i][k].format != NumberFormat()) write(now[i][k].firstRow, last, now[i][k].format);
    }
  }
  edits.formats = std::move(now);
}

}  // namespace tellurix
