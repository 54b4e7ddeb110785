// The worksheet driven by mouse and keys.

#include "desktop/WorksheetView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QImage>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>
#include <QToolButton>

namespace tellurix {
namespace {

class WorksheetViewTest : public testing::Test {
 protected:
  WorksheetViewTest() {
    view.resize(900, 600);
    view.show();
    view.activateWindow();
    grid->setFocus();
    QApplication::processEvents();
  }

  QWidget* Port() { return grid->viewport(); }
  QPoint Cell(int row, int column) { return grid->CellRect(row, column).center(); }
  QPoint Heading(int column) { return grid->ColumnHeadingRect(column).center(); }
  QPoint RowHeading(int row) { return grid->RowHeadingRect(row).center(); }
  QPoint Border(int column) {
    const QRect place = grid->ColumnHeadingRect(column);
    return {place.right(), place.center().y()};
  }
  void Click(const QPoint& at, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(Port(), Qt::LeftButton, modifiers, at);
  }
  void DoubleClick(const QPoint& at) {
    QTest::mouseClick(Port(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(Port(), Qt::LeftButton, {}, at);
    QTest::mouseRelease(Port(), Qt::LeftButton, {}, at);
  }
  void Drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mousePress(Port(), Qt::LeftButton, modifiers, from);
    QTest::mouseMove(Port(), (from + to) / 2);
    QTest::mouseMove(Port(), to);
    QTest::mouseRelease(Port(), Qt::LeftButton, modifiers, to);
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QWidget* target = QApplication::focusWidget();
    QTest::keyClick(target ? target : grid, key, modifiers);
  }
  void Type(const char* text) {
    for (const char* c = text; *c; ++c) QTest::keyClick(QApplication::focusWidget(), *c);
  }
  std::string Active() { return ColumnLetters(book.ActiveColumn()) + std::to_string(book.ActiveRow()); }

  Regional regional;
  Workbook book;
  WorksheetView view{book, regional};
  GridView* grid = view.Grid();
};

// --- marks ---

TEST_F(WorksheetViewTest, MarksByMouse) {
  const QSignalSpy marks(grid, &GridView::SelectionChanged);
  Click(Cell(3, 2));
  EXPECT_EQ(book.Selection(), "B3");
  EXPECT_EQ(view.NameBox()->text(), "B3");
  Drag(Cell(5, 4), Cell(2, 2));
  EXPECT_EQ(book.Selection(), "B2:D5");
  EXPECT_EQ(Active(), "D5");
  Click(Cell(7, 5), Qt::ShiftModifier);
  EXPECT_EQ(book.Selection(), "D5:E7");
  Drag(Cell(9, 1), Cell(10, 2), Qt::ControlModifier);
  EXPECT_EQ(book.Selection(), "D5:E7,A9:B10");
  EXPECT_EQ(Active(), "A9");
  Click(Heading(3));
  EXPECT_EQ(book.GetSelection(0), (CellRange{1, 3, GridStore::MaxRows, 3}));
  EXPECT_EQ(view.NameBox()->text(), "C:C");
  Drag(Heading(5), Heading(6), Qt::ControlModifier);
  EXPECT_EQ(book.SelectionCount(), 2);
  EXPECT_EQ(book.GetSelection(1), (CellRange{1, 5, GridStore::MaxRows, 6}));
  Drag(RowHeading(4), RowHeading(6));
  EXPECT_EQ(book.GetSelection(0), (CellRange{4, 1, 6, GridStore::MaxColumns}));
  Click(QPoint(3, 3));
  EXPECT_EQ(book.GetSelection(0), (CellRange{1, 1, GridStore::MaxRows, GridStore::MaxColumns}));
  EXPECT_GE(marks.count(), 8);
}

TEST_F(WorksheetViewTest, ScrollsWhileDraggedBeyondTheEdge) {
  QTest::mousePress(Port(), Qt::LeftButton, {}, Cell(2, 2));
  QTest::mouseMove(Port(), QPoint(Cell(2, 2).x(), Port()->height() + 60));
  ASSERT_TRUE(QTest::qWaitFor([&] { return book.GetSelection(0).lastRow > 100; }, 5000));
  QTest::mouseRelease(Port(), Qt::LeftButton, {}, QPoint(Cell(2, 2).x(), Port()->height() + 60));
  EXPECT_GT(grid->TopRow(), 60);
  EXPECT_EQ(Active(), "B2");
  const int last = book.GetSelection(0).lastRow;
  QTest::qWait(100);
  EXPECT_EQ(book.GetSelection(0).lastRow, last);
}

// A command has written its columns; looking elsewhere afterwards is left alone.
TEST_F(WorksheetViewTest, MarksThatWereSetElsewhereComeIntoView) {
  book.SetSelection({1, 100, 5, 103});
  view.Refresh();
  EXPECT_FALSE(grid->ColumnHeadingRect(100).isEmpty());
  EXPECT_FALSE(grid->ColumnHeadingRect(103).isEmpty());
  grid->ScrollTo(1, 1);
  view.Refresh();
  EXPECT_EQ(grid->LeftColumn(), 1);
  // On another sheet, and on the way back.
  const int second = book.AddSheet();
  book.Sheet(second);
  book.SetSelection({300, 2, 300, 2});
  view.Refresh();
  EXPECT_GT(grid->TopRow(), 250);
  book.Sheet(1);
  view.Refresh();
  EXPECT_EQ(grid->LeftColumn(), 1);
}

TEST_F(WorksheetViewTest, WaitsForASelection) {
  const QSignalSpy confirmed(grid, &GridView::ConfirmRequested);
  const QSignalSpy cancelled(grid, &GridView::CancelRequested);
  const QSignalSpy menus(grid, &GridView::ContextMenuRequested);
  Key(Qt::Key_Escape);
  EXPECT_EQ(cancelled.count(), 0);
  view.SetSelecting(true);
  Drag(Cell(1, 1), Cell(4, 1));
  Key(Qt::Key_Return);
  QTest::mouseClick(Port(), Qt::RightButton, {}, Cell(9, 3));
  EXPECT_EQ(confirmed.count(), 2);
  Key(Qt::Key_Escape);
  EXPECT_EQ(cancelled.count(), 1);
  EXPECT_EQ(menus.count(), 0);
  EXPECT_EQ(book.Selection(), "A1:A4");
  Type("7");
  Key(Qt::Key_Delete);
  DoubleClick(Cell(2, 2));
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_FALSE(book.CanUndo());
  view.SetSelecting(false);
  QTest::mouseClick(Port(), Qt::RightButton, {}, Cell(9, 3));
  EXPECT_EQ(menus.count(), 1);
  EXPECT_EQ(book.Selection(), "C9");
}

TEST_F(WorksheetViewTest, MovesByKeys) {
  for (const int row : {2, 3, 4, 8, 9}) book.NumberRC(row, 2, row);
  book.NumberRC(9, 5, 1);
  book.SetColumnWidth(3, 0);
  Key(Qt::Key_Right);
  EXPECT_EQ(Active(), "B1");
  Key(Qt::Key_Right);
  EXPECT_EQ(Active(), "D1");  // C is hidden
  Key(Qt::Key_Left);
  const std::pair<Qt::Key, const char*> jumps[] = {
      {Qt::Key_Down, "B2"},       {Qt::Key_Down, "B4"}, {Qt::Key_Down, "B8"}, {Qt::Key_Down, "B9"},
      {Qt::Key_Down, "B1048576"}, {Qt::Key_Up, "B9"},   {Qt::Key_Up, "B8"},   {Qt::Key_Up, "B4"},
      {Qt::Key_Right, "XFD4"},    {Qt::Key_Left, "B4"}, {Qt::Key_End, "E9"},  {Qt::Key_Home, "A1"}};
  for (const auto& [key, cell] : jumps) {
    Key(key, Qt::ControlModifier);
    EXPECT_EQ(Active(), cell);
  }
  Key(Qt::Key_PageDown);
  const int page = book.ActiveRow();
  EXPECT_GT(page, 20);
  EXPECT_EQ(grid->TopRow(), page);
  Key(Qt::Key_PageUp);
  EXPECT_EQ(Active(), "A1");
  Key(Qt::Key_Down, Qt::ShiftModifier);
  Key(Qt::Key_Right, Qt::ShiftModifier);
  Key(Qt::Key_Right, Qt::ShiftModifier);
  Key(Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(book.Selection(), "A1:B2");
  Key(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(book.Selection(), "A1:B4");
  Click(Cell(2, 2));
  Key(Qt::Key_Space, Qt::ControlModifier);
  EXPECT_EQ(book.GetSelection(0), (CellRange{1, 2, GridStore::MaxRows, 2}));
  Key(Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(view.NameBox()->text(), "B:D");
  EXPECT_EQ(grid->TopRow(), 1);
  Click(Cell(4, 2));
  Key(Qt::Key_Space, Qt::ShiftModifier);
  EXPECT_EQ(view.NameBox()->text(), "4:4");
  Key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(view.NameBox()->text(), "A:XFD");
}

TEST_F(WorksheetViewTest, GoesThroughTheMarkedCells) {
  Drag(Cell(1, 1), Cell(2, 2));
  Click(Cell(5, 5), Qt::ControlModifier);
  std::string way;
  for (int i = 0; i < 6; ++i) {
    Key(Qt::Key_Return);
    way += Active() + ' ';
  }
  EXPECT_EQ(way, "A1 A2 B1 B2 E5 A1 ");
  Key(Qt::Key_Tab);
  EXPECT_EQ(Active(), "B1");
  Key(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(Active(), "A1");
  EXPECT_EQ(book.SelectionCount(), 2);
  // One cell: rows of entries begin below each other.
  Click(Cell(3, 2));
  for (const char* text : {"1", "2", "3"}) {
    Type(text);
    Key(Qt::Key_Tab);
  }
  Type("4");
  Key(Qt::Key_Return);
  EXPECT_EQ(Active(), "B4");
  EXPECT_EQ(book.NumberRC(3, 5), 4);
}

TEST_F(WorksheetViewTest, SumsUpTheMarks) {
  for (int row = 1; row <= 4; ++row) book.NumberRC(row, 1, row);
  book.NumberRC(1, 2, 1e16);
  book.NumberRC(2, 2, 1);
  book.NumberRC(3, 2, -1e16);
  book.TextRC(4, 2, "*");
  QSignalSpy told(grid, &GridView::SummaryChanged);
  Drag(Heading(1), Heading(2));
  ASSERT_TRUE(told.wait(2000));
  const auto summary = qvariant_cast<SelectionSummary>(told.last().at(0));
  EXPECT_EQ(summary.count, 7);
  EXPECT_EQ(summary.sum, 11);
  EXPECT_DOUBLE_EQ(summary.mean, 11.0 / 7);
  book.NumberRC(4, 1, 10);
  EXPECT_EQ(grid->Summary().sum, 17);
}

TEST_F(WorksheetViewTest, GoesToTheLastRow) {
  view.NameBox()->setText("xfd1048576");
  QTest::keyClick(view.NameBox(), Qt::Key_Return);
  EXPECT_EQ(Active(), "XFD1048576");
  const QRect cell = grid->CellRect(GridStore::MaxRows, GridStore::MaxColumns);
  EXPECT_FALSE(cell.isEmpty());
  EXPECT_TRUE(Port()->rect().contains(cell));
  EXPECT_EQ(grid->verticalScrollBar()->value(), grid->verticalScrollBar()->maximum());
  Click(Cell(GridStore::MaxRows - 1, GridStore::MaxColumns - 1));
  EXPECT_EQ(Active(), "XFC1048575");
  Key(Qt::Key_Down);
  Key(Qt::Key_Down);
  EXPECT_EQ(book.ActiveRow(), GridStore::MaxRows);
  const QSignalSpy refused(&view, &WorksheetView::Refused);
  view.NameBox()->setText("A1048577");
  QTest::keyClick(view.NameBox(), Qt::Key_Return);
  EXPECT_EQ(refused.count(), 1);
}

// --- editing ---

TEST_F(WorksheetViewTest, AnAccessKeyIsNoText) {
  const std::string before = book.TextRC(book.ActiveRow(), book.ActiveColumn());
  QKeyEvent key(QEvent::KeyPress, Qt::Key_F, Qt::AltModifier, "f");
  QApplication::sendEvent(grid, &key);
  EXPECT_FALSE(key.isAccepted());
  EXPECT_FALSE(grid->Editor()->isVisible());
  EXPECT_EQ(book.TextRC(book.ActiveRow(), book.ActiveColumn()), before);
}

TEST_F(WorksheetViewTest, EditsInPlace) {
  book.NumberRC(2, 2, 1.0 / 3);
  book.ClearHistory();
  Click(Cell(2, 2));
  EXPECT_EQ(view.FormulaLine()->text(), "0.3333333333333333");
  Type("12.5");
  EXPECT_TRUE(grid->IsEditing());
  EXPECT_TRUE(grid->Editor()->isVisible());
  EXPECT_EQ(view.FormulaLine()->text(), "12.5");
  EXPECT_NE(book.NumberRC(2, 2), 12.5);
  Key(Qt::Key_Shift);  // nothing that a line of text takes
  EXPECT_EQ(grid->Editor()->text(), "12.5");
  Key(Qt::Key_Down);  // typed: the arrow commits
  EXPECT_EQ(book.NumberRC(2, 2), 12.5);
  EXPECT_EQ(Active(), "B3");
  EXPECT_TRUE(grid->hasFocus());
  grid->Undo();
  EXPECT_EQ(book.NumberRC(2, 2), 1.0 / 3);
  EXPECT_FALSE(book.CanUndo());

  DoubleClick(Cell(2, 2));
  EXPECT_EQ(grid->Editor()->text(), "0.3333333333333333");
  Key(Qt::Key_Home);  // moves in the text
  EXPECT_TRUE(grid->IsEditing());
  Key(Qt::Key_Return);
  EXPECT_FALSE(book.CanUndo());  // nothing was changed
  EXPECT_EQ(book.NumberRC(2, 2), 1.0 / 3);

  Click(Cell(2, 2));
  Key(Qt::Key_F2);
  Type("x");
  Key(Qt::Key_Escape);
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_EQ(book.NumberRC(2, 2), 1.0 / 3);

  Type("true");
  Click(Cell(6, 6));  // a click elsewhere commits
  EXPECT_EQ(book.TypeRC(2, 2), LogicalCell);
  Click(Cell(2, 2));
  Key(Qt::Key_Delete);
  EXPECT_EQ(book.TypeRC(2, 2), EmptyCell);
  Type("pending");
  EXPECT_TRUE(view.CommitEdit());
  EXPECT_EQ(book.TextRC(2, 2), "pending");
}

TEST_F(WorksheetViewTest, ShowsNumbersWithTheRegionsSymbol) {
  book.NumberRC(1, 1, 2.25);
  book.NumberRC(2, 1, 1.0 / 3);
  const QFontMetrics metrics(grid->font());
  const Regional comma{",", "."};
  EXPECT_EQ(FittedNumber(book, comma, 1, 1, false, metrics, 200), "2,25");
  EXPECT_EQ(FittedNumber(book, comma, 2, 1, false, metrics, metrics.horizontalAdvance("0.3333")), "0,3333");
  EXPECT_EQ(FittedNumber(book, regional, 1, 1, false, metrics, 200), "2.25");
}

TEST_F(WorksheetViewTest, KeepsAnEditThroughScrollingAndLongTexts) {
  Click(Cell(2, 2));
  Type("1");
  grid->ScrollTo(5000, 2);
  EXPECT_FALSE(grid->Editor()->isVisible());
  Type("23");
  EXPECT_TRUE(grid->Editor()->isVisible());
  Key(Qt::Key_Return);
  EXPECT_EQ(book.NumberRC(2, 2), 123);
  // Nothing typed leaves what a line cannot show as it is.
  const std::string lines = "two\nlines\twith a tab";
  const std::string longest(32767, 'x');
  book.TextRC(3, 2, lines);
  book.TextRC(4, 2, longest);
  book.ClearHistory();
  Click(Cell(3, 2));
  for (int i = 0; i < 2; ++i) {
    Key(Qt::Key_F2);
    ASSERT_TRUE(grid->IsEditing());
    Key(Qt::Key_Return);
  }
  EXPECT_FALSE(book.CanUndo());
  Click(Cell(4, 2));
  Key(Qt::Key_F2);
  Type("y");
  const QSignalSpy refused(&view, &WorksheetView::Refused);
  Key(Qt::Key_Return);
  EXPECT_EQ(refused.count(), 1);
  EXPECT_TRUE(grid->IsEditing());
  Key(Qt::Key_Escape);
  EXPECT_EQ(book.TextRC(4, 2), longest);
}

TEST_F(WorksheetViewTest, EditsInTheFormulaLine) {
  book.TextRC(1, 1, "abc");
  book.ClearHistory();
  QTest::mouseClick(view.FormulaLine(), Qt::LeftButton);
  ASSERT_TRUE(view.FormulaLine()->hasFocus());
  QTest::keyClick(view.FormulaLine(), Qt::Key_End);
  Type("de");
  EXPECT_TRUE(grid->IsEditing());
  EXPECT_EQ(grid->Editor()->text(), "abcde");
  EXPECT_TRUE(grid->Editor()->isVisible());
  Key(Qt::Key_Return);
  EXPECT_EQ(book.TextRC(1, 1), "abcde");
  EXPECT_EQ(Active(), "A2");
  EXPECT_TRUE(grid->hasFocus());
  EXPECT_EQ(view.FormulaLine()->text(), "");
  ASSERT_TRUE(book.Undo());
  EXPECT_FALSE(book.CanUndo());
  // Begun in place, gone on with in the line.
  Type("1");
  QTest::mouseClick(view.FormulaLine(), Qt::LeftButton);
  QTest::keyClick(view.FormulaLine(), Qt::Key_End);
  Type("5");
  EXPECT_EQ(grid->Editor()->text(), "15");
  Key(Qt::Key_Escape);
  EXPECT_EQ(book.TypeRC(2, 1), EmptyCell);
}

TEST_F(WorksheetViewTest, ShowsWhatOthersChange) {
  Click(Cell(1, 1));
  book.TextRC(1, 1, "from a command");
  QApplication::processEvents();
  EXPECT_EQ(view.FormulaLine()->text(), "from a command");
  book.SetSelection({3, 3, 4, 4});
  view.Refresh();
  EXPECT_EQ(view.NameBox()->text(), "C3:D4");
  const QImage before = Port()->grab().toImage();
  book.NumberRC(6, 2, 88);
  EXPECT_NE(Port()->grab().toImage(), before);
}

TEST_F(WorksheetViewTest, RenamesHeadings) {
  DoubleClick(Heading(2));
  ASSERT_TRUE(grid->HeadingEditor()->isVisible());
  QTest::keyClicks(grid->HeadingEditor(), "Weight");
  QTest::keyClick(grid->HeadingEditor(), Qt::Key_Return);
  EXPECT_EQ(book.ColText(2), "Weight");
  EXPECT_TRUE(grid->hasFocus());
  DoubleClick(Heading(2));
  QTest::keyClicks(grid->HeadingEditor(), "No");
  QTest::keyClick(grid->HeadingEditor(), Qt::Key_Escape);
  EXPECT_EQ(book.ColText(2), "Weight");
  DoubleClick(Heading(2));
  QTest::keyClicks(grid->HeadingEditor(), "Mass");
  Click(Cell(4, 4));
  EXPECT_EQ(book.ColText(2), "Mass");
  ASSERT_TRUE(book.Undo());
  EXPECT_EQ(book.ColText(2), "Weight");
}

TEST_F(WorksheetViewTest, SizesColumns) {
  const int width = grid->ColumnHeadingRect(2).width();
  Drag(Border(2), Border(2) + QPoint(40, 0));
  EXPECT_NEAR(grid->ColumnHeadingRect(2).width(), width + 40, 1);
  EXPECT_GT(book.ColumnWidth(2), Workbook::DefaultColumnWidth);
  Drag(Border(2), Border(2) - QPoint(300, 0));
  EXPECT_EQ(book.ColumnWidth(2), 0);
  EXPECT_TRUE(grid->ColumnHeadingRect(2).isEmpty());
  // Out again from just beyond the border.
  const QPoint beyond(grid->ColumnHeadingRect(3).left() + 1, 5);
  Drag(beyond, beyond + QPoint(50, 0));
  EXPECT_NEAR(grid->ColumnHeadingRect(2).width(), 50, 1);
  // Several marked columns at once.
  Drag(Heading(3), Heading(4));
  Drag(Border(3), Border(3) + QPoint(20, 0));
  EXPECT_EQ(book.ColumnWidth(3), book.ColumnWidth(4));
  EXPECT_GT(book.ColumnWidth(4), Workbook::DefaultColumnWidth);
  book.Undo();
  EXPECT_EQ(book.ColumnWidth(4), Workbook::DefaultColumnWidth);
  EXPECT_EQ(grid->ColumnHeadingRect(4).width(), width);
  book.TextRC(1, 6, "a text of twenty-seven char");
  DoubleClick(Border(6));
  EXPECT_EQ(book.ColumnWidth(6), 27);
}

TEST_F(WorksheetViewTest, HidesAndFreezes) {
  grid->GoTo("3:5");
  grid->HideRows(true);
  EXPECT_TRUE(grid->CellRect(4, 1).isEmpty());
  EXPECT_EQ(grid->CellRect(6, 1).top(), grid->CellRect(2, 1).bottom() + 1);
  grid->GoTo("2:6");
  grid->HideRows(false);
  EXPECT_FALSE(grid->CellRect(4, 1).isEmpty());
  grid->GoTo("B3");
  grid->FreezePanes();
  grid->ScrollTo(5000, 50);
  EXPECT_FALSE(grid->CellRect(1, 1).isEmpty());
  EXPECT_FALSE(grid->CellRect(5000, 50).isEmpty());
  EXPECT_TRUE(grid->CellRect(3, 2).isEmpty());
  Click(Cell(2, 1));
  EXPECT_EQ(Active(), "A2");
  Key(Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(Active(), "B3");
  EXPECT_EQ(grid->TopRow(), 3);
  grid->UnfreezePanes();
  EXPECT_FALSE(grid->HasFrozenPanes());
}

// Looks as someone else keeps them.
class PlainLooks : public GridLooks {
 public:
  void Describe(SheetGeometry& geometry) const override {
    if (height >= 0) geometry.rows.SetSize(first, last, height);
    geometry.frozenRows = frozen;
    geometry.showsHeadings = headings;
  }
  std::optional<CellAppearance> Look(int row, int column, const QFont& base) const override {
    if (row != 2 || column != 2) return std::nullopt;
    return CellAppearance{base, Qt::white, QColor(10, 120, 30), Qt::AlignLeft, true};
  }
  void SetRowHeight(int firstRow, int lastRow, int pixels) override {
    first = firstRow;
    last = lastRow;
    height = pixels;
  }
  void Freeze(int rows, int) override { frozen = rows; }

  int first = 1;
  int last = 1;
  int height = -1;
  int frozen = 0;
  bool headings = true;
};

TEST_F(WorksheetViewTest, HeedsLooks) {
  PlainLooks looks;
  grid->SetLooks(&looks);
  const auto colour = [&](int row, int column) {
    return Port()->grab().toImage().pixelColor(grid->CellRect(row, column).bottomRight() - QPoint(6, 3));
  };
  EXPECT_EQ(colour(2, 2), QColor(10, 120, 30));
  EXPECT_NE(colour(2, 3), QColor(10, 120, 30));
  book.NumberRC(2, 2, 2.0 / 3);
  book.SetColumnWidth(2, 5);
  const QImage marks = Port()->grab(grid->CellRect(2, 2)).toImage();
  book.NumberRC(2, 2, 1.0 / 3);  // neither fits, and none may be cut
  EXPECT_EQ(Port()->grab(grid->CellRect(2, 2)).toImage(), marks);
  // A border of a row that is dragged.
  const QPoint border(5, grid->RowHeadingRect(4).bottom());
  const int height = grid->RowHeadingRect(4).height();
  Drag(border, border + QPoint(0, 15));
  EXPECT_EQ(looks.first, 4);
  EXPECT_EQ(looks.height, height + 15);
  EXPECT_EQ(grid->CellRect(4, 1).height(), height + 15);
  grid->GoTo("A3");
  grid->FreezePanes();
  EXPECT_EQ(looks.frozen, 2);
  grid->ScrollTo(900, 1);
  EXPECT_FALSE(grid->CellRect(2, 2).isEmpty());
  looks.headings = false;
  view.Refresh();
  EXPECT_EQ(grid->CellRect(1, 1).topLeft(), QPoint(0, 0));
  grid->SetLooks(nullptr);
}

// --- clipboard ---

TEST_F(WorksheetViewTest, CopiesCutsAndPastes) {
  book.NumberRC(1, 1, 0.1 + 0.2);
  book.TextRC(1, 2, "007");
  book.TextRC(2, 1, "tab\there");
  Drag(Cell(1, 1), Cell(2, 2));
  ASSERT_TRUE(grid->Copy());
  const QMimeData* copied = QApplication::clipboard()->mimeData();
  EXPECT_EQ(copied->text(), "0.30000000000000004\t007\n\"tab\there\"\t\n");
  EXPECT_TRUE(copied->html().contains("<td align=\"right\">0.30000000000000004</td><td>007</td>"));
  book.ClearHistory();
  Click(Cell(4, 3));
  ASSERT_TRUE(grid->Paste());
  EXPECT_EQ(book.Selection(), "C4:D5");
  EXPECT_EQ(book.NumberRC(4, 3), 0.1 + 0.2);
  EXPECT_EQ(book.TypeRC(4, 4), TextCell);
  EXPECT_EQ(book.TextRC(5, 3), "tab\there");
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(book.TypeRC(4, 3), EmptyCell);
  EXPECT_FALSE(book.CanUndo());
  Drag(Cell(1, 1), Cell(2, 2));
  ASSERT_TRUE(grid->Cut());
  EXPECT_EQ(book.LastRow(), 0);
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(book.TextRC(1, 2), "007");
  // From another program; one value fills all that is marked.
  QApplication::clipboard()->setText("3.5\r\n");
  Drag(Cell(6, 1), Cell(8, 2));
  Click(Cell(10, 5), Qt::ControlModifier);
  ASSERT_TRUE(grid->Paste());
  for (int row = 6; row <= 8; ++row) EXPECT_EQ(book.NumberRC(row, 2), 3.5);
  EXPECT_EQ(book.NumberRC(10, 5), 3.5);
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(book.TypeRC(10, 5), EmptyCell);
  EXPECT_EQ(book.TypeRC(6, 1), EmptyCell);
}

TEST_F(WorksheetViewTest, RefusesWhatDoesNotFit) {
  const QSignalSpy refused(&view, &WorksheetView::Refused);
  const QSignalSpy modified(grid, &GridView::Modified);
  grid->GoTo("A1048575");
  EXPECT_FALSE(grid->PasteText("1\n2\n3\n"));
  EXPECT_EQ(refused.count(), 1);
  grid->GoTo("XFD1");
  EXPECT_FALSE(grid->PasteText("1\t2"));
  EXPECT_FALSE(grid->PasteText(QString(40000, u'x')));
  EXPECT_EQ(refused.count(), 3);
  EXPECT_EQ(book.LastRow(), 0);
  EXPECT_EQ(modified.count(), 0);
  EXPECT_TRUE(grid->PasteText("1\n2"));
  // Contents that would be pushed off.
  EXPECT_FALSE(grid->InsertColumns());
  EXPECT_EQ(refused.count(), 4);
  // Ranges that make no block.
  book.SetSelection({1, 1, 2, 2});
  book.AddSelection({5, 3, 5, 3});
  EXPECT_FALSE(grid->Copy());
  EXPECT_EQ(refused.count(), 5);
}

TEST_F(WorksheetViewTest, PastesAMillionCells) {
  constexpr int Rows = 200000;
  QString text;
  for (int row = 1; row <= Rows; ++row) {
    const QString number = QString::number(row);
    text += number + ".5\tword" + number + "\t-" + number + "\t" + (row % 2 ? "*" : number) + "\tTRUE\n";
  }
  QElapsedTimer clock;
  clock.start();
  ASSERT_TRUE(grid->PasteText(text));
  QApplication::processEvents();
  const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
  RecordProperty("seconds", std::to_string(seconds));
  EXPECT_LT(seconds, 2);
  EXPECT_EQ(book.LastRow(), Rows);
  EXPECT_EQ(book.NumberRC(Rows, 1), Rows + 0.5);
  EXPECT_EQ(book.TextRC(777, 2), "word777");
  EXPECT_EQ(book.TextRC(777, 4), "*");
  EXPECT_EQ(book.NumberRC(778, 4), 778);
  EXPECT_EQ(book.TypeRC(Rows, 5), LogicalCell);
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(book.LastRow(), 0);
}

TEST_F(WorksheetViewTest, PaintsAndScrollsAMillionRowsQuickly) {
  std::vector<double> numbers(GridStore::MaxRows);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<double>(i) * 1.37;
  for (int column = 1; column <= 8; ++column) book.SetColumnNumbers(column, 1, numbers);
  QElapsedTimer clock;
  clock.start();
  {
    WorksheetView other(book, regional);
    other.resize(1200, 800);
    other.show();
    QApplication::processEvents();
  }
  EXPECT_LT(clock.elapsed(), 200);
  clock.start();
  for (int page = 0; page < 20; ++page) {
    grid->verticalScrollBar()->setValue(1 + page * 50000);
    Port()->repaint();
  }
  EXPECT_LT(clock.elapsed() / 20.0, 16);
  EXPECT_EQ(grid->TopRow(), 950001);
}

// --- rows, columns, cells ---

TEST_F(WorksheetViewTest, InsertsDeletesAndFills) {
  for (int row = 1; row <= 6; ++row) book.NumberRC(row, 1, row);
  book.ClearHistory();
  Drag(RowHeading(2), RowHeading(3));
  ASSERT_TRUE(grid->InsertRows());
  EXPECT_EQ(book.NumberRC(4, 1), 2);
  ASSERT_TRUE(grid->Undo());
  Click(RowHeading(1));
  Click(RowHeading(3), Qt::ControlModifier);
  ASSERT_TRUE(grid->DeleteRows());
  EXPECT_EQ(book.NumberRC(1, 1), 2);
  EXPECT_EQ(book.NumberRC(2, 1), 4);
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(book.NumberRC(3, 1), 3);
  EXPECT_FALSE(book.CanUndo());
  Drag(Cell(2, 1), Cell(3, 1));
  ASSERT_TRUE(grid->InsertCells(Shift::Columns));
  EXPECT_EQ(book.NumberRC(2, 2), 2);
  ASSERT_TRUE(grid->DeleteCells(Shift::Columns));
  EXPECT_EQ(book.NumberRC(2, 1), 2);
  Drag(Cell(1, 1), Cell(4, 1));
  ASSERT_TRUE(grid->FillDown());
  EXPECT_EQ(book.NumberRC(4, 1), 1);
  Click(Cell(6, 2));
  ASSERT_TRUE(grid->FillRight());  // from the cell on its left
  EXPECT_EQ(book.NumberRC(6, 2), 6);
  EXPECT_TRUE(grid->Find("5", {}));
  EXPECT_EQ(book.Selection(), "A5");
}

// --- sheets ---

class WorksheetTabsTest : public WorksheetViewTest {
 protected:
  QTabBar* bar = view.Tabs()->Bar();
  QPoint Tab(int index) { return bar->tabRect(index).center(); }
  std::string Names() {
    std::string names;
    for (int i = 1; i <= book.SheetCount(); ++i) names += book.SheetName(i) + ' ';
    return names;
  }
  std::string TabNames() {
    std::string names;
    for (int i = 0; i < bar->count(); ++i) names += bar->tabText(i).toStdString() + ' ';
    return names;
  }
};

TEST_F(WorksheetTabsTest, AddsChoosesRenamesAndMoves) {
  Type("12");  // an edit ends with its sheet
  QTest::mouseClick(view.Tabs()->AddButton(), Qt::LeftButton);
  EXPECT_EQ(book.Sheet(), 2);
  EXPECT_EQ(book.TypeRC(1, 1), EmptyCell);
  grid->GoTo("C7");
  Type("5");
  QTest::mouseClick(bar, Qt::LeftButton, {}, Tab(0));
  EXPECT_EQ(book.Sheet(), 1);
  EXPECT_EQ(book.NumberRC(1, 1), 12);
  EXPECT_EQ(view.FormulaLine()->text(), "12");
  EXPECT_EQ(view.NameBox()->text(), "A1");
  QTest::mouseClick(bar, Qt::LeftButton, {}, Tab(1));
  EXPECT_EQ(book.NumberRC(7, 3), 5);
  EXPECT_EQ(view.NameBox()->text(), "C7");

  QTest::mouseDClick(bar, Qt::LeftButton, {}, Tab(1));
  ASSERT_NE(view.Tabs()->NameEditor(), nullptr);
  QTest::keyClicks(view.Tabs()->NameEditor(), "Data");
  QTest::keyClick(view.Tabs()->NameEditor(), Qt::Key_Return);
  EXPECT_EQ(Names(), "Sheet1 Data ");
  EXPECT_EQ(TabNames(), "Sheet1 Data ");
  const QSignalSpy refused(&view, &WorksheetView::Refused);
  view.Tabs()->Rename(1);
  QTest::keyClicks(view.Tabs()->NameEditor(), "data");
  QTest::keyClick(view.Tabs()->NameEditor(), Qt::Key_Return);
  EXPECT_EQ(refused.count(), 1);
  EXPECT_EQ(Names(), "Sheet1 Data ");

  view.Tabs()->Add();
  EXPECT_EQ(Names(), "Sheet1 Data Sheet3 ");
  book.ClearHistory();
  QApplication::processEvents();
  QTest::mousePress(bar, Qt::LeftButton, {}, Tab(0));
  const int far = Tab(2).x() + 30;
  const int height = Tab(0).y();
  for (int x = Tab(0).x(), y = height; x < far; x += 8) {
    QMouseEvent move(QEvent::MouseMove, QPointF(x, y), bar->mapToGlobal(QPointF(x, y)), Qt::NoButton, Qt::LeftButton,
                     {});
    QApplication::sendEvent(bar, &move);
  }
  QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(far, height));
  QTest::qWait(400);
  EXPECT_EQ(Names(), "Data Sheet3 Sheet1 ");
  EXPECT_EQ(TabNames(), Names());
  EXPECT_EQ(book.SheetName(book.Sheet()), "Sheet1");
  EXPECT_EQ(bar->currentIndex() + 1, book.Sheet());
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(TabNames(), "Sheet1 Data Sheet3 ");
  EXPECT_FALSE(book.CanUndo());

  view.Tabs()->Delete(2);
  EXPECT_EQ(TabNames(), "Sheet1 Sheet3 ");
  ASSERT_TRUE(grid->Undo());
  EXPECT_EQ(TabNames(), "Sheet1 Data Sheet3 ");
  grid->GoTo("data!C7");
  EXPECT_EQ(book.NumberRC(7, 3), 5);
  EXPECT_EQ(bar->currentIndex(), 1);
}

TEST_F(WorksheetTabsTest, KeepsItsPlaceOnEachSheet) {
  grid->ScrollTo(500, 3);
  const int top = grid->TopRow();
  view.Tabs()->Add();
  EXPECT_EQ(grid->TopRow(), 1);
  book.Sheet(1);
  view.Refresh();
  EXPECT_EQ(grid->TopRow(), top);
}

}  // namespace
}  // namespace tellurix
