// A workbook: sheets of cells with headings, column widths and selection, with undo. Everything acts on the active
// sheet unless it says otherwise. Not for use by several threads at once, not even for reading.
//
// Undo. What happens between BeginStep and EndStep is one step; a change outside is a step of its own. Of a column the
// first few cells written in a step are kept one by one, after that the column as it stood; columns share their
// unchanged parts with what is kept. The history holds HistorySteps steps at most, and no more than HistoryBytes of
// former contents (estimated; the newest step always stays): the oldest steps go first. What was undone
// can be redone until the next change. Selection, active cell and the choice of the active sheet are no changes.
//
// Formulas are computed at the end of each step, undo or redo, as far as what they refer to has changed; until then
// they show what they came to before. Their results are no part of the history.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/Documents.h"
#include "numeric/Regional.h"
#include "workbook/CellLook.h"
#include "workbook/Formula.h"
#include "workbook/GridStore.h"

namespace tellurix {

class CellColumn;
class FormulaEngine;
class TextPool;
class TextRef;

// What a step, an undo or a redo has changed: one rectangle around all changed cells of a sheet. A heading has row or
// column 0; widths have the rectangle of their columns in row 0, heights that of their rows in column 0.
struct WorkbookChange {
  // Sheets: added, deleted, moved or renamed; sheet is 0. Settings: of the sheet, or of the workbook when sheet is 0.
  enum class Kind { Cells, Headings, Widths, Sheets, Heights, Looks, Settings };
  Kind kind = Kind::Cells;
  int sheet = 0;  // 1-based
  CellRange range;
};

// How a sheet prints.
struct SheetPrinting {
  std::string paper = "A4";  // or A3, A5, Letter, Legal
  bool isLandscape = false;
  double left = 2;  // margins in centimetres
  double top = 2;
  double right = 2;
  double bottom = 2;
  bool gridlines = true;
  bool headings = true;           // of columns and rows
  std::optional<CellRange> area;  // all that is used when there is none

  bool operator==(const SheetPrinting&) const = default;
};

// Settings of one sheet. The lock is no more than LockSheet says; the others are for the view to heed.
struct SheetSettings {
  int frozenRows = 0;  // that stay at the top
  int frozenColumns = 0;
  bool isLocked = false;
  bool showsGridlines = true;
  bool showsHeadings = true;
  bool showsZeros = true;
  SheetPrinting printing;
  std::map<std::string, std::string> others;  // of a file, by key, that are not known here; saved as they were

  bool operator==(const SheetSettings&) const = default;
};

struct WorkbookSettings {
  std::string fontName = "Arial";
  double fontSize = 10;     // points
  double rowHeight = 15;    // points
  double columnWidth = 10;  // characters
  std::array<int, 16> palette = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF,
                                 0x800000, 0x008000, 0x000080, 0x808000, 0x800080, 0x008080, 0xC0C0C0, 0x808080};
  std::map<std::string, std::string> others;  // as of a sheet

  bool operator==(const WorkbookSettings&) const = default;
};

enum class Shift { Rows, Columns };  // which way the neighbours of inserted or deleted cells move

class Workbook final : public GridStore {
 public:
  static constexpr std::size_t HistorySteps = 200;
  static constexpr std::size_t HistoryBytes = std::size_t{256} << 20;
  static constexpr std::size_t MaxSheetName = 31;   // characters
  static constexpr double DefaultColumnWidth = 10;  // characters

  Workbook();  // one empty sheet, "Sheet1"
  ~Workbook() override;
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  // Caption and path belong to the shell. `changed` is kept here: true while the contents differ from those at
  // MarkSaved (or at the start), so undoing back to them makes it false.
  DocumentState document;
  void MarkSaved();
  void MarkUnsaved();  // changed from now on, whatever is undone, until it is saved
  // Names the state of the contents: another number after each step, the earlier one after its undo.
  std::uint64_t Revision() const;

  // --- cells. Beyond the sheet, writes change nothing and reads answer empty. ---
  static bool Fits(int row, int column) { return row >= 1 && row <= MaxRows && column >= 1 && column <= MaxColumns; }
  CellView ReadRC(int row, int column) const override;
  int TypeRC(int row, int column) const override;
  double NumberRC(int row, int column) const override;
  void NumberRC(int row, int column, double value) override;  // what is not finite becomes the text "*"
  std::string TextRC(int row, int column) const override;
  void TextRC(int row, int column, std::string_view text) override;
  std::string FormattedTextRC(int row, int column) const override;  // by the number format; logicals TRUE and FALSE
  // The same with numbers and dates as the region writes them.
  std::string FormattedTextRC(int row, int column, const Regional& regional) const;
  void SetLogical(int row, int column, bool value);
  // What a person types: nothing clears the cell, "=" and more is a formula; else it is what ReadTyped makes of it, and
  // a date or percentage gives its format to a cell that has none. What follows a leading apostrophe is a text, and so
  // is all that is typed into a cell with the number format Text.
  void Enter(int row, int column, std::string_view text, const Regional& regional);
  // A formula with the result that it is known to have, which stays until something that it refers to changes.
  void SetFormula(int row, int column, std::string_view formula, const FormulaResult& result);
  // What a formula on the active sheet comes to with the cells as they stand.
  FormulaResult Compute(std::string_view formula) const;
  std::string FormulaText(int row, int column) const;  // empty where there is none
  bool IsError(int row, int column) const;             // a formula with an error for its result

  // Runs of cells down a column; false, and nothing changed, when they do not fit.
  bool SetColumnNumbers(int column, int firstRow, std::span<const double> values);  // not finite: "*"
  bool SetColumnTexts(int column, int firstRow, std::span<const std::string> texts);

  // --- headings; an empty text takes one away. They move with their rows and columns. ---
  std::string ColText(int column) const override;
  void ColText(int column, std::string_view text) override;
  std::string RowText(int row) const override;
  void RowText(int row, std::string_view text);
  int LastTitledRow() const;  // the last one with a heading, or 0
  int LastTitledColumn() const;

  // --- editing; false, and nothing changed, when the range is not on the sheet or something would be pushed off it ---
  // The references of formulas follow cells that move; those to deleted cells become #REF!. In a copy the references
  // without $ move as far as the copy.
  bool ClearRange(const CellRange& range);
  bool InsertRows(int row, int count);
  bool DeleteRows(int row, int count);
  bool InsertColumns(int column, int count);
  bool DeleteColumns(int column, int count);
  bool InsertCells(const CellRange& range, Shift shift);           // those from the range on move down or to the right
  bool DeleteCells(const CellRange& range, Shift shift);           // those after the range move up or to the left
  bool CopyBlock(const CellRange& from, int toRow, int toColumn);  // as it stood, where the two overlap
  // The cells of the range's rows in another order: row firstRow + i gets those of firstRow + order[i], formulas as
  // copies. `order` holds every row of the range once.
  bool ArrangeRows(const CellRange& range, std::span<const std::uint32_t> order);
  bool FillDown(const CellRange& range);   // copies of its first row in the others
  bool FillRight(const CellRange& range);  // copies of its first column in the others

  // --- extent and sheets ---
  int LastRow() const override;
  int LastCol() const override;
  int LastRowOf(int column) const;  // the last row of a column that holds anything; 0 for none
  int Sheet() const override { return active_ + 1; }
  void Sheet(int index) override;  // an index that does not exist is ignored
  int SheetCount() const { return static_cast<int>(sheets_.size()); }
  std::string SheetName(int index) const;      // empty for an index that does not exist
  int FindSheet(std::string_view name) const;  // without regard to case; 0 when there is none
  // Names are unique without regard to case, not blank, and of at most MaxSheetName characters.
  int AddSheet(std::string_view name = {});  // at the end, becoming the active one: its index; 0 for a name that is
                                             // refused. Without a name it takes a free "Sheet<n>"
  bool RenameSheet(int index, std::string_view name);
  bool DeleteSheet(int index);  // not the last one
  bool MoveSheet(int from, int to);

  // --- selection; ranges are cut to the sheet, their corners put in order ---
  int SelectionCount() const override;
  CellRange GetSelection(int index) const override;  // A1 for an index that does not exist
  std::string Selection() const override;
  void SetSelection(const CellRange& range) override;  // its first cell becomes the active one
  void AddSelection(const CellRange& range) override;
  void SetActiveCell(int row, int column) override;  // the marked ranges stay
  int ActiveRow() const override;
  int ActiveColumn() const override;

  // --- widths, heights and looks; they move with their rows and columns, and cells that are copied take theirs along
  // ---
  double ColumnWidth(int column) const;           // in characters
  void SetColumnWidth(int column, double width);  // 0 hides; below 0 or not finite: the default width again
  bool IsColumnHidden(int column) const { return ColumnWidth(column) == 0; }
  double RowHeight(int row) const;                              // in points
  void SetRowHeight(int firstRow, int lastRow, double height);  // as with widths; nothing off the sheet
  void SetRowHeight(int row, double height) { SetRowHeight(row, row, height); }
  bool IsRowHidden(int row) const { return RowHeight(row) == 0; }
  CellLook LookAt(int row, int column) const;  // plain beyond the sheet
  NumberFormat NumberFormatAt(int row, int column) const;
  // The looks down a column: where each begins, the first one in row 1, the last one without end.
  struct LookRun {
    int firstRow = 1;
    CellLook look;
  };
  std::vector<LookRun> LooksDown(int column) const;
  int LastLookColumn() const;                                      // the columns behind it are plain
  bool SetLook(const CellRange& range, const LookChange& change);  // false, and nothing changed, off the sheet
  // Number formats for runs of rows down a column, ascending and apart; cells with a format other than General keep it.
  // A column of the default width, or that of shorter dates, grows to show the dates.
  struct FormatRun {
    int firstRow = 1;
    int lastRow = 1;
    NumberFormat format;
  };
  bool GiveNumberFormats(int column, std::span<const FormatRun> runs);

  // --- settings ---
  const SheetSettings& SettingsOfSheet() const;
  void SetSettingsOfSheet(const SheetSettings& settings);  // but for the lock, which stays
  const WorkbookSettings& Settings() const { return settings_; }
  void SetSettings(const WorkbookSettings& settings);
  // While a sheet is locked, all that would change its cells, headings or looks, or delete it, does nothing (and
  // answers false, where it answers). Formulas are still computed, and follow cells that move on other sheets.
  bool SheetLocked() const { return SettingsOfSheet().isLocked; }
  void LockSheet(bool locked);

  // Fits columns to the cells of the range and their headings, 8 to 60 characters. Of a long column the first cells and
  // a sample of the others count. Columns with nothing to show get the default width if `defaults`, else keep theirs.
  void SetColWidthAuto(const CellRange& range, bool defaults) override;

  // --- undo ---
  void BeginStep(std::string_view caption) override;
  void EndStep() override;
  bool CanUndo() const;
  bool CanRedo() const;
  bool Undo();  // false within a step or with nothing to undo
  bool Redo();
  std::string UndoCaption() const;  // empty with nothing to undo
  std::string RedoCaption() const;
  void ClearHistory();

  // Told once a step, undo or redo, with one change for each sheet and kind.
  using Listener = std::function<void(const WorkbookChange&)>;
  int AddListener(Listener listener);  // its number
  void RemoveListener(int number);

  // Filling without undo records, as when a file is read: while it lives nothing is logged. Accepted, it leaves an
  // empty history and a workbook that counts as saved; otherwise everything is put back as it was before. Not within a
  // step.
  class Loading {
   public:
    explicit Loading(Workbook& workbook);
    ~Loading();
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;
    void Clear();  // to one empty sheet on default settings
    void Accept();

    // A text of the workbook's pool, and runs of them down a column of the active sheet; none is empty, and they fit.
    TextRef Intern(std::string_view text);
    void SetTexts(int column, int firstRow, std::span<const TextRef> texts);
    // Looks down whole columns, each from its first row (ascending) to that of the next.
    void SetLooks(int firstColumn, int lastColumn, std::span<const std::pair<int, CellLook>> looks);

   private:
    struct Backup;
    Workbook& workbook_;
    std::unique_ptr<Backup> backup_;
  };

 private:
  friend class WorkbookContents;
  struct SheetData;
  struct CellChange;
  struct ColumnChange;
  struct SheetsChange;
  struct LooksChange;
  struct SheetSettingsChange;
  struct SettingsChange;
  struct Step;
  class AutoStep;
  class Cells;
  using SheetRef = std::shared_ptr<SheetData>;
  using ColumnRef = std::shared_ptr<CellColumn>;

  SheetData& Active() const { return *sheets_[static_cast<std::size_t>(active_)]; }
  const CellColumn* ColumnAt(int row, int column) const;
  CellColumn& ForCell(int slot, int row);
  CellColumn& ForMany(int slot);
  void LogEmpty(const SheetRef& sheet, int slot);
  void Replace(int slot, ColumnRef column);
  void DropIfEmpty(int slot);
  void SetHeading(int slot, int at, std::string_view text);
  void ClearCells(int column, int firstRow, int lastRow);
  void ShiftSlot(int slot, int at, int inserted, int deleted);
  void PutFormula(int row, int column, std::shared_ptr<Formula> formula);
  void CopyColumnPart(const ColumnRef& source, int fromRow, int rows, int toRow, int toColumn,
                      std::optional<int> columnsAway);
  void PutCells(const CellRange& from, int toRow, int toColumn, bool asCopies);
  using Rewrite = std::function<std::optional<std::string>(const Formula& formula, bool isOwnSheet)>;
  void RewriteFormulas(const SheetData& own, const Rewrite& rewrite);
  void FollowMove(const CellsMoved& moved);
  void Recalculate(const Step& step, Step& told);
  bool IsRefused() const { return logging_ && SheetLocked(); }  // what is loaded is not
  const std::shared_ptr<const LookRuns>& LookRunsAt(int column) const;
  std::uint32_t NumberOf(const CellLook& look);
  void ReplaceLooks(SheetLooks looks);
  void ShiftLooks(const CellsMoved& moved);
  void CopyLooks(const CellRange& from, int toRow, int toColumn);
  void FillLooks(const CellRange& range, bool isDown);
  void ArrangeLooks(const CellRange& range, std::span<const std::uint32_t> order);
  void LogSheets();
  void Touch(WorkbookChange::Kind kind, int firstRow, int firstColumn, int lastRow, int lastColumn);
  void TouchCells(int firstRow, int firstColumn, int lastRow, int lastColumn, bool filled = false);
  template <typename Change>
  void Log(Change change);
  void Swap(Step& step, bool backwards);
  void UpdateChanged();
  void Tell(const Step& step);
  bool NameIsFree(std::string_view name, int exceptIndex) const;

  // The pool comes first: it must outlive all that points into it.
  std::unique_ptr<TextPool> texts_;
  std::vector<SheetRef> sheets_;
  int active_ = 0;  // 0-based
  WorkbookSettings settings_;
  std::vector<CellLook> looks_{CellLook()};  // each once; the plain one first

  std::deque<Step> undo_;
  std::vector<Step> redo_;
  std::unique_ptr<Step> open_;
  int depth_ = 0;
  bool logging_ = true;
  std::uint64_t lastSerial_ = 0;    // of steps
  std::uint64_t bottomSerial_ = 0;  // state before the oldest step that is kept
  std::uint64_t savedSerial_ = 0;
  std::size_t historyBytes_ = 0;

  std::unique_ptr<Cells> cells_;
  std::unique_ptr<FormulaEngine> formulas_;

  std::vector<std::pair<int, Listener>> listeners_;
  int lastListener_ = 0;
};

}  // namespace tellurix
