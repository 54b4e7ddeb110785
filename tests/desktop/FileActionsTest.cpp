// The File menu on the desktop: its dialogs, and what the windows show after it.

#include <stdlib.h>

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QStatusBar>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "desktop/DocumentWindows.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportView.h"
#include "shell/ProgramFolder.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class FileActions : public testing::Test {
 protected:
  FileActions() : main(ScriptPaths(TELLURIX_SOURCE_DIR), {}) {
    std::string name = (fs::temp_directory_path() / "tellurix-file-actions-XXXXXX").string();
    folder = ::mkdtemp(name.data());
    main.show();
    main.activateWindow();
    QTest::qWait(30);
  }
  ~FileActions() override { fs::remove_all(folder); }

  std::string Contents(const char* name) {
    std::stringstream text;
    text << std::ifstream(folder / name).rdbuf();
    return text.str();
  }
  void Choose(const QString& entry) {
    driver.Step(
        entry.toStdString(), [] { return !QApplication::activeModalWidget(); },
        [this, entry] {
          Driver::ClickMenu(main.menuBar(), {"File", entry});
        });
  }
  // Types a name, takes the filter that begins like this, and accepts.
  void Answer(const char* title, const char* name, const char* filter) {
    driver.Step(
        title, [title] { return Dialog() && Dialog()->windowTitle() == title; },
        [this, name, filter] {
          QFileDialog& dialog = *Dialog();
          for (const QString& offered : dialog.nameFilters()) {
            if (!offered.startsWith(filter)) continue;
            dialog.selectNameFilter(offered);
            emit dialog.filterSelected(offered);  // as a click in the list does
          }
          auto* edit = dialog.findChild<QLineEdit*>("fileNameEdit");
          edit->setText(QString::fromStdString((folder / name).string()));
          QTest::keyClick(edit, Qt::Key_Return);
        });
  }
  static QFileDialog* Dialog() { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()); }

  fs::path folder;
  MainWindow main;
  Driver driver;
};

TEST_F(FileActions, AWorkbookIsSavedInTheKindThatTheDialogNames) {
  main.NewWorkbook();
  Workbook& book = main.ActiveWorksheet()->Book();
  book.NumberRC(1, 1, 0.1);
  book.TextRC(1, 2, "x");
  Choose("Save Workbook");
  Answer("Save Workbook As", "mine", "Comma delimited");
  driver.Drive();
  EXPECT_EQ(Contents("mine.csv"), "0.1,x\n");
  EXPECT_EQ(main.ActiveWorksheet()->windowTitle(), "mine.csv");
  book.NumberRC(1, 1, 7);
  EXPECT_EQ(main.ActiveWorksheet()->windowTitle(), "mine.csv *");
  Driver again;
  again.Step(
      "save", [] { return true; },
      [this] {
        Driver::ClickMenu(main.menuBar(), {"File", "Save Workbook"});
      });
  again.Drive();
  EXPECT_EQ(Contents("mine.csv"), "7,x\n");
  EXPECT_EQ(main.ActiveWorksheet()->windowTitle(), "mine.csv");
}

TEST_F(FileActions, TextIsImportedAtTheCaretAndSavedWithTheReport) {
  std::ofstream(folder / "in.txt") << "one\ntwo";
  main.NewReport();
  ReportView& view = main.ActiveReport()->View();
  view.insertPlainText("ab");
  view.moveCursor(QTextCursor::Left);
  Choose("Import Text");
  Answer("Import Text", "in.txt", "ASCII Text");
  Choose("Save Report As");
  Answer("Save Report As", "r", "RTF File");
  driver.Drive();
  EXPECT_EQ(view.toPlainText(), "aone\ntwob");
  EXPECT_EQ(WriteText(ReadRtf(Contents("r.rtf")).value()), "aone\ntwob\n");
  EXPECT_EQ(main.ActiveReport()->windowTitle(), "r.rtf");
}

TEST_F(FileActions, OpeningOffersAllKindsAtOnce) {
  std::ofstream(folder / "a.csv") << "1,2\n";
  Choose("Open File");
  Answer("Open File", "a.csv", "All these files");
  driver.Drive();
  ASSERT_TRUE(main.ActiveWorksheet());
  EXPECT_EQ(main.ActiveWorksheet()->windowTitle(), "a.csv");
  EXPECT_EQ(main.ActiveWorksheet()->Book().NumberRC(1, 2), 2);
}

TEST_F(FileActions, OpeningTellsOfAMissingFile) {
  QString caption, told;
  Choose("Open File");
  driver.Step(
      "filters", [] { return Dialog() != nullptr; },
      [&] { caption = Dialog()->findChild<QComboBox*>("fileTypeCombo")->itemText(1); });
  Answer("Open File", "gone.tlw", "All these files");
  driver.Step(
      "message", [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
      [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        told = box->windowTitle() + ": " + box->text();
        box->accept();
      });
  driver.Drive();
  EXPECT_EQ(caption.trimmed(), "Tellurix Workbooks (*.tlw)");
  EXPECT_EQ(told,
            "File Open: " + QString::fromStdString((folder / "gone.tlw").string()).toUpper() + " is not available");
  // The tips of the menu have come and gone.
  EXPECT_EQ(main.statusBar()->findChild<QLabel*>("status")->text(), "Ready");
  EXPECT_EQ(main.statusBar()->currentMessage(), "");
}

}  // namespace
}  // namespace tellurix
