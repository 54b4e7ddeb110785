#include "desktop/SheetActions.h"

#include <fmt/format.h>

#include <QMenu>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QStatusBar>
#include <cmath>
#include <optional>

#include "desktop/DocumentWindows.h"
#include "desktop/GridRanges.h"
#include "desktop/GridView.h"
#include "desktop/MainWindow.h"
#include "desktop/SheetForms.h"
#include "desktop/SheetPrinting.h"
#include "desktop/WorksheetView.h"
#include "host/Form.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr int MostPreviewed = 200;  // pages

void DeleteOrInsertCells(MainWindow& main, GridView& grid, bool insert) {
  Prompts& prompts = main.DesktopSession().prompts;
  const char* choices = insert ? "^Shift cells right|^Shift cells down|^Entire row|^Entire column"
                               : "^Shift cells left|^Shift cells up|^Entire row|^Entire column";
  if (!prompts.ShowOptions(choices, insert ? "Insert" : "Delete Special")) return;
  if (prompts.OptionOn(2)) {
    insert ? grid.InsertRows() : grid.DeleteRows();
  } else if (prompts.OptionOn(3)) {
    insert ? grid.InsertColumns() : grid.DeleteColumns();
  } else {
    const Shift shift = prompts.OptionOn(0) ? Shift::Columns : Shift::Rows;
    insert ? grid.InsertCells(shift) : grid.DeleteCells(shift);
  }
}

// A number that is asked for, or nothing when cancelled or not above 0 and up to `most`.
std::optional<double> AskSize(MainWindow& main, const char* prompt, const char* title, double now, double most) {
  Session& session = main.DesktopSession();
  const Regional& regional = session.options.regional;
  const std::string typed =
      session.prompts.InputValue(prompt, title, Localized(fmt::format("{}", std::round(100 * now) / 100), regional));
  if (typed == CancelledInput) return std::nullopt;
  const auto size = ReadNumber(typed, regional);
  if (size && *size > 0 && *size <= most) return size;
  session.data.ShowInvalidData();
  return std::nullopt;
}

std::string SheetName(const Workbook& book) { return book.SheetName(book.Sheet()); }

void LockOrUnlock(MainWindow& main, GridView& grid) {
  if (!grid.CommitEdit()) return;
  Workbook& book = grid.Book();
  book.LockSheet(!book.SheetLocked());
  const char* now = book.SheetLocked()
                        ? "The sheet {} is locked now: its cells, headings and formats cannot be changed."
                        : "The sheet {} is no longer locked.";
  ShowMessage(main.DesktopSession(), fmt::format(fmt::runtime(now), SheetName(book)), InformationIcon);
}

void SetPrintArea(MainWindow& main, WorksheetForm& form) {
  Workbook& book = form.Book();
  if (book.SelectionCount() > 1) return main.Refuse("Mark a single range to print.");
  CellRange range = book.GetSelection(0);
  SheetSettings settings = book.SettingsOfSheet();
  std::string said = "The whole sheet prints";
  if (range.IsOneCell()) {
    settings.printing.area.reset();
  } else {
    // Of whole rows and columns what is used.
    if (range.lastRow == GridStore::MaxRows) range.lastRow = std::max(range.firstRow, book.LastRow());
    if (range.lastColumn == GridStore::MaxColumns) range.lastColumn = std::max(range.firstColumn, book.LastCol());
    settings.printing.area = range;
    said = RangeText(range) + " is what prints";
  }
  book.SetSettingsOfSheet(settings);
  main.statusBar()->showMessage(QString::fromStdString(said));
}

// What prints, after an edit has ended; nothing after a message.
std::optional<CellRange> RangeToPrint(MainWindow& main, WorksheetForm& form) {
  if (!form.View().CommitEdit()) return std::nullopt;
  const auto range = PrintedRange(form.Book());
  if (!range) main.Refuse("The sheet is empty: there is nothing to print.");
  return range;
}

void SetUp(MainWindow& main, QPrinter& printer, const PageSetup& page) {
  if (!main.Printer.isEmpty()) printer.setPrinterName(main.Printer);
  printer.setPageLayout(ToPageLayout(page));
}

}  // namespace

// Find, or find and replace, on a worksheet: a form that stays open until it is closed.
void FindOnSheet(MainWindow& main, GridView& grid, bool replace) {
  Form form("Find", replace ? "Replace" : "Find");
  form.AddText("text", "Find what:", "");
  if (replace) form.AddText("by", "Replace with:", "");
  form.AddCheck("case", "Match &case", false);
  form.AddCheck("whole", "Find entire cells &only", false);
  form.AddLabel("found", "");
  form.AddButton("next", "&Find Next", ButtonRole::Default);
  if (replace) {
    form.AddButton("replace", "&Replace", ButtonRole::None);
    form.AddButton("all", "Replace &All", ButtonRole::None);
  }
  form.AddButton("close", "Close", ButtonRole::Cancel);
  form.onPress = [&](const Control& button) {
    const QString text = QString::fromStdString(form.ValueOf("text"));
    const QString by = QString::fromStdString(form.ValueOf("by"));
    const FindOptions options{.matchCase = form.IsChecked("case"), .wholeCell = form.IsChecked("whole")};
    std::string outcome;
    if (text.isEmpty()) {
      outcome = "There is nothing to find";
    } else if (button.id == "all") {
      outcome = std::to_string(grid.ReplaceEverywhere(text, by, options)) + " replaced";
    } else {
      const bool found = button.id == "next" ? grid.Find(text, options) : grid.Replace(text, by, options);
      if (!found) outcome = "Not found";
    }
    form.Update("found", [&](Control& label) { label.caption = outcome; });
  };
  main.DesktopSession().host.RunForm(form);
}

void AddWorksheetEntries(MainWindow& main, WindowActions& on) {
  // On the grid of the worksheet in front.
  const auto onGrid = [&main](auto action) {
    return WindowAction{[&main, action] {
                          if (WorksheetForm* sheet = main.ActiveWorksheet()) action(*sheet->View().Grid());
                        },
                        InWorksheet};
  };
  on["M_Fill_Down"] = onGrid([](GridView& grid) { grid.FillDown(); });
  on["M_Fill_Right"] = onGrid([](GridView& grid) { grid.FillRight(); });
  on["M_Delete_Row"] = onGrid([](GridView& grid) { grid.DeleteRows(); });
  on["M_Delete_Column"] = onGrid([](GridView& grid) { grid.DeleteColumns(); });
  on["M_Insert_Row"] = onGrid([](GridView& grid) { grid.InsertRows(); });
  on["M_Insert_Column"] = onGrid([](GridView& grid) { grid.InsertColumns(); });
  on["M_Delete_Special"] = onGrid([&main](GridView& grid) { DeleteOrInsertCells(main, grid, false); });
  on["M_Insert_Cells"] = onGrid([&main](GridView& grid) { DeleteOrInsertCells(main, grid, true); });
  on["M_Insert_Sheet"] = onGrid([](GridView& grid) {
    grid.Book().Sheet(grid.Book().AddSheet());
    grid.Refresh();
  });
  on["M_Delete_Sheet"] = onGrid([&main](GridView& grid) {
    Workbook& book = grid.Book();
    if (!grid.CommitEdit()) return;
    if (book.SheetLocked()) return main.Refuse(QString::fromStdString(LockedText(book)));
    if (ShowMessage(main.DesktopSession(), "Delete the sheet " + book.SheetName(book.Sheet()) + "?",
                    YesNo | QuestionIcon) != Reply::Yes) {
      return;
    }
    if (!book.DeleteSheet(book.Sheet())) main.Refuse("The only sheet of a workbook cannot be deleted.");
    grid.Refresh();
  });
  on["M_Goto"] = onGrid([&main](GridView& grid) {
    const std::string typed = main.DesktopSession().prompts.InputValue("Cell or range", "Goto Cell", "");
    if (typed != CancelledInput && !grid.GoTo(QString::fromStdString(typed)))
      main.DesktopSession().data.ShowInvalidData();
  });
  on["M_Row_Hide"] = onGrid([](GridView& grid) { grid.HideRows(true); });
  on["M_Row_Unhide"] = onGrid([](GridView& grid) { grid.HideRows(false); });
  on["M_Row_Default_Height"] = onGrid([](GridView& grid) { grid.SetRowHeight(-1); });
  on["M_Row_Height"] = onGrid([&main](GridView& grid) {
    Workbook& book = grid.Book();
    const double now = book.RowHeight(book.ActiveRow());
    const auto height = AskSize(main, "Row height (points)", "Row Height", now, 1000);
    if (!height) return;
    const GridStep step(book, "Row height");
    for (int i = 0; i < book.SelectionCount(); ++i) {
      const CellRange range = book.GetSelection(i);
      book.SetRowHeight(range.firstRow, range.lastRow, *height);
    }
  });
  on["M_Column_Hide"] = onGrid([](GridView& grid) { grid.HideColumns(true); });
  on["M_Column_Unhide"] = onGrid([](GridView& grid) { grid.HideColumns(false); });
  on["M_Column_Default_Width"] = onGrid([](GridView& grid) { grid.SetColumnWidth(-1); });
  on["M_Column_Width"] = onGrid([&main](GridView& grid) {
    const double now = grid.Book().ColumnWidth(grid.Book().ActiveColumn());
    const auto width = AskSize(main, "Column width (characters)", "Column Width", now, 255);
    if (width) grid.SetColumnWidth(*width);
  });
  on["M_Column_AutoFit"] = onGrid([](GridView& grid) { grid.AutoFitColumns(); });
  on["M_Freeze_Panes"] = onGrid([&main](GridView& grid) {
    if (grid.HasFrozenPanes()) return grid.UnfreezePanes();
    if (grid.Book().ActiveRow() == 1 && grid.Book().ActiveColumn() == 1) {
      return main.Refuse("Choose the cell below and to the right of what is to stay in view.");
    }
    grid.FreezePanes();
  });
  on["M_Format_Cells"] = onGrid([&main](GridView& grid) { FormatCells(main, grid); });
  on["M_Describe_Column"] = onGrid([&main](GridView& grid) { DescribeColumn(main, grid); });
  on["M_Default_Font"] = onGrid([&main](GridView& grid) { ChooseDefaultFont(main, grid); });
  on["M_Colour_Palette"] = onGrid([&main](GridView& grid) { EditPalette(main, grid); });
  on["M_Lock_Sheet"] = onGrid([&main](GridView& grid) { LockOrUnlock(main, grid); });
  on["M_Sheet_Settings"] = onGrid([&main](GridView& grid) { EditSheetSettings(main, grid); });
  on["M_Workbook_Options"] = onGrid([&main](GridView& grid) { EditWorkbookOptions(main, grid); });
  on["M_Print_Area"] = {[&main] {
                          if (WorksheetForm* sheet = main.ActiveWorksheet()) SetPrintArea(main, *sheet);
                        },
                        InWorksheet};
}

// ---------------------------------------------------------------------------------------------------------------------
// Printing
// ---------------------------------------------------------------------------------------------------------------------

void SetUpSheetPage(MainWindow& main, WorksheetForm& form) { EditPageSetup(main, form.Book()); }

void PrintSheetOn(MainWindow& main, WorksheetForm& form) {
  const auto range = RangeToPrint(main, form);
  if (!range) return;
  QPrinter printer(QPrinter::HighResolution);
  SetUp(main, printer, PageOf(form.Book().SettingsOfSheet().printing));
  QPrintDialog dialog(&printer, &main);
  dialog.setOption(QAbstractPrintDialog::PrintPageRange);
  if (dialog.exec() != QDialog::Accepted) return;
  BusyPointer(main.DesktopSession());
  const int pages = PrintSheet(form.Book(), main.DesktopSession().options.regional, *range, printer,
                               {printer.fromPage(), printer.toPage()});
  NormalPointer(main.DesktopSession());
  if (pages < 0) main.Refuse("The sheet could not be printed.");
}

void PreviewSheet(MainWindow& main, WorksheetForm& form) {
  const auto range = RangeToPrint(main, form);
  if (!range) return;
  QPrinter printer(QPrinter::HighResolution);
  SetUp(main, printer, PageOf(form.Book().SettingsOfSheet().printing));
  QPrintPreviewDialog dialog(&printer, &main);
  dialog.resize(900, 700);
  QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&](QPrinter* target) {
    int total = 0;
    PrintSheet(form.Book(), main.DesktopSession().options.regional, *range, *target, {}, MostPreviewed, &total);
    dialog.setWindowTitle(total > MostPreviewed
                              ? QString("Print Preview (the first %1 of %2 pages)").arg(MostPreviewed).arg(total)
                              : QString("Print Preview"));
  });
  dialog.exec();
}

void ChoosePrinter(MainWindow& main) {
  std::vector<std::string> names;
  int chosen = 0;
  const QString now = main.Printer.isEmpty() ? QPrinterInfo::defaultPrinterName() : main.Printer;
  for (const QString& name : QPrinterInfo::availablePrinterNames()) {
    if (name == now) chosen = static_cast<int>(names.size());
    names.push_back(name.toStdString());
  }
  if (names.empty()) {
    ShowMessage(main.DesktopSession(), "There is no printer. Print can still write the pages to a PDF file.",
                InformationIcon);
    return;
  }
  Form form("PrinterSetup", "Printer Setup");
  form.AddList("printer", "&Printer:", names, chosen);
  form.AddButton("ok", "OK", ButtonRole::Default);
  form.AddButton("cancel", "Cancel", ButtonRole::Cancel);
  if (main.DesktopSession().host.RunForm(form)) main.Printer = QString::fromStdString(form.ValueOf("printer"));
}

// ---------------------------------------------------------------------------------------------------------------------
// The menu over the grid
// ---------------------------------------------------------------------------------------------------------------------

void ShowSheetMenu(MainWindow& main, WorksheetForm& form, const QPoint& globalPosition) {
  GridView* grid = form.View().Grid();
  const Workbook& book = form.Book();
  const CellRange range = book.GetSelection(book.SelectionCount() - 1);
  const bool wholeColumns = IsWholeColumns(range);
  const bool wholeRows = IsWholeRows(range);
  auto* menu = new QMenu(&form);
  menu->setObjectName("SheetMenu");
  menu->setAttribute(Qt::WA_DeleteOnClose);
  // The entry runs once the menu has gone: it may show a dialog.
  const auto add = [&](const char* name, const char* caption) {
    const MenuEntry* entry = FindCommand(name);
    if (!entry) return;
    QAction* action = menu->addAction(caption);
    action->setObjectName(name);
    QObject::connect(
        action, &QAction::triggered, &main, [&main, entry] { main.RunEntry(*entry); }, Qt::QueuedConnection);
  };
  add("M_Cut", "Cu&t");
  add("M_Copy", "&Copy");
  add("M_Paste", "&Paste");
  add("M_Paste_Special", "Paste &Special...");
  add("M_Clear", "C&lear");
  menu->addSeparator();
  if (!wholeRows && !wholeColumns) {
    add("M_Insert_Cells", "&Insert Cells...");
    add("M_Delete_Special", "&Delete Cells...");
  }
  if (!wholeColumns || wholeRows) {
    add("M_Insert_Row", "Insert &Rows");
    add("M_Delete_Row", "Delete Ro&ws");
  }
  if (!wholeRows || wholeColumns) {
    add("M_Insert_Column", "Insert Colu&mns");
    add("M_Delete_Column", "Delete Colum&ns");
  }
  menu->addSeparator();
  if (wholeColumns && !wholeRows) {
    QAction* rename = menu->addAction("R&ename Heading");
    rename->setObjectName("RenameHeading");
    QObject::connect(
        rename, &QAction::triggered, grid, [grid] { grid->RenameColumn(grid->Book().ActiveColumn()); },
        Qt::QueuedConnection);
    add("M_Describe_Column", "Descri&be Column Data...");
  }
  add("M_Format_Cells", "&Format Cells...");
  if (!wholeColumns || wholeRows) {
    add("M_Row_Hide", "&Hide Rows");
    add("M_Row_Unhide", "&Unhide Rows");
  }
  if (!wholeRows || wholeColumns) {
    add("M_Column_Hide", "Hide C&olumns");
    add("M_Column_Unhide", "Unhide Columns");
  }
  menu->popup(globalPosition);
}

}  // namespace tellurix
