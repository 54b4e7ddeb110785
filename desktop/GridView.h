// The cells of a workbook's active sheet in a window: painting, marking, editing, clipboard.
//
// Nothing of the sheet is copied: what shows is read from the workbook as it is painted, and marks live in the
// workbook, where commands see them. The workbook tells of changed cells by itself; whoever changes its selection or
// its active sheet elsewhere calls Refresh. Workbook and regional settings outlive the view.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QColor>
#include <QLineEdit>
#include <QPointer>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desktop/GridEditing.h"
#include "desktop/GridGeometry.h"

namespace tellurix {

// How a cell looks where it differs from the default.
struct CellAppearance {
  QFont font;
  QColor text;  // invalid: the theme's
  QColor fill;
  Qt::Alignment alignment;   // none: by the kind of the cell
  bool keepsDigits = false;  // a number shows as its format says, or not at all
};

// The text of a number with the decimal symbol of the region.
QString InRegion(QString number, const Regional& regional);

// A number as displayed; with fewer decimals where they do not fit a width, with marks where not even its whole part
// does, or where it must keep its digits.
QString FittedNumber(const Workbook& workbook, const Regional& regional, int row, int column, bool keepsDigits,
                     const QFontMetrics& metrics, int width);

// Row heights, hidden rows, frozen panes and looks of the active sheet, for whoever keeps them.
class GridLooks {
 public:
  virtual ~GridLooks() = default;
  // Row sizes that differ from the default, frozen counts and what shows. Columns come from the workbook.
  virtual void Describe(SheetGeometry& geometry) const = 0;
  virtual std::optional<CellAppearance> Look(int row, int column, const QFont& base) const = 0;
  // Pixels; 0 hides, below 0 is the default height again.
  virtual void SetRowHeight(int firstRow, int lastRow, int pixels) = 0;
  virtual void Freeze(int rows, int columns) = 0;
};

// Figures over the numbers in the marked cells.
struct SelectionSummary {
  qint64 count = 0;  // of numbers
  double sum = 0;
  double mean = 0;        // 0 without numbers
  bool areDates = false;  // all of them
};

class GridView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  // The most cells that are pasted or filled, and copied at once; more go as plain text alone.
  static constexpr qint64 MaxBlockCells = 50'000'000;
  static constexpr qint64 MaxCopiedCells = 20'000'000;
  static constexpr qint64 MaxOwnCells = 5'000'000;
  static constexpr qint64 MaxHtmlCells = 100'000;

  GridView(Workbook& workbook, const Regional& regional, QWidget* parent = nullptr);
  ~GridView() override;

  Workbook& Book() const { return workbook_; }
  const Regional& RegionalSettings() const { return regional_; }

  // A second line in which the same edit can be made; shows the active cell otherwise.
  void SetFormulaLine(QLineEdit* line);
  // Who keeps row heights and looks; without one heights and panes last as long as the view. May be null.
  void SetLooks(GridLooks* looks);

  // A selection wait: marks can be set, nothing edited; the right button, Enter and the keypad's Enter confirm, Escape
  // cancels.
  void SetSelecting(bool on);
  bool IsSelecting() const { return selecting_; }
  void SetRightButtonConfirms(bool on) { rightButtonConfirms_ = on; }  // on at first

  // --- places; pixels are those of the viewport ---
  const SheetGeometry& Geometry() const { return geometry_; }
  QRect CellRect(int row, int column) const;  // empty when it does not show
  QRect ColumnHeadingRect(int column) const;
  QRect RowHeadingRect(int row) const;
  int TopRow() const;
  int LeftColumn() const;
  void ScrollTo(int row, int column);  // brings a cell into view

  // --- marks ---
  void Select(const CellRange& range);  // and shows its first cell
  void SelectAll();
  bool GoTo(const QString& reference);  // "B7", "A1:C9", "D:D", "3:9", "Sheet2!B7"; false when it is none of them
  QString SelectionText() const;        // the active cell or the marked ranges
  const SelectionSummary& Summary();    // worked out to the end first

  // --- editing ---
  bool IsEditing() const { return editing_; }
  bool BeginEdit();   // of the active cell as it stands
  bool CommitEdit();  // true also with nothing to commit; false when the text is refused: the edit goes on
  void CancelEdit();
  QLineEdit* Editor() const { return editor_; }  // in place; hidden when nothing is edited there
  void RenameColumn(int column);                 // opens the editor over the heading
  QLineEdit* HeadingEditor() const { return headingEditor_; }

  // --- find; from the active cell on ---
  bool Find(const QString& text, const FindOptions& options);                        // marks what it finds
  bool Replace(const QString& text, const QString& by, const FindOptions& options);  // in the active cell, then finds
  int ReplaceEverywhere(const QString& text, const QString& by, const FindOptions& options);

  // --- panes and sizes ---
  void FreezePanes();  // above and left of the active cell
  void UnfreezePanes();
  bool HasFrozenPanes() const { return geometry_.frozenRows > 0 || geometry_.frozenColumns > 0; }
  void HideRows(bool hide);  // those marked
  void HideColumns(bool hide);
  void SetRowHeight(int pixels);  // of the marked rows; below 0 the default
  void SetColumnWidth(double characters);
  void AutoFitColumns();

 public slots:
  void Refresh();  // sheet or marks were set elsewhere; marks that have moved come into view
  // Each is one undo step. What cannot be done is told by Refused.
  bool Copy();
  bool Cut();
  bool Paste();
  bool PasteText(const QString& text, bool quotedAreTexts = false);
  // With the formulas' results only, or with rows and columns exchanged.
  bool PasteSpecial(bool valuesOnly, bool transposed);
  bool FillDown();
  bool FillRight();
  bool Clear();
  bool InsertRows();  // as many as are marked, and so on
  bool DeleteRows();
  bool InsertColumns();
  bool DeleteColumns();
  bool InsertCells(tellurix::Shift shift);
  bool DeleteCells(tellurix::Shift shift);
  bool Undo();
  bool Redo();

 signals:
  void SelectionChanged(const QString& text);
  void SummaryChanged(const tellurix::SelectionSummary& summary);  // a while after the marks or their cells changed
  void Modified();
  void EditingChanged(bool editing);
  void SheetChanged();  // another sheet shows, or the sheets changed
  void ConfirmRequested();
  void CancelRequested();
  void ContextMenuRequested(const QPoint& globalPosition);
  void Refused(const QString& reason);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void changeEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool focusNextPrevChild(bool) override { return false; }  // Tab moves between cells
  bool viewportEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class Area { Corner, ColumnHeading, ColumnBorder, RowHeading, RowBorder, Cells };
  enum class Drag { None, Cells, Columns, Rows, ColumnWidth, RowHeight };
  struct Hit {
    Area area;
    int row;  // 1-based also where only the column counts
    int column;
  };
  struct SheetState {
    SheetGeometry geometry;
    int activeRow;
    int activeColumn;
  };
  struct Colors;
  using RowLooks = std::vector<std::optional<CellAppearance>>;  // of a pane's columns; empty: all plain
  // Over which a text too long for its cell may reach: columns_[next] to before columns_[to], which ends at `right`.
  struct Neighbours {
    const RowLooks& looks;
    std::size_t next;
    std::size_t to;
    int right;
  };
  static constexpr int Padding = 4;  // between a cell's edge and its text

  // layout
  void MeasureFont();
  void LoadGeometry();
  void LoadWidths(int firstColumn, int lastColumn);
  void UpdateLayout();
  void UpdateScrollBars();
  int WidthToPixels(double characters) const;
  double PixelsToWidth(int pixels) const;
  QRect CellsRect() const;
  QRect RangeRect(const CellRange& range, bool& left, bool& top, bool& right, bool& bottom) const;
  Hit HitTest(const QPoint& position) const;
  int PageRows() const;  // that show whole
  int PageColumns() const;
  void ScrollBy(int rows, int columns);

  // painting
  Colors ThemeColors() const;
  void PaintCells(QPainter& painter, const QRect& area, const Colors& colors) const;
  void PaintGridlines(QPainter& painter, const QRect& sheet, const QRect& area, const Colors& colors) const;
  void PaintPaneEdges(QPainter& painter, const QRect& sheet, std::size_t scrolled, const Colors& colors) const;
  void PaintRow(QPainter& painter, const GridSpan& row, std::size_t from, std::size_t to, int right,
                const Colors& colors) const;
  void PaintTextFromBefore(QPainter& painter, const GridSpan& row, const Neighbours& inView,
                           const Colors& colors) const;
  void PaintText(QPainter& painter, const GridSpan& row, int column, int x, int width, const CellAppearance* look,
                 const Neighbours& neighbours, const Colors& colors) const;
  QRect ReachOver(QPainter& painter, const GridSpan& row, const QRect& cell, int needed, bool isFilled,
                  const Neighbours& neighbours, const Colors& colors) const;
  void PaintSelection(QPainter& painter, const Colors& colors) const;
  void PaintMarks(QPainter& painter, const std::vector<CellRange>& ranges, const QRect& active,
                  const QColor& mark) const;
  void PaintHeadings(QPainter& painter, const QRect& area, const Colors& colors) const;
  void PaintColumnHeadings(QPainter& painter, const QRect& area, const Colors& colors) const;
  void PaintRowHeadings(QPainter& painter, const QRect& area, const Colors& colors) const;
  void PaintCorner(QPainter& painter, const QRect& corner, const Colors& colors) const;
  QString TipAt(const QPoint& position, QRect& place) const;

  // marks
  CellRange LastRange() const;
  void ScrollToMarks();
  void MovingEnd(int& row, int& column) const;
  CellRange SpanTo(int row, int column) const;
  void ReplaceLastRange(const CellRange& range);
  void MarksChanged();
  bool IsMarked(const Hit& hit) const;  // of a heading or border the whole column or row, else the cell
  // By any mark; `whole` becomes true where one holds all of it.
  bool ColumnIsTouched(int column, bool& whole) const;
  bool RowIsTouched(int row, bool& whole) const;
  std::vector<CellRange> MarkedRanges() const;
  void ResetSummary();
  void Summarize(qint64 cells);
  void GoOnSummarizing();

  // mouse
  static CellRange RangeOf(const Hit& hit);
  void PressRight(const Hit& hit, const QPoint& globalPosition);
  void PressLeft(const Hit& hit, const QPoint& position, Qt::KeyboardModifiers modifiers);
  void StartDrag(Drag drag, const Hit& hit, Qt::KeyboardModifiers modifiers);
  void DragTo(const QPoint& position);
  void MarkTo(const QPoint& position);
  void ScrollOnByDrag();
  void StartResize(Drag drag, int index, int from, int size);
  void ResizeTo(const QPoint& position);
  void EndColumnResize();
  void EndRowResize();
  void FitColumn(int column);

  // keys
  void BringBackToEdit(QKeyEvent* event);
  bool MoveByKey(const QKeyEvent& event);
  bool ActByKey(const QKeyEvent& event);
  bool TypeIntoCell(const QKeyEvent& event);
  void MoveTo(int row, int column, bool extend);
  void MoveWithin(bool down, bool backwards);
  void MoveOn(bool down, bool backwards);
  void MoveByPage(int row, int column, int by, bool extend);
  int BlockEdge(int from, int line, int by, bool rows) const;
  int LastFilled(int row) const;
  void WidenMarks(bool toColumns, bool toRows);

  // editing
  bool StartEdit(const QString* text, bool caretMoves, bool inLine);
  void EndEdit();
  void ShowActiveCell();
  void PlaceEditor();
  bool EditorKey(QLineEdit* line, QKeyEvent* event);
  bool HeadingEditorEvent(QEvent* event);
  bool Refuse(const QString& reason);
  bool ReadyToChange();
  bool CanChange();  // the sheet is not locked, or that is told
  std::optional<std::vector<CellRange>> PasteTargets(qint64 rows, qint64 columns);
  bool PasteFrom(const QString& text, const PasteRules& rules, std::vector<CellRange>* pasted = nullptr);
  void FinishHeading(bool take);

  void OnChange(const WorkbookChange& change);
  void ShowChange(const WorkbookChange& change);
  void ShowChangedCells(const CellRange& range);
  void ScheduleUpkeep();
  void Upkeep();

  Workbook& workbook_;
  const Regional& regional_;
  int listener_ = 0;
  GridLooks* looks_ = nullptr;

  SheetGeometry geometry_;
  int sheet_ = 1;
  std::string sheetName_;
  int shownRow_ = 1;  // the active cell when the marks were last shown
  int shownColumn_ = 1;
  std::map<std::string, SheetState> otherSheets_;  // by name
  std::vector<GridSpan> rows_;                     // those that show
  std::vector<GridSpan> columns_;
  int fullHeadingHeight_ = 20;
  int headingHeight_ = 20;  // 0 without headings
  int headingWidth_ = 40;
  double digitWidth_ = 8;
  bool upkeepDue_ = false;

  Drag drag_ = Drag::None;
  QPoint dragPosition_;
  int resized_ = 0;  // the row or column whose border is dragged
  int resizeFrom_ = 0;
  int resizeSize_ = 0;
  QBasicTimer scrollTimer_;
  int tabColumn_ = 0;  // where a row of Tabs began

  bool selecting_ = false;
  bool rightButtonConfirms_ = true;
  bool editing_ = false;
  bool caretMoves_ = false;  // arrows move in the text, not to the next cell
  int editRow_ = 1;
  int editColumn_ = 1;
  QString editOriginal_;
  QLineEdit* editor_;
  QPointer<QLineEdit> line_;
  QLineEdit* headingEditor_;
  int renamed_ = 0;

  QBasicTimer summaryTimer_;
  SelectionSummary summary_;
  double summaryCarry_ = 0;
  bool summaryDone_ = false;
  std::size_t summaryRange_ = 0;
  int summaryRow_ = 0;
  int summaryColumn_ = 0;
};

}  // namespace tellurix

Q_DECLARE_METATYPE(tellurix::SelectionSummary)
