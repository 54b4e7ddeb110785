// A worksheet window driven through its menus, dialogs and the menu over its grid.

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPushButton>
#include <QStatusBar>

#include "desktop/DocumentWindows.h"
#include "desktop/FormDialog.h"
#include "desktop/GridView.h"
#include "desktop/MainWindow.h"
#include "desktop/SheetLooks.h"
#include "desktop/SheetPrinting.h"
#include "desktop/WorksheetView.h"
#include "shell/ProgramFolder.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

class SheetActions : public testing::Test {
 protected:
  SheetActions() : main(ScriptPaths(TELLURIX_SOURCE_DIR), {}) {
    main.show();
    main.NewWorkbook();
    main.ActiveWorksheet()->showMaximized();
    grid = main.ActiveWorksheet()->View().Grid();
    book = &main.ActiveWorksheet()->Book();
    main.activateWindow();
    grid->setFocus();
    QTest::qWait(30);
  }
  ~SheetActions() override {
    book->MarkSaved();
    main.close();
  }

  QWidget* Port() { return grid->viewport(); }
  QPoint Cell(int row, int column) { return grid->CellRect(row, column).center(); }
  void Click(int row, int column) { QTest::mouseClick(Port(), Qt::LeftButton, {}, Cell(row, column)); }
  void Mark(int row, int column, int lastRow, int lastColumn) {
    Driver::Drag(Port(), Cell(row, column), Cell(lastRow, lastColumn));
  }
  void Enter(const char* text) {
    QTest::keyClicks(grid, text);  // goes on in the editor that the first one opens
    QTest::keyClick(grid->Editor(), Qt::Key_Return);
  }
  QColor Colour(int row, int column) {
    return Port()->grab().toImage().pixelColor(grid->CellRect(row, column).bottomLeft() + QPoint(3, -3));
  }

  static FormDialog* Dialog() { return qobject_cast<FormDialog*>(QApplication::activeModalWidget()); }
  static QMessageBox* Box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }
  static Driver::Ready DialogShown(const char* title) {
    return [title] { return Dialog() && Dialog()->windowTitle() == title; };
  }
  static Driver::Ready BoxShown() {
    return [] { return Box() != nullptr; };
  }
  static Driver::Ready Free() {
    return [] { return !QApplication::activeModalWidget() && !QApplication::activePopupWidget(); };
  }
  static void PressOk() {
    for (QPushButton* button : Dialog()->findChildren<QPushButton*>()) {
      if (button->isDefault()) return QTest::mouseClick(button, Qt::LeftButton);
    }
  }
  static void CloseBox() { QTest::mouseClick(Box()->button(QMessageBox::Ok), Qt::LeftButton); }
  static void Choose(const char* id, const char* item) {
    auto* combo = qobject_cast<QComboBox*>(Dialog()->WidgetOf(id));
    ASSERT_NE(combo, nullptr) << id;
    ASSERT_GE(combo->findText(item), 0) << item;
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    for (int i = 0; i < 100 && combo->currentText() != item; ++i) QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(combo->currentText(), item);
  }
  static void Fill(const char* id, const char* text) {
    QWidget* entry = Dialog()->WidgetOf(id);
    ASSERT_NE(entry, nullptr) << id;
    entry->setFocus();
    QTest::keyClick(entry, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(entry, text);
  }
  static QString Shown(const char* id) {
    if (auto* combo = qobject_cast<QComboBox*>(Dialog()->WidgetOf(id))) return combo->currentText();
    return static_cast<QLineEdit*>(Dialog()->WidgetOf(id))->text();
  }
  void Menu(std::vector<QString> path) {
    driver.Step(path.back().toStdString(), Free(), [this, path] { Driver::ClickMenu(main.menuBar(), path); });
  }

  MainWindow main;
  GridView* grid = nullptr;
  Workbook* book = nullptr;
  Driver driver;
  int usual_ = 0;
};

TEST_F(SheetActions, FormatsTheMarkedCells) {
  for (int row = 1; row <= 4; ++row) book->NumberRC(row, 1, 1234.5678 * row);
  book->TextRC(1, 3, "Placebo");
  Mark(1, 1, 4, 2);
  Menu({"Format", "Cells"});
  driver.Step("form", DialogShown("Format Cells"), [] {
    EXPECT_EQ(Shown("number"), "General");
    EXPECT_FALSE(Dialog()->WidgetOf("decimals")->isEnabled());
    Choose("number", "Thousands, fixed decimals");
    Fill("decimals", "16");
    PressOk();
  });
  driver.Step("refused", BoxShown(), [] { CloseBox(); });
  driver.Step("again", DialogShown("Format Cells"), [] {
    Fill("decimals", "1");
    EXPECT_EQ(static_cast<QLabel*>(Dialog()->WidgetOf("sample"))->text(), "Sample: 1,234.6");
    Choose("style", "Bold");
    Choose("text", "Navy");
    Choose("fill", "Yellow");
    Driver::Picture(Dialog(), "sheet-format");
    PressOk();
  });
  driver.Step("formatted", Free(), [this] {
    EXPECT_EQ(book->FormattedTextRC(4, 1), "4,938.3");
    EXPECT_TRUE(book->LookAt(2, 2).bold);
    Click(8, 8);
    EXPECT_EQ(Colour(2, 2), QColor(Qt::yellow));
    EXPECT_EQ(Colour(2, 3), QColor(Qt::white));
    Driver::Picture(&main, "sheet-formatted");
    Mark(1, 1, 1, 3);
  });
  // Of cells that differ only what is chosen changes.
  Menu({"Format", "Cells"});
  driver.Step("mixed", DialogShown("Format Cells"), [] {
    EXPECT_EQ(Shown("number"), "(as they are)");
    EXPECT_EQ(Shown("fill"), "(as they are)");
    EXPECT_EQ(Shown("alignment"), "General");
    Choose("alignment", "Centre");
    Driver::Picture(Dialog(), "sheet-format-mixed");
    PressOk();
  });
  driver.Step("centred", Free(), [this] {
    EXPECT_EQ(book->LookAt(1, 3).alignment, CellLook::Alignment::Centre);
    EXPECT_EQ(book->LookAt(1, 3).fillColour, NoColour);
    EXPECT_EQ(book->LookAt(1, 1).fillColour, 0xFFFF00);
    EXPECT_TRUE(book->LookAt(1, 1).number.grouping);
  });
  Menu({"Edit", "Undo Last"});
  Menu({"Edit", "Undo Last"});
  driver.Step("undone", Free(), [this] {
    EXPECT_EQ(book->LookAt(1, 1), CellLook());
    EXPECT_EQ(Colour(2, 2), QColor(Qt::white));
  });
  driver.Drive();
}

TEST_F(SheetActions, LockedSheetsKeepWhatTheyHold) {
  Click(1, 1);
  Enter("12");
  Menu({"Format", "Lock Sheet"});
  driver.Step("said", BoxShown(), [] {
    EXPECT_TRUE(Box()->text().startsWith("The sheet Sheet1 is locked now"));
    CloseBox();
  });
  driver.Step("type", Free(), [this] {
    Click(1, 1);
    QTest::keyClick(Port(), Qt::Key_5);
  });
  driver.Step("refused", BoxShown(), [] {
    EXPECT_TRUE(Box()->text().startsWith("The sheet Sheet1 is locked."));
    CloseBox();
  });
  driver.Step("delete", Free(), [this] {
    EXPECT_FALSE(grid->IsEditing());
    QTest::keyClick(Port(), Qt::Key_Delete);
  });
  driver.Step("refused too", BoxShown(), [] { CloseBox(); });
  Menu({"Format", "Cells"});
  driver.Step("and this", BoxShown(), [] { CloseBox(); });
  driver.Step("held", Free(), [this] { EXPECT_EQ(book->NumberRC(1, 1), 12); });
  Menu({"Format", "Lock Sheet"});
  driver.Step("unlocked", BoxShown(), [] {
    EXPECT_EQ(Box()->text(), "The sheet Sheet1 is no longer locked.");
    CloseBox();
  });
  driver.Step("typed", Free(), [this] {
    Click(1, 1);
    Enter("5");
    EXPECT_EQ(book->NumberRC(1, 1), 5);
  });
  driver.Drive();
}

TEST_F(SheetActions, HeightsPanesAndSettingsAreOfTheSheetAndUndone) {
  const int usual = grid->CellRect(3, 1).height();
  const QPoint border(5, grid->RowHeadingRect(3).bottom());
  Driver::Drag(Port(), border, border + QPoint(0, 16));
  EXPECT_EQ(grid->CellRect(3, 1).height(), usual + 16);
  EXPECT_DOUBLE_EQ(book->RowHeight(3), PixelsToPoints(usual + 16));
  Mark(5, 1, 6, 1);
  Menu({"Format", "Row", "Hide"});
  driver.Step("hidden", Free(), [this] {
    EXPECT_TRUE(book->IsRowHidden(5));
    EXPECT_EQ(grid->CellRect(7, 1).top(), grid->CellRect(4, 1).bottom() + 1);
    Mark(4, 1, 7, 1);
  });
  Menu({"Format", "Row", "Unhide"});
  driver.Step("shown", Free(), [this] {
    EXPECT_FALSE(book->IsRowHidden(6));
    EXPECT_NE(book->RowHeight(3), book->RowHeight(4));  // not put back
    Click(3, 2);
  });
  Menu({"Format", "Freeze Panes"});
  driver.Step("frozen", Free(), [this] {
    EXPECT_EQ(book->SettingsOfSheet().frozenRows, 2);
    grid->ScrollTo(400, 30);
    EXPECT_FALSE(grid->CellRect(1, 1).isEmpty());
    EXPECT_TRUE(grid->CellRect(3, 2).isEmpty());
    Driver::Picture(&main, "sheet-frozen");
  });
  Menu({"Format", "Sheet Settings"});
  driver.Step("settings", DialogShown("Sheet Settings"), [] {
    QTest::mouseClick(Dialog()->WidgetOf("headings"), Qt::LeftButton, {}, QPoint(8, 8));
    QTest::mouseClick(Dialog()->WidgetOf("gridlines"), Qt::LeftButton, {}, QPoint(8, 8));
    PressOk();
  });
  driver.Step("no headings", Free(), [this] {
    EXPECT_EQ(grid->CellRect(1, 1).topLeft(), QPoint(0, 0));
    Driver::Picture(&main, "sheet-bare");
  });
  Menu({"Insert", "Sheet"});
  driver.Step("another", Free(), [this] {
    EXPECT_FALSE(grid->HasFrozenPanes());
    EXPECT_EQ(grid->CellRect(3, 1).height(), usual_);
    book->Sheet(1);
    grid->Refresh();
    EXPECT_TRUE(grid->HasFrozenPanes());
    EXPECT_NE(grid->CellRect(2, 1).topLeft(), QPoint(0, 0));
  });
  usual_ = usual;
  for (int i = 0; i < 3; ++i) Menu({"Edit", "Undo Last"});  // sheet, settings, panes
  driver.Step("undone", Free(), [this] {
    EXPECT_EQ(book->SheetCount(), 1);
    EXPECT_FALSE(grid->HasFrozenPanes());
    grid->ScrollTo(1, 1);
    EXPECT_EQ(grid->CellRect(3, 1).height(), usual_ + 16);
    EXPECT_FALSE(grid->RowHeadingRect(1).isEmpty());
  });
  driver.Drive();
}

TEST_F(SheetActions, OptionsFontAndColumn) {
  book->SetColumnNumbers(2, 1, std::vector<double>{0.5, 0.25});
  const int width = grid->CellRect(1, 1).width();
  Menu({"Format", "Workbook Options"});
  driver.Step("options", DialogShown("Workbook Options"), [] {
    Fill("width", "20");
    PressOk();
  });
  driver.Step("wider", Free(), [this, width] { EXPECT_GT(grid->CellRect(1, 1).width(), width * 3 / 2); });
  Menu({"Format", "Default Font"});
  driver.Step("font", DialogShown("Default Font"), [] {
    Fill("size", "18");
    PressOk();
  });
  driver.Step("larger", Free(), [this] {
    EXPECT_EQ(grid->font().pointSizeF(), 18);
    EXPECT_GE(grid->CellRect(1, 1).height(), QFontMetrics(grid->font()).height());
    Click(1, 2);
  });
  Menu({"Edit", "Describe Column Data"});
  driver.Step("column", DialogShown("Describe Column Data"), [] {
    Fill("heading", "Share");
    Choose("number", "Percent");
    Fill("width", "30");
    Driver::Picture(Dialog(), "sheet-describe");
    PressOk();
  });
  driver.Step("described", Free(), [this] {
    EXPECT_EQ(book->ColText(2), "Share");
    EXPECT_EQ(book->FormattedTextRC(2, 2), "25.00%");
    EXPECT_EQ(book->LookAt(900000, 2).number.form, NumberFormat::Form::Percent);
    EXPECT_EQ(book->ColumnWidth(2), 30);
    Driver::Picture(&main, "sheet-options");
  });
  Menu({"Edit", "Undo Last"});
  driver.Step("at once", Free(), [this] {
    EXPECT_EQ(book->ColText(2), "");
    EXPECT_EQ(book->FormattedTextRC(2, 2), "0.25");
    EXPECT_EQ(book->ColumnWidth(2), 20);
  });
  Menu({"Format", "Colour Palette"});
  driver.Step("palette", DialogShown("Colour Palette"), [] {
    Driver::Picture(Dialog(), "sheet-palette");
    QTest::keyClick(Dialog(), Qt::Key_Escape);
  });
  driver.Drive();
}

TEST_F(SheetActions, PastesSpecially) {
  for (int row = 1; row <= 3; ++row) book->NumberRC(row, 1, row);
  Click(4, 1);
  Enter("=A1+A3");
  Mark(1, 1, 4, 1);
  Menu({"Edit", "Copy"});
  driver.Step("go", Free(), [this] { Click(6, 3); });
  Menu({"Edit", "Paste Special"});
  driver.Step("values", DialogShown("Paste Special"), [] {
    QTest::mouseClick(Dialog()->WidgetOf("values"), Qt::LeftButton, {}, QPoint(8, 8));
    QTest::mouseClick(Dialog()->WidgetOf("transpose"), Qt::LeftButton, {}, QPoint(8, 8));
    PressOk();
  });
  driver.Step("pasted", Free(), [this] {
    for (int column = 3; column <= 6; ++column) {
      EXPECT_EQ(book->NumberRC(6, column), column < 6 ? column - 2 : 4);
      EXPECT_EQ(book->TypeRC(6, column), NumberCell);
    }
    EXPECT_EQ(book->TypeRC(7, 3), EmptyCell);
    EXPECT_EQ(book->Selection(), "C6:F6");
    Click(1, 2);
  });
  Menu({"Edit", "Paste Special"});
  driver.Step("formulas", DialogShown("Paste Special"), [] { PressOk(); });
  driver.Step("moved", Free(), [this] { EXPECT_EQ(book->FormulaText(4, 2), "=B1+B3"); });
  driver.Drive();
}

TEST_F(SheetActions, MenuOverTheGrid) {
  book->NumberRC(2, 2, 3);
  driver.Step("cells", Free(), [this] {
    QTest::mouseClick(Port(), Qt::RightButton, {}, Cell(2, 2));
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->findChild<QAction*>("RenameHeading"), nullptr);
    Driver::Picture(menu, "sheet-menu");
    auto* clear = menu->findChild<QAction*>("M_Clear");
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(clear).center());
  });
  driver.Step(
      "cleared", [this] { return Free()() && book->TypeRC(2, 2) == EmptyCell; },
      [this] {
        QTest::mouseClick(Port(), Qt::RightButton, {}, grid->ColumnHeadingRect(3).center());
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(menu->findChild<QAction*>("M_Row_Hide"), nullptr);
        auto* rename = menu->findChild<QAction*>("RenameHeading");
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(rename).center());
      });
  driver.Step(
      "renamed", [this] { return grid->HeadingEditor()->isVisible(); },
      [this] {
        QTest::keyClicks(grid->HeadingEditor(), "Age");
        QTest::keyClick(grid->HeadingEditor(), Qt::Key_Return);
        EXPECT_EQ(book->ColText(3), "Age");
      });
  driver.Drive();
}

TEST_F(SheetActions, StatusBarSumsTheMarkedNumbers) {
  for (int row = 1; row <= 4; ++row) book->NumberRC(row, 1, row + 0.5);
  book->TextRC(5, 1, "*");
  auto* label = main.statusBar()->findChild<QLabel*>("summary");
  ASSERT_NE(label, nullptr);
  Mark(1, 1, 6, 1);
  QTest::qWait(250);
  EXPECT_EQ(label->text(), "Sum 12   Mean 3   Count 4");
  main.NewReport();
  QTest::qWait(30);
  EXPECT_EQ(label->text(), "");
  main.Area().setActiveSubWindow(main.Area().subWindowList().front());
  QTest::qWait(30);
  EXPECT_EQ(label->text(), "Sum 12   Mean 3   Count 4");
  Click(1, 1);
  QTest::qWait(250);
  EXPECT_EQ(label->text(), "");
}

TEST_F(SheetActions, PrintAreaPageSetupAndPreview) {
  for (int row = 1; row <= 300; ++row) book->NumberRC(row, 1, row);
  Mark(2, 1, 5, 2);
  Menu({"File", "Set Print Area"});
  driver.Step("area", Free(), [this] {
    EXPECT_EQ(PrintedRange(*book), (CellRange{2, 1, 5, 2}));
    Click(1, 1);
  });
  Menu({"File", "Set Print Area"});
  driver.Step("whole", Free(), [this] { EXPECT_EQ(PrintedRange(*book), (CellRange{1, 1, 300, 1})); });
  Menu({"File", "Page Setup"});
  driver.Step("page", DialogShown("Page Setup"), [] {
    Choose("orientation", "Landscape");
    Fill("left", "40");
    PressOk();
  });
  driver.Step("refused", BoxShown(), [] { CloseBox(); });
  driver.Step("page again", DialogShown("Page Setup"), [] {
    Fill("left", "3");
    Driver::Picture(Dialog(), "sheet-page");
    PressOk();
  });
  Menu({"File", "Print Preview"});
  driver.Step(
      "preview", [] { return qobject_cast<QPrintPreviewDialog*>(QApplication::activeModalWidget()); },
      [this] {
        EXPECT_TRUE(book->SettingsOfSheet().printing.isLandscape);
        EXPECT_EQ(book->SettingsOfSheet().printing.left, 3);
        QTest::qWait(100);
        Driver::Picture(QApplication::activeModalWidget(), "sheet-preview");
        QApplication::activeModalWidget()->close();
      });
  driver.Drive();
}

}  // namespace
}  // namespace tellurix
