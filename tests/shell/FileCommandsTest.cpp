// The File menu's commands: what they ask and say, what they write, and what is left when they fail.
#include "shell/FileCommands.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

#include "shell/DocumentFiles.h"
#include "tests/FakeHost.h"
#include "workbook/files/NativeWorkbook.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class FileCommands : public testing::Test {
 protected:
  FileCommands() {
    std::string name = (fs::temp_directory_path() / "tellurix-files-XXXXXX").string();
    folder = ::mkdtemp(name.data());
    fs::create_directory(folder / "user");
    session.paths.user = folder / "user";
  }
  ~FileCommands() override {
    EXPECT_TRUE(host.AllUsed());
    EXPECT_FALSE(host.busyWhenAsked);
    EXPECT_FALSE(host.busy);
    EXPECT_FALSE(session.CalculationRunning);
    fs::remove_all(folder);
  }

  fs::path Put(const std::string& name, std::string_view text) {
    std::ofstream(folder / name, std::ios::binary) << text;
    return folder / name;
  }
  std::string Contents(const fs::path& file) {
    std::stringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }
  // What the last message says and under which title.
  std::string Said() const {
    return host.messages.empty() ? "" : host.messages.back().title + ": " + host.messages.back().text;
  }
  int Windows() const { return documents.WorkbookCount() + documents.ReportCount(); }
  Workbook& Book() { return *documents.ActiveWorkbook(); }
  void Choose(const fs::path& file, int filter = -1) { host.files.push_back({file.string(), filter}); }
  std::function<void(Form&)> Pick(const char* row) {
    return [row](Form& form) {
      EXPECT_EQ(form.title, "Select file type");
      form.Set("List", row);
      form.Press("Select");
    };
  }

  fs::path folder;
  FakeHost host;
  OpenDocuments documents;
  FakeSettings settings;
  Session session{host, documents, settings, {}};
};

TEST_F(FileCommands, NewDocumentsAreNumberedThroughTheSession) {
  ASSERT_TRUE(NewDocument(session, DocumentKind::Workbook));
  EXPECT_EQ(Book().document.caption, "Book 01 (not saved)");
  documents.CloseWorkbook(Book());
  ASSERT_TRUE(NewDocument(session, DocumentKind::Workbook));
  EXPECT_EQ(Book().document.caption, "Book 02 (not saved)");
  ASSERT_TRUE(NewDocument(session, DocumentKind::Report));
  EXPECT_EQ(documents.ActiveReport()->document.caption, "Report 01 (not saved)");
}

TEST_F(FileCommands, OpensByExtension) {
  struct Case {
    const char* name;
    const char* text;
    const char* row;  // of the list that asks for the kind; null: not asked
    bool isReport;
  };
  const Case cases[] = {{"a.csv", "1,2\n", nullptr, false},
                        {"a.PRN", "1,2\n", nullptr, false},
                        {"a.tab", "1\t2\n", nullptr, false},
                        {"a.rtf", "{\\rtf1 hello}", nullptr, true},
                        {"a.rtt", "{\\rtf1 hello}", nullptr, true},
                        {"a.dat", "1,2\n", "Comma Separated Vector Data File", false},
                        {"a.txt", "1\t2\n", "Tabbed Text Worksheet", false},
                        {"a", "1,\"12-25-1991\",0,\"x\",1,5\n", "Morvane Tabula (DOS) Worksheet", false},
                        {"b.txt", "hello\r\n\r\n{you}\n", "Plain (ASCII) Text Report", true},
                        {"c.txt", "{\\rtf1 hello}", "Rich Text Report", true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.row) host.forms.push_back(Pick(c.row));
    const int before = c.isReport ? documents.ReportCount() : documents.WorkbookCount();
    ASSERT_TRUE(OpenFile(session, Put(c.name, c.text))) << Said();
    ASSERT_EQ(c.isReport ? documents.ReportCount() : documents.WorkbookCount(), before + 1);
    const DocumentState& state = c.isReport ? documents.ActiveReport()->document : Book().document;
    EXPECT_EQ(state.caption, c.name);
    EXPECT_EQ(state.path, (folder / c.name).string());
    EXPECT_FALSE(state.changed);
  }
  EXPECT_EQ(WriteText(documents.ReportAt(2).text), "hello\n\n{you}\n");
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(FileCommands, AFailedOpenSaysSoAndLeavesNoWindow) {
  const auto refused = [&](const fs::path& file) {
    host.messages.clear();
    EXPECT_FALSE(OpenFile(session, file));
    EXPECT_EQ(Windows(), 0);
    return host.messages.size() == 1 ? Said() : "not one message";
  };
  const std::string missing = (folder / "none.csv").string();
  EXPECT_EQ(refused(missing), "File Open: " + UpperCase(missing) + " is not available");
  const std::string rich = Put("bad.rtf", "plain").string();
  EXPECT_EQ(refused(rich), "Reading Rich Text File: " + rich + " is not a valid (rich) text file");
  const std::string own = Put("bad.tlw", "SQLite format 3").string();
  EXPECT_TRUE(refused(own).starts_with("Reading Workbook File: " + own + " could not be read."));
  const std::string old = Put("bad.mrw", std::string("\0\1\2\"", 4)).string();
  EXPECT_TRUE(refused(old).starts_with("Reading Workbook File: " + old +
                                       " could not be read.\nIn order to read some older types of workbook in "
                                       "Tellurix, Microsoft Excel must be installed "
                                       "on this computer."));
  EXPECT_NE(refused(Put("open.csv", "1,\"2\n")).find("A quote that opens in line 1"), std::string::npos) << Said();

  host.messages.clear();
  host.forms.push_back([](Form& form) { form.Close(); });
  EXPECT_FALSE(OpenFile(session, Put("a.xyz", "1")));
  host.progressGoesOn = false;
  EXPECT_FALSE(OpenFile(session, Put("cancelled.csv", "1,2\n")));
  EXPECT_EQ(Windows(), 0);
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(FileCommands, OpenAsksForAFile) {
  EXPECT_FALSE(OpenFile(session));
  EXPECT_EQ(host.fileRequests.back().title, "Open File");
  EXPECT_TRUE(host.fileRequests.back().filter.starts_with(
      "Tellurix Workbooks (*.tlw)|*.tlw;*.mrw|Rich Text Reports (*.rtf)|*.rtf|Comma Separated Vector File (*.csv)|"
      "*.csv|Tabbed Text Workbook (*.tab)|*.tab|Excel Workbooks (*.xls)|*.xls|All files (*.*)|*.*|"));
  Choose(Put("a.csv", "1\n"));
  EXPECT_TRUE(OpenFile(session));
}

TEST_F(FileCommands, ImportPutsTheCellsAtTheActiveCellInOneStep) {
  NewDocument(session, DocumentKind::Workbook);
  Book().TextRC(3, 2, "old");
  Book().TextRC(9, 9, "kept");
  Book().SetActiveCell(2, 2);
  Choose(Put("in.csv", "x,y\n1,\n3,a\n"));
  ASSERT_TRUE(ImportData(session));
  EXPECT_EQ(host.fileRequests.back().title, "Import worksheet data");
  EXPECT_EQ(Book().TextRC(2, 2), "x");
  EXPECT_EQ(Book().NumberRC(3, 2), 1);
  EXPECT_EQ(Book().TypeRC(3, 3), EmptyCell);
  EXPECT_EQ(Book().TextRC(4, 3), "a");
  EXPECT_EQ(Book().TextRC(9, 9), "kept");
  Book().Undo();
  EXPECT_EQ(Book().TextRC(3, 2), "old");
  EXPECT_EQ(Book().LastCol(), 9);

  Choose(Put("old.dat", "1,\"12-25-1991\",0,\"age\",3\n5,3e300,3.456789e+33\n"));
  ASSERT_TRUE(ImportData(session));
  EXPECT_EQ(Book().TextRC(2, 2), "age");
  EXPECT_EQ(Book().NumberRC(3, 2), 5);
  EXPECT_EQ(Book().TextRC(4, 2), "*");
  EXPECT_EQ(Book().TypeRC(5, 2), EmptyCell);

  // Each leaves the sheet as it was.
  const auto refused = [&] {
    EXPECT_FALSE(ImportData(session));
    EXPECT_EQ(Book().TextRC(2, 2), "age");
    return Said();
  };
  Choose(folder / "none.csv");
  EXPECT_EQ(refused(), "File Import: " + UpperCase((folder / "none.csv").string()) + " is not available");
  Choose(Put("bad.csv", "1,\"2\n"));
  EXPECT_TRUE(refused().starts_with("File Import: Error reading " + (folder / "bad.csv").string()));
  Book().SetActiveCell(GridStore::MaxRows, 1);
  Choose(Put("two.csv", "1\n2\n"));
  EXPECT_NE(refused().find("does not have enough rows"), std::string::npos);
  Book().LockSheet(true);
  Choose(Put("one.csv", "1\n"));
  EXPECT_NE(refused().find("locked"), std::string::npos);
}

TEST_F(FileCommands, ExportWritesWhatIsMarked) {
  NewDocument(session, DocumentKind::Workbook);
  Fill(Book(), 1, 1, {{"a", "b", "c"}, {"1", "0.1", "x,y"}});
  Mark(Book(), {"C1:C2", "B2:B9"});
  Choose(folder / "out.csv", 0);
  ASSERT_TRUE(ExportData(session));
  EXPECT_EQ(host.fileRequests.back().filter, "Comma delimited (*.csv)|*.csv|Tab delimited (*.tab)|*.tab");
  EXPECT_EQ(Contents(folder / "out.csv"), "c,0.1\n\"x,y\",\n");
  Mark(Book(), {"A1"});
  Choose(folder / "out.tab", 1);
  ASSERT_TRUE(ExportData(session));
  EXPECT_EQ(Contents(folder / "out.tab"), "a\tb\tc\n1\t0.1\t\"x,y\"\n");
  session.options.regional.decimalSymbol = ",";
  Mark(Book(), {"A2:B2"});
  Choose(folder / "out.csv", 0);
  ASSERT_TRUE(ExportData(session));
  EXPECT_EQ(Contents(folder / "out.csv"), "1;0,1\n");
  EXPECT_TRUE(Book().document.changed);

  Choose(folder / "none" / "out.csv");
  EXPECT_FALSE(ExportData(session));
  EXPECT_TRUE(Said().starts_with("Export Data: Error saving "));
}

TEST_F(FileCommands, SavingANewWorkbookAsksForItsName) {
  NewDocument(session, DocumentKind::Workbook);
  Fill(Book(), 1, 1, {{"1", "2"}});
  EXPECT_FALSE(SaveActive(session, Book()));  // cancelled
  const FileRequest request = host.fileRequests.back();
  EXPECT_EQ(request.title, "Save Workbook As");
  EXPECT_TRUE(request.filter.starts_with(
      "Tellurix (*.tlw)|*.tlw|Excel 8/97 (*.xls)|*xls|Excel 5 and 7/95 (*.xls)|*xls|Tabbed Text (*.tab)|*tab|"
      "Tabbed Text values only (*.tab)|*tab|HTML (write only) (*.htm)|*htm|HTML data only (write only) (*.htm)|*htm"));
  EXPECT_EQ(request.suggestedName, "Book 01.tlw");
  EXPECT_EQ(request.defaultExtension, "tlw");
  EXPECT_TRUE(Book().document.changed);

  Choose(folder / "mine", 0);
  ASSERT_TRUE(SaveActive(session, Book())) << Said();
  EXPECT_EQ(Book().document.caption, "mine");
  Workbook read;
  std::string problem;
  EXPECT_TRUE(ReadNativeWorkbook(folder / "mine", read, problem)) << problem;

  Choose(folder / "mine.tab", 4);
  ASSERT_TRUE(SaveActiveAs(session, Book()));
  EXPECT_EQ(Book().document.caption, "mine.tab");
  EXPECT_FALSE(Book().document.changed);
  Book().NumberRC(1, 1, 5);
  ASSERT_TRUE(SaveActive(session, Book()));
  EXPECT_EQ(Contents(folder / "mine.tab"), "5\t2\n");
  SaveActiveAs(session, Book());
  EXPECT_EQ(host.fileRequests.back().filterIndex, 4);  // as it was written last

  // A text file has no place for other sheets.
  Book().AddSheet();
  host.replies = {Reply::No, Reply::Yes};
  EXPECT_FALSE(SaveActive(session, Book()));
  EXPECT_EQ(Contents(folder / "mine.tab"), "5\t2\n");
  EXPECT_TRUE(SaveActive(session, Book()));
}

TEST_F(FileCommands, AFailedSaveKeepsTheFileAndTheChanges) {
  ASSERT_TRUE(OpenFile(session, Put("a.csv", "1,2\n")));
  Book().NumberRC(1, 1, 9);
  fs::remove_all(folder / "user");
  Book().document.path = (folder / "gone" / "a.csv").string();
  EXPECT_FALSE(SaveActive(session, Book()));
  EXPECT_TRUE(Said().starts_with("Saving Workbook: Error saving " + (folder / "gone" / "a.csv").string() + "\n"));
  EXPECT_TRUE(Book().document.changed);
  EXPECT_EQ(Contents(folder / "a.csv"), "1,2\n");
  Choose(folder / "a.unknown");
  EXPECT_FALSE(SaveActiveAs(session, Book()));
  EXPECT_FALSE(fs::exists(folder / "a.unknown"));
}

TEST_F(FileCommands, ReadOnlyFilesAndTemporaryCopiesAreSavedUnderANewName) {
  const fs::path file = Put("a.csv", "1,2\n");
  fs::permissions(file, fs::perms::owner_read);
  ASSERT_TRUE(OpenFile(session, file));
  EXPECT_TRUE(Book().document.readOnly);
  EXPECT_FALSE(SaveActive(session, Book()));
  EXPECT_EQ(host.fileRequests.back().suggestedName, file.string());
  Choose(file);
  EXPECT_FALSE(SaveActive(session, Book()));  // still nobody may write it
  EXPECT_NE(Said().find("Error saving"), std::string::npos);
  Choose(folder / "b.csv");
  EXPECT_TRUE(SaveActive(session, Book()));
  EXPECT_FALSE(Book().document.readOnly);
  EXPECT_TRUE(SaveActive(session, Book()));  // not asked again

  const fs::path report = Put("r.rtf", "{\\rtf1 hello}");
  fs::permissions(report, fs::perms::owner_read);
  ASSERT_TRUE(OpenFile(session, report));
  EXPECT_FALSE(SaveActive(session, *documents.ActiveReport()));
  EXPECT_EQ(Said(), "Saving Report: File is read only");
  EXPECT_EQ(host.fileRequests.back().title, "Save Report As");

  ASSERT_TRUE(OpenFile(session, Put("~Excel.csv", "1,2\n")));
  EXPECT_TRUE(Book().document.changed);
  Book().NumberRC(1, 1, 5);
  Book().Undo();
  EXPECT_TRUE(Book().document.changed);
  EXPECT_FALSE(SaveActive(session, Book()));
  EXPECT_EQ(host.fileRequests.back().suggestedName, "copy of excel workbook.xls");
}

TEST_F(FileCommands, ReportsAreSavedAsRichText) {
  NewDocument(session, DocumentKind::Report);
  Report& report = *documents.ActiveReport();
  report.Append(PlainRichText("hello"));
  Choose(folder / "r");
  ASSERT_TRUE(SaveActive(session, report));
  EXPECT_EQ(host.fileRequests.back().suggestedName, "Report 01.rtf");
  EXPECT_EQ(report.document.caption, "r.rtf");
  EXPECT_FALSE(report.document.changed);
  Choose(Put("more.txt", "\xef\xbb\xbf one\r\ntwo"));
  ASSERT_TRUE(ImportText(session));
  EXPECT_TRUE(report.document.changed);
  ASSERT_TRUE(SaveActive(session, report));
  EXPECT_EQ(WriteText(ReadRtf(Contents(folder / "r.rtf")).value()), "hello\n one\ntwo\n");
  // Other kinds are copies: the window keeps its name.
  report.document.changed = true;
  Choose(folder / "r.html");
  ASSERT_TRUE(SaveActiveAs(session, report));
  EXPECT_EQ(report.document.caption, "r.rtf");
  EXPECT_TRUE(report.document.changed);
}

TEST_F(FileCommands, NewWorkbooksAreCopiesOfTheTemplate) {
  NewDocument(session, DocumentKind::Workbook);
  Fill(Book(), 1, 1, {{"head"}});
  host.replies = {Reply::No, Reply::Yes};
  EXPECT_FALSE(SaveTemplate(session));
  EXPECT_EQ(Said(),
            "Workbook Template: If you save this workbook as a template then all new workbooks that you create will be "
            "an exact copy of this one until you save another template.  All of the contents and settings of the "
            "workbook are saved in the template.");
  EXPECT_FALSE(fs::exists(folder / "user" / "Tellurix.tlw"));
  ASSERT_TRUE(SaveTemplate(session));
  EXPECT_TRUE(Book().document.changed);  // it has been saved nowhere else
  ASSERT_TRUE(NewDocument(session, DocumentKind::Workbook));
  EXPECT_EQ(Book().TextRC(1, 1), "head");
  EXPECT_EQ(Book().document.caption, "Book 02 (not saved)");
  EXPECT_TRUE(Book().document.path.empty());
  EXPECT_FALSE(Book().document.changed);

  Put("user/Tellurix.tlw", "broken");
  ASSERT_TRUE(NewDocument(session, DocumentKind::Workbook));
  EXPECT_TRUE(Said().starts_with("Loading Workbook: "));
  EXPECT_EQ(Book().LastRow(), 0);
  session.paths.user = folder / "none";
  host.replies = {Reply::Yes};
  EXPECT_FALSE(SaveTemplate(session));
  EXPECT_EQ(Said(), "Save Template: Error saving template workbook");
}

}  // namespace
}  // namespace tellurix
