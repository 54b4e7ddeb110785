// The windows at the start and between sessions: Opening, places, the history in the menus, unsaved work.

#include <QDialog>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

#include "desktop/DocumentWindows.h"
#include "desktop/MainWindow.h"
#include "desktop/Opening.h"
#include "desktop/WindowPlace.h"
#include "host/Form.h"
#include "shell/History.h"
#include "shell/ProgramFolder.h"
#include "shell/Recovery.h"
#include "tests/TemporaryFolder.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

const fs::path Root = TELLURIX_SOURCE_DIR;

class Start : public testing::Test {
 protected:
  TemporaryFolder folder;
  const fs::path ini = folder / "Tellurix.ini";

  Paths TestPaths() {
    Paths paths = ScriptPaths(Root);
    paths.user = folder.Path();
    return paths;
  }

  static QMessageBox* Box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

  static QStringList HistoryOf(MainWindow& main) {
    QStringList shown;
    for (QAction* action : main.menuBar()->actions().front()->menu()->actions()) {
      if (action->objectName().startsWith("M_OpenList")) shown << (action->isSeparator() ? "-" : action->text());
    }
    return shown;
  }

  static QAction* HistoryRow(MainWindow& main, int row) {
    const QString name = QString("M_OpenList(%1)").arg(row);
    for (QAction* action : main.menuBar()->actions().front()->menu()->actions()) {
      if (action->objectName() == name) return action;
    }
    return nullptr;
  }
};

TEST_F(Start, OpeningEndsAtAClickOrWithItsPeriod) {
  QElapsedTimer clock;
  clock.start();
  Opening opening("Tellurix", "1.2.3");
  opening.Run(150);
  EXPECT_GE(clock.elapsed(), 140);
  EXPECT_FALSE(opening.isVisible());
  QTimer::singleShot(50, &opening, [&] {
    EXPECT_TRUE(opening.isVisible());
    Driver::Picture(&opening, "opening");
    QTest::mouseClick(&opening, Qt::LeftButton);
  });
  clock.restart();
  opening.Run(10000);
  EXPECT_LT(clock.elapsed(), 5000);
  EXPECT_LE(Opening::Period, 1000);
}

TEST_F(Start, TheMainWindowComesBackWhereItWas) {
  const QRect free = QGuiApplication::primaryScreen()->availableGeometry();
  {
    MainWindow main(TestPaths(), ini);
    main.ShowAtSavedPlace();
    QTest::qWait(50);
    EXPECT_TRUE(main.isMaximized());  // the first time
    main.showNormal();
    QTest::qWait(50);
    main.resize(620, 430);
    main.move(free.topLeft() + QPoint(70, 80));
    QTest::qWait(20);
    EXPECT_TRUE(main.close());
  }
  {
    MainWindow main(TestPaths(), ini);
    main.ShowAtSavedPlace();
    QTest::qWait(50);
    EXPECT_FALSE(main.isMaximized());
    EXPECT_EQ(main.size(), QSize(620, 430));
    EXPECT_EQ(main.pos(), free.topLeft() + QPoint(70, 80));
    main.showMaximized();
    QTest::qWait(20);
    EXPECT_TRUE(main.close());
  }
  {
    MainWindow main(TestPaths(), ini);
    main.ShowAtSavedPlace();
    QTest::qWait(50);
    EXPECT_TRUE(main.isMaximized());
    main.showNormal();
    QTest::qWait(50);
    EXPECT_EQ(main.size(), QSize(620, 430));
  }
  IniSettings(ini).SetIniValues({{"MainWindow", "State", "0"}, {"MainWindow", "Left", "9000"}});
  MainWindow main(TestPaths(), ini);
  main.ShowAtSavedPlace();
  QTest::qWait(50);
  EXPECT_TRUE(free.contains(main.geometry().center()));
}

TEST_F(Start, SaysThatTheSettingsWereDamaged) {
  WriteTestFile(ini, "[Analyses\n");
  MainWindow main(TestPaths(), ini);
  main.DesktopSession().settings.SetIniValue("Paths", "Help", "");  // the start writes before it shows anything
  Driver driver;
  driver.Step(
      "show", [] { return true; }, [&] { main.ShowAtSavedPlace(); });
  driver.Step(
      "message", [] { return Box() != nullptr; },
      [&] {
        EXPECT_TRUE(Box()->text().contains("Tellurix.ini.damaged")) << Box()->text().toStdString();
        Box()->button(QMessageBox::Ok)->click();
      });
  driver.Drive();
}

TEST_F(Start, SomeFormsComeBackWhereTheyWere) {
  const auto show = [&](MainWindow& main, const char* name, const std::function<void(QDialog*)>& act) {
    auto form = std::make_shared<Form>(name, "A form");
    form->AddButton("Close", "Close", ButtonRole::Cancel);
    main.DesktopSession().host.ShowForm(form);
    QTest::qWait(20);
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* dialog = qobject_cast<QDialog*>(widget);
      if (dialog && dialog->isVisible()) act(dialog);
    }
    form->Close();
    QTest::qWait(20);
  };
  MainWindow main(TestPaths(), ini);
  main.show();
  const auto drag = [](QDialog* dialog) {
    dialog->move(33, 44);
    dialog->resize(321, 210);
  };
  show(main, "TLCalc", drag);
  show(main, "Other", drag);
  QRect place, other;
  show(main, "TLCalc", [&](QDialog* dialog) { place = QRect(dialog->pos(), dialog->size()); });
  show(main, "Other", [&](QDialog* dialog) { other = QRect(dialog->pos(), dialog->size()); });
  EXPECT_EQ(place, QRect(33, 44, 321, 210));
  EXPECT_NE(other.topLeft(), place.topLeft());
  EXPECT_EQ(IniSettings(ini).GetIniValue("Other", "Left", "none"), "none");
}

TEST_F(Start, TheMenusOfEachKindOfWindowComeBack) {
  MainWindow main(TestPaths(), ini);
  main.show();
  main.NewWorkbook();
  main.NewReport();
  const auto heads = [&main] {
    QStringList texts;
    for (QAction* head : main.menuBar()->actions()) texts << head->text();
    return texts;
  };
  const auto actionCount = [&main] { return main.findChildren<QAction*>().size(); };
  QMdiSubWindow* const report = main.ActiveReport();
  const QStringList ofReport = heads();
  main.OpenedDocuments().ActivateWorkbook(0);
  QMdiSubWindow* const sheet = main.ActiveWorksheet();
  ASSERT_TRUE(sheet && report);
  const QStringList ofSheet = heads();
  EXPECT_TRUE(ofSheet.contains("&Data") && !ofReport.contains("&Data"));
  const auto actions = actionCount();
  auto* area = main.findChild<QMdiArea*>();
  for (int round = 0; round < 5; ++round) {
    area->setActiveSubWindow(report);
    EXPECT_EQ(heads(), ofReport);
    area->setActiveSubWindow(sheet);
    EXPECT_EQ(heads(), ofSheet);
  }
  EXPECT_EQ(actionCount(), actions);
}

TEST_F(Start, TheWindowMenuListsWhatIsOpen) {
  MainWindow main(TestPaths(), ini);
  main.show();
  QMenu* menu = nullptr;
  const auto listed = [&] {
    menu = main.menuBar()->actions().at(main.menuBar()->actions().size() - 2)->menu();
    EXPECT_EQ(menu->title(), "&Window");
    emit menu->aboutToShow();
    QStringList shown;
    for (QAction* action : menu->actions().mid(5)) {
      shown << (action->isSeparator() ? "-" : action->text() + (action->isChecked() ? " (in front)" : ""));
    }
    return shown;
  };
  EXPECT_EQ(listed(), QStringList());
  WriteTestFile(folder / "a&b.csv", "1,2\n");
  ASSERT_TRUE(main.OpenFile(folder / "a&b.csv"));
  main.NewReport();
  EXPECT_EQ(listed(), (QStringList{"-", "&1 a&&b.csv", "&2 Report 01 (not saved) (in front)"}));
  menu->actions().at(6)->trigger();
  EXPECT_TRUE(main.ActiveWorksheet());
  EXPECT_EQ(listed(), (QStringList{"-", "&1 a&&b.csv (in front)", "&2 Report 01 (not saved)"}));
}

TEST_F(Start, TheMenusShowTheFilesLastUsed) {
  WriteTestFile(folder / "a&b.csv", "1,2\n");
  WriteTestFile(folder / "r.rtf", "{\\rtf1 text}");
  MainWindow main(TestPaths(), ini);
  main.show();
  EXPECT_EQ(HistoryOf(main), QStringList());
  ASSERT_TRUE(main.OpenFile(folder / "a&b.csv"));
  const QStringList one{"-", "&1 a&&b.csv", "-"};
  EXPECT_EQ(HistoryOf(main), one);
  ASSERT_TRUE(main.OpenFile(folder / "r.rtf"));  // another menu
  const QStringList two{"-", "&1 r.rtf", "&2 a&&b.csv", "-"};
  EXPECT_EQ(HistoryOf(main), two);
  EXPECT_EQ(main.menuBar()->actions().front()->menu()->actions().constLast()->objectName(), "M_Exit");

  HistoryRow(main, 1)->trigger();
  EXPECT_EQ(main.OpenedDocuments().WorkbookCount(), 2);
  const QStringList turned{"-", "&1 a&&b.csv", "&2 r.rtf", "-"};
  EXPECT_EQ(HistoryOf(main), turned);

  fs::remove(folder / "r.rtf");
  EXPECT_EQ(HistoryOf(main), turned);  // until it is chosen
  Driver driver;
  driver.Step(
      "choose it", [] { return true; }, [&] { HistoryRow(main, 1)->trigger(); });
  driver.Step(
      "message", [] { return Box() != nullptr; },
      [&] {
        EXPECT_TRUE(Box()->text().endsWith("/R.RTF is not available")) << Box()->text().toStdString();
        EXPECT_EQ(Box()->windowTitle(), "File Open");
        Box()->button(QMessageBox::Ok)->click();
      });
  driver.Drive();
  EXPECT_EQ(HistoryOf(main), one);
  MainWindow later(TestPaths(), ini);
  EXPECT_EQ(HistoryOf(later), one);
}

TEST_F(Start, ACopyOfASpreadsheetStaysUnsaved) {
  WriteTestFile(folder / "~Excel.csv", "1,2\n");
  MainWindow main(TestPaths(), ini);
  main.show();
  main.ExecuteLinkCommand("[FileOpen \"" + QString::fromStdString((folder / "~Excel.csv").string()) + "\"");
  ASSERT_EQ(main.OpenedDocuments().WorkbookCount(), 1);
  EXPECT_TRUE(main.OpenedDocuments().WorkbookAt(0).document.changed);
  EXPECT_EQ(main.ActiveDocument()->windowTitle(), "~Excel.csv *");
  EXPECT_EQ(HistoryOf(main), QStringList());
  main.OpenedDocuments().WorkbookAt(0).MarkSaved();
}

TEST_F(Start, OffersTheUnsavedWorkOfARunThatCrashed) {
  {
    OpenDocuments documents;
    documents.NewWorkbook().NumberRC(1, 1, 7);
    std::string problem;
    Recovery crashed(folder / "Recovery");
    ASSERT_TRUE(crashed.Keep(documents, problem)) << problem;
  }  // its lock is gone, its copies stand
  auto main = std::make_unique<MainWindow>(TestPaths(), ini);
  main->show();
  Driver driver;
  driver.Step(
      "start", [] { return true; }, [&] { main->KeepUnsavedWork(); });
  driver.Step(
      "question", [] { return Box() != nullptr; },
      [] {
        EXPECT_EQ(Box()->windowTitle(), "Unsaved Work");
        Driver::Picture(Box(), "unsaved");
        Box()->button(QMessageBox::Yes)->click();
      });
  driver.Drive();
  ASSERT_EQ(main->OpenedDocuments().WorkbookCount(), 1);
  EXPECT_EQ(main->OpenedDocuments().WorkbookAt(0).NumberRC(1, 1), 7);
  EXPECT_EQ(main->ActiveDocument()->windowTitle(), "Recovered Book 01 (not saved) *");

  // Closed without saving: that is an answer, and nothing is left to offer.
  Driver closing;
  closing.Step(
      "close", [] { return true; }, [&] { main->close(); });
  closing.Step(
      "question", [] { return Box() != nullptr; }, [] { Box()->button(QMessageBox::No)->click(); });
  closing.Drive();
  EXPECT_TRUE(fs::is_empty(folder / "Recovery"));
}

}  // namespace
}  // namespace tellurix
