#include "desktop/WindowActions.h"

#include <QApplication>
#include <QColorDialog>
#include <QDateTime>
#include <QFontDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>

#include "desktop/DocumentWindows.h"
#include "desktop/GridView.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportFindBar.h"
#include "desktop/ReportView.h"
#include "desktop/WorksheetView.h"
#include "host/Form.h"
#include "report/Value.h"
#include "session/Skeleton.h"
#include "shell/DocumentFiles.h"
#include "shell/Tools.h"

namespace tellurix {

namespace {

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

// A number that is asked for, or nothing when cancelled or not above 0.
std::optional<double> AskSize(MainWindow& main, const char* prompt, const char* title, double now) {
  Session& session = main.DesktopSession();
  const std::string typed = session.prompts.InputValue(prompt, title, session.Format().FormatValue(now, 2).text);
  if (typed == CancelledInput) return std::nullopt;
  const double size = ParseReal(typed, session.options.regional);
  if (size > 0) return size;
  session.data.ShowInvalidData();
  return std::nullopt;
}

void AddWindowEntries(MainWindow& main, WindowActions& on) {
  on["M_Window(0)"] = {[&main] { main.Area().cascadeSubWindows(); }};
  // Strips of equal size, one below the other or side by side.
  const auto tile = [&main](bool below) {
    const auto windows = main.Area().subWindowList();
    const int count = std::max(1, static_cast<int>(windows.size()));
    const int width = main.Area().width() / (below ? 1 : count), height = main.Area().height() / (below ? count : 1);
    for (int i = 0; i < windows.size(); ++i) {
      windows[i]->showNormal();
      windows[i]->setGeometry(below ? 0 : i * width, below ? i * height : 0, width, height);
    }
  };
  on["M_Window(1)"] = {[tile] { tile(true); }};
  on["M_Window(2)"] = {[tile] { tile(false); }};
  on["M_Window(3)"] = {[&main] {
    int left = 0;  // minimised windows along the lower edge
    for (QMdiSubWindow* window : main.Area().subWindowList()) {
      if (!window->isMinimized()) continue;
      window->move(left, main.Area().height() - window->height());
      left += window->width();
    }
  }};
  on["M_Window(4)"] = {[&main] {
    if (QMdiSubWindow* window = main.Area().currentSubWindow()) window->showMaximized();
  }};
  on["M_Help_Contents"] = {[&main] { main.ShowHelp(0); }};
  on["M_Method_Selection"] = {[&main] { main.ShowHelp(main.DesktopSession().HelpContext); }};
  on["M_About"] = {[&main] {
    QMessageBox::about(&main, "About Tellurix",
                       "<h3>Tellurix</h3><p>A statistical system for clinicians, epidemiologists and medical "
                       "researchers.</p>");
  }};
}

void AddFileEntries(MainWindow& main, WindowActions& on) {
  const auto onDocument = [&main](auto action) {
    return WindowAction{[&main, action] {
                          if (DocumentWindow* window = main.ActiveDocument()) action(*window);
                        },
                        InWorksheet | InReport};
  };
  on["M_New_Workbook"] = {[&main] { main.NewWorkbook(); }};
  on["M_New_Report"] = {[&main] { main.NewReport(); }};
  on["M_Open"] = {[&main] { main.ChooseAndOpen(); }};
  on["M_Close_Workbook"] = on["M_Report_Close"] = onDocument([](DocumentWindow& window) { window.close(); });
  on["M_Save_Workbook"] = on["M_Report_Save"] = onDocument([](DocumentWindow& window) { window.Save(false); });
  on["M_Save_Workbook_As"] = on["M_Report_Save_As"] = onDocument([](DocumentWindow& window) { window.Save(true); });
  on["M_Exit"] = {[&main] { main.close(); }};
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
    if (ShowMessage(main.DesktopSession(), "Delete the sheet " + book.SheetName(book.Sheet()) + "?",
                    YesNo | QuestionIcon) != Reply::Yes) {
      return;
    }
    if (!book.DeleteSheet(book.Sheet())) main.Refuse("The only sheet of a workbook cannot be deleted.");
    grid.Refresh();
  });
  on["M_Goto"] = onGrid([&main](GridView& grid) {
    const std::string typed = main.DesktopSession().prompts.InputValue("Cell or range", "Goto Cell", "");
    if (typed != CancelledInput && !grid.GoTo(QString::fromStdString(typed))) main.DesktopSession().data.ShowInvalidData();
  });
  on["M_Row_Hide"] = onGrid([](GridView& grid) { grid.HideRows(true); });
  on["M_Row_Unhide"] = onGrid([](GridView& grid) { grid.HideRows(false); });
  on["M_Row_Default_Height"] = onGrid([](GridView& grid) { grid.SetRowHeight(-1); });
  on["M_Row_Height"] = onGrid([&main](GridView& grid) {
    const int now = grid.CellRect(grid.Book().ActiveRow(), grid.Book().ActiveColumn()).height();
    if (const auto height = AskSize(main, "Row height (pixels)", "Row Height", now)) {
      grid.SetRowHeight(static_cast<int>(*height));
    }
  });
  on["M_Column_Hide"] = onGrid([](GridView& grid) { grid.HideColumns(true); });
  on["M_Column_Unhide"] = onGrid([](GridView& grid) { grid.HideColumns(false); });
  on["M_Column_Default_Width"] = onGrid([](GridView& grid) { grid.SetColumnWidth(-1); });
  on["M_Column_Width"] = onGrid([&main](GridView& grid) {
    const double now = grid.Book().ColumnWidth(grid.Book().ActiveColumn());
    if (const auto width = AskSize(main, "Column width (characters)", "Column Width", now)) grid.SetColumnWidth(*width);
  });
  on["M_Column_AutoFit"] = onGrid([](GridView& grid) { grid.AutoFitColumns(); });
  on["M_Freeze_Panes"] = onGrid([](GridView& grid) {
    grid.HasFrozenPanes() ? grid.UnfreezePanes() : grid.FreezePanes();
  });
}

// Entries that worksheets and reports share: on whichever is in front.
void AddEditEntries(MainWindow& main, WindowActions& on) {
  const auto either = [&main](auto onGrid, auto onReport) {
    return WindowAction{[&main, onGrid, onReport] {
                          if (WorksheetForm* sheet = main.ActiveWorksheet()) {
                            onGrid(*sheet->View().Grid());
                          } else if (ReportForm* report = main.ActiveReport()) {
                            onReport(report->View());
                          }
                        },
                        InWorksheet | InReport};
  };
  on["M_Cut"] = either([](GridView& grid) { grid.Cut(); }, [](ReportView& view) { view.cut(); });
  on["M_Copy"] = either([](GridView& grid) { grid.Copy(); }, [](ReportView& view) { view.copy(); });
  on["M_Paste"] = either([](GridView& grid) { grid.Paste(); }, [](ReportView& view) { view.paste(); });
  on["M_Clear"] = either([](GridView& grid) { grid.Clear(); },
                         [](ReportView& view) { view.textCursor().removeSelectedText(); });
  on["M_Undo"] = either([](GridView& grid) { grid.Undo(); }, [](ReportView& view) { view.undo(); });
  on["M_Redo"] = either([](GridView& grid) { grid.Redo(); }, [](ReportView& view) { view.redo(); });
  on["M_Find"] = either([&main](GridView& grid) { FindOnSheet(main, grid, false); }, [](ReportView& view) { view.Find(); });
  on["M_Replace"] = either([&main](GridView& grid) { FindOnSheet(main, grid, true); },
                           [](ReportView& view) { view.FindAndReplace(); });
}

void AddReportEntries(MainWindow& main, WindowActions& on) {
  const auto onReport = [&main](auto action) {
    return WindowAction{[&main, action] {
                          if (ReportForm* report = main.ActiveReport()) action(report->View());
                        },
                        InReport};
  };
  on["M_Report_Select_All"] = onReport([](ReportView& view) { view.selectAll(); });
  on["M_Report_Insert_Date"] = onReport([](ReportView& view) {
    view.textCursor().insertText(QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat));
  });
  on["M_Report_Font"] = onReport([](ReportView& view) {
    bool chosen = false;
    const QFont font = QFontDialog::getFont(&chosen, view.currentFont(), &view);
    if (!chosen) return;
    view.SetFamily(font.family());
    view.SetPointSize(font.pointSizeF());
    view.SetBold(font.bold());
    view.SetItalic(font.italic());
    view.SetUnderline(font.underline());
  });
  on["M_Report_Bold"] = onReport([](ReportView& view) { view.SetBold(!view.currentFont().bold()); });
  on["M_Report_Italic"] = onReport([](ReportView& view) { view.SetItalic(!view.currentFont().italic()); });
  on["M_Report_Underline"] = onReport([](ReportView& view) { view.SetUnderline(!view.currentFont().underline()); });
  on["M_Report_Superscript"] = onReport([](ReportView& view) {
    view.SetSuperscript(view.currentCharFormat().verticalAlignment() != QTextCharFormat::AlignSuperScript);
  });
  on["M_Report_Subscript"] = onReport([](ReportView& view) {
    view.SetSubscript(view.currentCharFormat().verticalAlignment() != QTextCharFormat::AlignSubScript);
  });
  on["M_Report_Colour"] = onReport([](ReportView& view) {
    const QColor colour = QColorDialog::getColor(view.textColor(), &view);
    if (colour.isValid()) view.SetColour(colour);
  });
  on["M_Report_Left"] = onReport([](ReportView& view) { view.SetParagraphAlignment(Alignment::Left); });
  on["M_Report_Centre"] = onReport([](ReportView& view) { view.SetParagraphAlignment(Alignment::Centre); });
  on["M_Report_Right"] = onReport([](ReportView& view) { view.SetParagraphAlignment(Alignment::Right); });
  on["M_Report_Justify"] = onReport([](ReportView& view) { view.SetParagraphAlignment(Alignment::Justify); });
  on["M_Report_Bullets"] = onReport([](ReportView& view) { view.ToggleBullets(); });
  on["M_Report_Numbering"] = onReport([](ReportView& view) { view.ToggleNumbers(); });
  on["M_Report_Export_PDF"] = onReport([&main](ReportView& view) {
    const auto file = main.DesktopSession().host.ChooseFile({.title = "Export PDF",
                                                             .filter = "PDF File (*.pdf)|*.pdf",
                                                             .defaultExtension = "pdf",
                                                             .suggestedName = "report.pdf",
                                                             .save = true});
    QString problem;
    if (file && !view.ExportPdf(QString::fromStdString(*file), problem)) main.Refuse(problem);
  });
  // Of reports only, until worksheets print.
  on["M_Page_Setup"] = onReport([](ReportView& view) { view.EditPageSetup(); });
  on["M_Print"] = onReport([](ReportView& view) { view.Print(); });
  on["M_Print_Preview"] = onReport([](ReportView& view) { view.PrintPreview(); });
}

}  // namespace

WindowActions MakeWindowActions(MainWindow& main) {
  WindowActions on;
  AddFileEntries(main, on);
  AddEditEntries(main, on);
  AddWorksheetEntries(main, on);
  AddReportEntries(main, on);
  AddWindowEntries(main, on);
  on["M_Setup_Tools"] = {[&main] { main.SetupToolsMenu(); }};
  return on;
}

}  // namespace tellurix
