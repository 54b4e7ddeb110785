// The road of a first analysis, as a person takes it: a csv, the menu, the bar, the form, the report, the help, the
// close.

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>

#include "desktop/DocumentWindows.h"
#include "desktop/FormDialog.h"
#include "desktop/GridView.h"
#include "desktop/HelpWindow.h"
#include "desktop/LinkServer.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportView.h"
#include "desktop/SelectionBar.h"
#include "desktop/WorksheetView.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/DocumentFiles.h"
#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

const fs::path Root = TELLURIX_SOURCE_DIR;

// A long calculation: it goes on until it is stopped.
void Endless(Session& session) {
  const Calculation calculation(session);
  for (int i = 0; ShowProgress(session, "Counting", 0.5) && i < 100000; ++i) QTest::qWait(1);
}

class FirstRoad : public testing::Test {
 protected:
  FirstRoad() : main(ScriptPaths(Root), {}) {
    main.show();
    EXPECT_TRUE(main.OpenFile(Root / "Data" / "sleep.csv"));
    QTest::qWait(30);
  }

  SelectionBar& bar() { return main.Bar(); }
  QWidget* OnBar(const char* name) { return bar().findChild<QWidget*>(name); }
  GridView* grid() {
    for (QMdiSubWindow* window : main.Area().subWindowList()) {
      if (auto* form = qobject_cast<WorksheetForm*>(window)) return form->View().Grid();
    }
    return nullptr;
  }
  GridView* ActiveGrid() { return main.ActiveWorksheet()->View().Grid(); }
  // Types into a cell, as a person who works on the data does.
  void EnterInGrid(int row, int column, const char* text) {
    QTest::mouseClick(ActiveGrid()->viewport(), Qt::LeftButton, {}, ActiveGrid()->CellRect(row, column).center());
    QTest::keyClicks(ActiveGrid(), text);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  }
  Report& report() { return main.OpenedDocuments().ReportAt(0); }
  std::string ReportText() { return main.OpenedDocuments().ReportCount() ? WriteText(report().text) : ""; }

  static HelpWindow* Help() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (auto* help = qobject_cast<HelpWindow*>(window)) return help;
    }
    return nullptr;
  }
  static FormDialog* Form() { return qobject_cast<FormDialog*>(QApplication::activeModalWidget()); }
  static QMessageBox* Box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }
  static void Click(QWidget* widget) { QTest::mouseClick(widget, Qt::LeftButton); }
  static void PressOk() {
    for (QPushButton* button : Form()->findChildren<QPushButton*>()) {
      if (button->isDefault()) return Click(button);
    }
  }
  static void Answer(QMessageBox::StandardButton button) { Click(Box()->button(button)); }

  Driver::Ready BarShown() {
    return [this] { return bar().IsWaiting() && bar().isVisible(); };
  }
  Driver::Ready FormShown() {
    return [] { return Form() != nullptr; };
  }
  Driver::Ready BoxShown() {
    return [] { return Box() != nullptr; };
  }
  Driver::Ready Idle() {
    return [this] { return !main.DesktopSession().CommandRunning; };
  }
  void DragColumn(int column) {
    Driver::Drag(grid()->viewport(), grid()->CellRect(1, column).center(), grid()->CellRect(11, column).center());
  }

  MainWindow main;
  Driver driver;
};

TEST_F(FirstRoad, FromTheMenuToTheReport) {
  driver.Step("menu", Idle(), [this] {
    Driver::Picture(&main, "1-opened");
    Driver::ClickMenu(main.menuBar(), {"Analysis", "Parametric", "Single Sample t"});
  });
  driver.Step("bar", BarShown(), [this] {
    EXPECT_EQ(static_cast<QLabel*>(OnBar("Lab_M"))->text(), "Select DATA (1 column)");
    EXPECT_FALSE(OnBar("Option1")->isVisible());  // one column: no groups
    EXPECT_FALSE(main.menuBar()->isEnabled());
    DragColumn(3);
    EXPECT_EQ(main.OpenedDocuments().ActiveWorkbook()->Selection(), "C1:C11");
    Driver::Picture(&main, "2-selected");
    Click(OnBar("Multi0"));
  });
  driver.Step("form", FormShown(), [] {
    EXPECT_EQ(Form()->windowTitle(), "Single sample t test");
    Driver::Picture(Form(), "3-form");
    QWidget* mean = Form()->WidgetOf("Combo1");
    mean->setFocus();
    QTest::keyClick(mean, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(mean, "0");
    PressOk();
  });
  driver.Step(
      "report", [this] { return Idle()() && main.ActiveReport(); },
      [this] {
        EXPECT_NE(ReportText().find("4.062128"), std::string::npos);
        EXPECT_TRUE(main.menuBar()->isEnabled());
        Driver::Picture(&main, "4-report");
        EXPECT_TRUE(main.ActiveReport()->windowTitle().startsWith("Report 01 (not saved)"));
        // Help over the result is that of the command that made it.
        EXPECT_EQ(main.ActiveReport()->View().HelpTopicAtCaret(), 2451);
        main.activateWindow();
        QTest::keyClick(&main.ActiveReport()->View(), Qt::Key_F1);
      });
  driver.Step(
      "help", [] { return Help() && Help()->isVisible(); },
      [this] {
        EXPECT_EQ(Help()->CurrentTitle(), "Single sample t test");
        Driver::Picture(Help(), "5-help");
        QTimer::singleShot(0, &main, &QWidget::close);
      });
  driver.Step("close", BoxShown(), [this] {
    EXPECT_EQ(Box()->windowTitle(), "Tellurix Close-Down");
    EXPECT_EQ(Box()->text(), "Save changes to Report 01?");
    Driver::Picture(Box(), "6-close");
    Answer(QMessageBox::Cancel);
  });
  driver.Step(
      "still open", [] { return !Box(); },
      [this] {
        EXPECT_TRUE(main.isVisible());
        QTimer::singleShot(0, &main, &QWidget::close);
      });
  driver.Step("close for good", BoxShown(), [] { Answer(QMessageBox::No); });
  driver.Drive();
  EXPECT_FALSE(main.isVisible());
}

TEST_F(FirstRoad, BatchModeAsksAgainUntilItIsUnticked) {
  driver.Step("menu", Idle(), [this] {
    Driver::ClickMenu(main.menuBar(), {"Analysis", "Parametric", "Single Sample t"});
  });
  driver.Step("first", BarShown(), [this] {
    Click(OnBar("Batch"));
    DragColumn(1);
    grid()->SetRightButtonConfirms(false);
    QTest::mouseClick(grid()->viewport(), Qt::RightButton, {}, grid()->CellRect(3, 1).center());
    EXPECT_TRUE(bar().IsWaiting());  // switched off
    grid()->SetRightButtonConfirms(true);
    QTest::mouseClick(grid()->viewport(), Qt::RightButton, {}, grid()->CellRect(3, 1).center());  // confirms
  });
  driver.Step("first form", FormShown(), [] { PressOk(); });
  driver.Step("second", BarShown(), [this] {
    EXPECT_EQ(main.OpenedDocuments().ActiveWorkbook()->Selection().find(':'), std::string::npos);  // nothing marked
    EXPECT_TRUE(static_cast<QCheckBox*>(OnBar("Batch"))->isChecked());
    DragColumn(2);
    QTest::keyClick(grid()->viewport(), Qt::Key_Return);  // confirms
  });
  driver.Step("second form", FormShown(), [] { QTest::keyClick(Form(), Qt::Key_Return); });
  driver.Step("third", BarShown(), [this] {
    Click(OnBar("Batch"));                                // unticked during the wait
    QTest::keyClick(grid()->viewport(), Qt::Key_Escape);  // cancels
  });
  driver.Step("ended", Idle(), [this] {
    EXPECT_EQ(main.OpenedDocuments().ReportCount(), 1);
    const std::string text = ReportText();
    EXPECT_NE(text.find("Sample: Drug 1"), std::string::npos);
    EXPECT_NE(text.find("Sample: Drug 2"), std::string::npos);
  });
  driver.Drive();
}

TEST_F(FirstRoad, KeysCopyPasteUndoAndRedo) {
  main.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
  Workbook& book = *main.OpenedDocuments().ActiveWorkbook();
  DragColumn(1);
  QTest::keyClick(grid(), Qt::Key_C, Qt::ControlModifier);
  QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, grid()->CellRect(1, 5).center());
  QTest::keyClick(grid(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(book.NumberRC(11, 5), 2);
  QTest::keyClick(grid(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(book.TypeRC(11, 5), EmptyCell);
  QTest::keyClick(grid(), Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(book.NumberRC(11, 5), 2);
  book.MarkSaved();
}

// What was done by hand is written down, and the script plays to the same report.
TEST_F(FirstRoad, ARecordedRoadPlaysToTheSameReport) {
  const fs::path script = fs::temp_directory_path() / "tellurix-recorded-road.tlx";
  driver.Step("record", Idle(), [this] {
    main.DesktopSession().options.DecimalPlaces = 3;
    SaveSettings(main.DesktopSession());
    main.Record(true);  // what is open and set already goes in first
    EnterInGrid(3, 2, "-1.25");
    Driver::ClickMenu(main.menuBar(), {"Analysis", "Parametric", "Single Sample t"});
  });
  driver.Step("bar", BarShown(), [this] {
    Driver::Drag(ActiveGrid()->viewport(), ActiveGrid()->CellRect(1, 2).center(),
                 ActiveGrid()->CellRect(11, 2).center());
    Click(OnBar("Multi0"));
  });
  driver.Step("form", FormShown(), [] {
    auto* confidence = qobject_cast<QComboBox*>(Form()->WidgetOf("Combo0"));
    ASSERT_NE(confidence, nullptr);
    QTest::keyClick(confidence, Qt::Key_Up);  // 94
    QWidget* mean = Form()->WidgetOf("Combo1");
    mean->setFocus();
    QTest::keyClick(mean, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(mean, "1.5");
    PressOk();
  });
  driver.Step(
      "report", [this] { return Idle()() && main.ActiveReport(); },
      [this] {
        main.DesktopRecorder().Stop();
        main.ActiveReport()->View().Commit();
      });
  driver.Drive();

  std::string problem;
  ASSERT_TRUE(WriteWholeFile(script, main.DesktopRecorder().Text(), problem)) << problem;
  const QString steps = QString::fromStdString(main.DesktopRecorder().Text());
  EXPECT_EQ(steps.count("Population mean"), 1) << steps.toStdString();  // not letter by letter
  ScriptPlayer player(ScriptPaths(Root));
  EXPECT_TRUE(player.PlayFile(script)) << player.Failure() << "\n" << main.DesktopRecorder().Text();
  fs::remove(script);
  ASSERT_EQ(player.PlayedDocuments().ReportCount(), 1);
  EXPECT_EQ(WriteText(player.PlayedDocuments().ReportAt(0).text), ReportText());
  EXPECT_NE(ReportText().find("94% confidence interval for mean difference"), std::string::npos);
  EXPECT_NE(ReportText().find("2.264\n"), std::string::npos) << ReportText();  // sd, in three decimals
}

// A changed worksheet is asked about before the report; a save that fails stops the close.
TEST_F(FirstRoad, ClosingAsksAboutSheetsThenReports) {
  std::vector<std::string> asked;
  driver.Step("change", Idle(), [this] {
    Workbook& book = *main.OpenedDocuments().ActiveWorkbook();
    book.NumberRC(2, 1, 7);
    book.document.path = "/nowhere/at/all/sleep.csv";
    main.NewReport();
    Report& fresh = main.OpenedDocuments().ReportAt(0);
    fresh.Append(*ReadRtf("{\\rtf1 words}"));
    QTimer::singleShot(0, &main, &QWidget::close);
  });
  driver.Step("sheet", BoxShown(), [&] {
    asked.push_back(Box()->text().toStdString());
    Answer(QMessageBox::Yes);
  });
  driver.Step("failed save", BoxShown(), [&] {
    asked.push_back(Box()->windowTitle().toStdString());
    Answer(QMessageBox::Ok);
  });
  driver.Step(
      "still open", [] { return !Box(); },
      [this] {
        EXPECT_TRUE(main.isVisible());
        QTimer::singleShot(0, &main, &QWidget::close);
      });
  driver.Step("sheet again", BoxShown(), [&] { Answer(QMessageBox::No); });
  driver.Step("report", BoxShown(), [&] {
    asked.push_back(Box()->text().toStdString());
    Answer(QMessageBox::No);
  });
  driver.Drive();
  EXPECT_FALSE(main.isVisible());
  EXPECT_EQ(asked,
            (std::vector<std::string>{"Save changes to sleep.csv?", "Saving Workbook", "Save changes to Report 01?"}));
}

// Lines that were saved in the calculator stand in a report when it is asked about.
TEST_F(FirstRoad, ClosingWritesTheLinesOfTheCalculatorFirst) {
  driver.Step("menu", Idle(), [this] { Driver::ClickMenu(main.menuBar(), {"Analysis", "Distributions", "Normal"}); });
  driver.Step(
      "calculator", [this] { return main.findChild<FormDialog*>() != nullptr; },
      [this] {
        auto* calculator = main.findChild<FormDialog*>();
        QTest::keyClicks(calculator->WidgetOf("edpdf"), "1.96");
        Click(calculator->WidgetOf("Calc"));
        Click(calculator->WidgetOf("Save"));
        EXPECT_EQ(main.OpenedDocuments().ReportCount(), 0);
        QTimer::singleShot(0, &main, &QWidget::close);
      });
  driver.Step("report", BoxShown(), [this] {
    EXPECT_EQ(Box()->text(), "Save changes to Report 01?");
    EXPECT_NE(ReportText().find("P(z 1.96) = 0.024998 upper"), std::string::npos);
    Answer(QMessageBox::No);
  });
  driver.Drive();
  EXPECT_FALSE(main.isVisible());
}

// Closing during a calculation asks first; the calculation then stops as if it had been cancelled.
TEST_F(FirstRoad, ClosingDuringACalculationAsksFirst) {
  const MenuEntry entry{.name = "M_Endless", .active = InWorksheet, .command = Endless};
  const auto calculating = [this] { return main.DesktopSession().CalculationRunning && !Box(); };
  const auto close = [this] { QTimer::singleShot(0, &main, &QWidget::close); };
  driver.Step("run", Idle(), [&] { main.RunEntry(entry); });
  driver.Step("close", calculating, close);
  driver.Step("no", BoxShown(), [] {
    EXPECT_EQ(Box()->text(), "A calculation is running, are you sure you want to quit?");
    EXPECT_EQ(Box()->windowTitle(), "Tellurix Close-Down");
    Answer(QMessageBox::No);
  });
  driver.Step("close again", calculating, close);
  driver.Step("yes", BoxShown(), [] { Answer(QMessageBox::Yes); });
  driver.Step(
      "closed", [this] { return Idle()() && !main.isVisible(); }, [] {});
  driver.Drive();
}

// The Cancel of the progress dialog stops the calculation, and the dialog goes with it.
TEST_F(FirstRoad, ProgressCanBeCancelled) {
  const MenuEntry entry{.name = "M_Endless", .active = InWorksheet, .command = Endless};
  const auto progress = [this] { return main.findChild<QDialog*>("Progress"); };
  driver.Step("run", Idle(), [&] { main.RunEntry(entry); });
  driver.Step(
      "cancel", [&] { return progress() && progress()->isVisible(); },
      [&] {
        EXPECT_EQ(progress()->windowTitle(), "Tellurix Calculation Progress");
        Click(progress()->findChild<QPushButton*>());
      });
  driver.Step("ended", Idle(), [&] { EXPECT_FALSE(progress()->isVisible()); });
  driver.Drive();
  EXPECT_TRUE(main.DesktopSession().CancelRequested);
}

// A second start hands its file over while the first one calculates: it is opened when the calculation has ended.
TEST_F(FirstRoad, ASecondStartDuringACalculationOpensItsFileAfterwards) {
  const MenuEntry entry{.name = "M_Endless", .active = InWorksheet, .command = Endless};
  const fs::path folder = fs::temp_directory_path() / "tellurix-second-start";
  fs::create_directory(folder);
  fs::copy_file(Root / "Data" / "sleep.csv", folder / "second.csv", fs::copy_options::overwrite_existing);
  const QString socket = QString::fromStdString((folder / "link").string());
  LinkServer link;
  ASSERT_TRUE(link.Listen([this](const QString& command) { main.ExecuteLinkCommand(command); }, socket));
  const auto progress = [this] { return main.findChild<QDialog*>("Progress"); };
  driver.Step("run", Idle(), [&] { main.RunEntry(entry); });
  driver.Step(
      "second start", [&] { return progress() && progress()->isVisible(); },
      // This thread is the first one's: nobody reads while the command is sent.
      [&] {
        EXPECT_TRUE(LinkServer::Send("FileOpen " + QString::fromStdString((folder / "second.csv").string()), socket));
        QTest::qWait(50);
        EXPECT_EQ(main.OpenedDocuments().WorkbookCount(), 1);
        Click(progress()->findChild<QPushButton*>());
      });
  driver.Step(
      "opened", [&] { return Idle()() && main.OpenedDocuments().WorkbookCount() == 2; },
      [&] { EXPECT_EQ(main.OpenedDocuments().WorkbookName(1), "second.csv"); });
  driver.Drive();
  fs::remove_all(folder);
}

// The window's close box in the middle of a wait takes the command back first; then the questions come.
TEST_F(FirstRoad, ClosingDuringAWaitEndsTheCommand) {
  driver.Step("menu", Idle(), [this] {
    Driver::ClickMenu(main.menuBar(), {"Analysis", "Parametric", "Single Sample t"});
  });
  driver.Step("close", BarShown(), [this] { main.close(); });
  driver.Step(
      "closed", [this] { return Idle()() && !main.isVisible(); }, [] {});
  driver.Drive();
  EXPECT_EQ(main.DesktopSession().results.Runs().back().status, RunStatus::Cancelled);
}

}  // namespace
}  // namespace tellurix
