#include "desktop/WindowActions.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QDateTime>
#include <QFontDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>

#include "desktop/DocumentWindows.h"
#include "desktop/GridView.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportDefaults.h"
#include "desktop/ReportFindBar.h"
#include "desktop/ReportView.h"
#include "desktop/SheetActions.h"
#include "desktop/SheetForms.h"
#include "desktop/WorksheetView.h"
#include "graphics/ImageExport.h"
#include "session/Skeleton.h"
#include "shell/Product.h"
#include "shell/Tools.h"

namespace tellurix {

namespace {

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
                       QString("<h3>Tellurix</h3><p>Version %1</p><p>A statistical system for clinicians, "
                               "epidemiologists and medical researchers.</p>")
                           .arg(ProductVersion));
  }};
}

void AddFileEntries(MainWindow& main, WindowActions& on) {
  const auto onDocument = [&main](auto action) {
    return WindowAction{[&main, action] {
                          if (DocumentWindow* window = main.ActiveDocument()) action(*window);
                        },
                        InWorksheet | InReport};
  };
  on["M_Close_Workbook"] = on["M_Report_Close"] = onDocument([](DocumentWindow& window) { window.close(); });
  on["M_Exit"] = {[&main] { main.close(); }};
}

// Asks in which of the forms that the clipboard holds it is pasted into a report.
void PasteIntoReport(MainWindow& main, ReportView& view) {
  const QMimeData* source = QApplication::clipboard()->mimeData();
  const auto forms = source ? ReportView::PasteForms(*source) : std::vector<PasteForm>();
  if (forms.empty()) return main.Refuse("There is nothing to paste.");
  constexpr const char* names[] = {"Formatted text (RTF)", "Formatted text (HTML)", "Picture", "Unformatted text"};
  std::vector<std::string> rows;
  for (const PasteForm form : forms) rows.emplace_back(names[static_cast<int>(form)]);
  Form form("PasteSpecial", "Paste Special");
  form.AddList("as", "Paste &as:", rows, 0);
  form.AddButton("ok", "OK", ButtonRole::Default);
  form.AddButton("cancel", "Cancel", ButtonRole::Cancel);
  if (!main.DesktopSession().host.RunForm(form)) return;
  view.PasteAs(forms[static_cast<std::size_t>(std::max(0, form.IndexOf("as")))], *source);
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
  on["M_Paste_Special"] = either([&main](GridView& grid) { PasteSpecial(main, grid); },
                                 [&main](ReportView& view) { PasteIntoReport(main, view); });
  on["M_Clear"] =
      either([](GridView& grid) { grid.Clear(); }, [](ReportView& view) { view.textCursor().removeSelectedText(); });
  on["M_Undo"] = either([](GridView& grid) { grid.Undo(); }, [](ReportView& view) { view.undo(); });
  on["M_Redo"] = either([](GridView& grid) { grid.Redo(); }, [](ReportView& view) { view.redo(); });
  on["M_Find"] =
      either([&main](GridView& grid) { FindOnSheet(main, grid, false); }, [](ReportView& view) { view.Find(); });
  on["M_Replace"] = either([&main](GridView& grid) { FindOnSheet(main, grid, true); },
                           [](ReportView& view) { view.FindAndReplace(); });
}

void AddPrintEntries(MainWindow& main, WindowActions& on) {
  const auto either = [&main](auto onSheet, auto onReport) {
    return WindowAction{[&main, onSheet, onReport] {
                          if (WorksheetForm* sheet = main.ActiveWorksheet()) {
                            onSheet(main, *sheet);
                          } else if (ReportForm* report = main.ActiveReport()) {
                            onReport(report->View());
                          }
                        },
                        InWorksheet | InReport};
  };
  on["M_Page_Setup"] = either(SetUpSheetPage, [](ReportView& view) { view.EditPageSetup(); });
  on["M_Print"] = either(PrintSheetOn, [&main](ReportView& view) { view.Print(main.Printer); });
  on["M_Print_Preview"] = either(PreviewSheet, [](ReportView& view) { view.PrintPreview(); });
  on["M_Printer_Setup"] = {[&main] { ChoosePrinter(main); }};
}

void AddReportEntries(MainWindow& main, WindowActions& on) {
  const auto onReport = [&main](auto action) {
    return WindowAction{[&main, action] {
                          if (ReportForm* report = main.ActiveReport()) action(report->View());
                        },
                        InReport};
  };
  on["M_Report_Defaults"] = onReport([&main](ReportView& view) {
    Session& session = main.DesktopSession();
    if (!ReportDefaults(session)) return;
    view.SetPage(PageOf(session.settings, view.Page()));
    SetStartIndents(view, session.settings);
  });
  on["M_Report_Select_All"] = onReport([](ReportView& view) { view.selectAll(); });
  on["M_Report_Export_Picture"] = onReport([&main](ReportView& view) {
    Session& session = main.DesktopSession();
    const auto picture = view.ChosenPicture();
    if (picture) RunImageExport(session.host, *picture, session.graphics.fonts, session.HelpContext);
  });
  on["M_Report_Export_Picture"].isReady = [&main] {
    ReportForm* report = main.ActiveReport();
    return report && report->View().ChosenPicture();
  };
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
    if (file && !view.ExportPdf(QString::fromStdString(file->path), problem)) main.Refuse(problem);
  });
}

}  // namespace

WindowActions MakeWindowActions(MainWindow& main) {
  WindowActions on;
  AddFileEntries(main, on);
  AddEditEntries(main, on);
  AddWorksheetEntries(main, on);
  AddReportEntries(main, on);
  AddPrintEntries(main, on);
  AddWindowEntries(main, on);
  on["M_Setup_Tools"] = {[&main] { main.SetupToolsMenu(); }};
  return on;
}

}  // namespace tellurix
