// Files of every kind by one door: which reader is called, the process of the foreign ones, and what is written.

#include "workbook/files/WorkbookFiles.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/files/Samples.h"
#include "workbook/files/ChildProcess.h"
#include "workbook/files/foreign/Archive.h"
#include "workbook/files/foreign/ForeignWorkbook.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

const fs::path Data = fs::path(TELLURIX_SOURCE_DIR) / "tests/data/workbooks";

// A variable of the environment for as long as it lives.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    setenv(name, value.c_str(), 1);
  }
  ~Variable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

// A program that stands in for the reader.
fs::path Program(const TestFolder& folder, const std::string& lines) {
  const fs::path path = folder / "reader.sh";
  PutFile(path, "#!/bin/sh\n" + lines + "\n");
  fs::permissions(path, fs::perms::owner_all);
  return path;
}

TEST(ChildProcess, EndsInEveryWay) {
  const TestFolder folder;
  std::string output;
  const auto run = [&](const std::string& lines, ChildLimits limits = {}, const Poll& poll = {}) {
    return RunChild({Program(folder, lines).string()}, limits, poll, "", output);
  };
  EXPECT_EQ(run("echo fine"), ChildEnd::Good);
  EXPECT_EQ(output, "fine\n");
  EXPECT_EQ(run("echo reason; exit 1"), ChildEnd::Failed);
  EXPECT_EQ(output, "reason\n");
  EXPECT_EQ(run("kill -SEGV $$"), ChildEnd::Crashed);
  EXPECT_EQ(run("sleep 60", {.seconds = 0.1}), ChildEnd::TookTooLong);
  EXPECT_EQ(run("sleep 60 & exit 0"), ChildEnd::Good) << "nobody waits for what it started";
  EXPECT_EQ(run("sleep 60", {}, [](std::string_view, double) { return false; }), ChildEnd::Stopped);
  EXPECT_EQ(run("while :; do :; done", {.processorSeconds = 1}), ChildEnd::TookTooLong);
  EXPECT_EQ(RunChild({(folder / "none").string()}, {}, {}, "", output), ChildEnd::NotStarted);
}

TEST(WorkbookFiles, AReaderThatBreaksDownIsAMessage) {
  const TestFolder folder;
  Workbook book;
  book.NumberRC(1, 1, 5);
  const std::string before = Dump(book);
  std::string problem;
  const auto read = [&](const fs::path& reader, const Poll& poll = {}) {
    const Variable named("TELLURIX_READER", reader.string());
    EXPECT_FALSE(ReadWorkbookFile(Data / "clinic.xlsx", book, Regional(), poll, problem));
    EXPECT_EQ(Dump(book), before);
    return problem;
  };
  EXPECT_EQ(read(Program(folder, "kill -SEGV $$")), "The file is damaged: its reader broke down.");
  EXPECT_EQ(read(Program(folder, "printf 'so it is'; exit 1")), "so it is");
  EXPECT_EQ(read(folder / "none"), "The program tellurix-reader is not installed.");
  EXPECT_EQ(read(Program(folder, "exit 0")), "No such file or directory") << "no result";
  EXPECT_EQ(read(Program(folder, "sleep 60"), [](std::string_view, double) { return false; }), "");
}

TEST(WorkbookFiles, GoesByTheContentsFirst) {
  const TestFolder folder;
  const Variable noPrograms("PATH", "");
  Workbook book;
  std::string problem;
  const auto read = [&](const fs::path& path) { return ReadWorkbookFile(path, book, Regional(), {}, problem); };
  for (const char* name : {"a.mrw", "b.tmx", "c.dat", "d.csv", "e.tlw"}) {
    fs::copy_file(Data / "clinic.ods", folder / name);
    EXPECT_TRUE(read(folder / name)) << name << ": " << problem;
    EXPECT_EQ(book.TextRC(2, 1), "Ann");
  }
  ASSERT_TRUE(WriteWorkbookFile(book, folder / "f.mrw", WorkbookFileType::Native, problem));
  EXPECT_TRUE(read(folder / "f.mrw")) << problem;
  PutFile(folder / "g.tab", "x\ty\n1\t2\n");
  ASSERT_TRUE(read(folder / "g.tab")) << problem;
  EXPECT_EQ(book.NumberRC(2, 2), 2);

  PutFile(folder / "h.mrw", "something else");
  EXPECT_FALSE(read(folder / "h.mrw"));
  EXPECT_EQ(problem, NoOffice);
  PutFile(folder / "i.tlw", "something else");
  EXPECT_FALSE(read(folder / "i.tlw"));
  EXPECT_EQ(problem, "The file is not a Tellurix workbook.");
  PutFile(folder / "j.xlsx", "something else");
  EXPECT_FALSE(read(folder / "j.xlsx"));
  EXPECT_EQ(problem, "The file is damaged.");
  EXPECT_FALSE(read(folder / "none.xls"));
  EXPECT_EQ(problem, "No such file or directory");
  EXPECT_FALSE(read(folder.Path()));
  EXPECT_EQ(problem, "Is a directory");
  EXPECT_FALSE(WriteWorkbookFile(book, folder / "k.xls", WorkbookFileType::Excel97, problem));
  EXPECT_EQ(problem, NoOfficeForXls);
  EXPECT_FALSE(fs::exists(folder / "k.xls"));
}

TEST(WorkbookFiles, AConverterStandsInForOlderKinds) {
  const TestFolder folder;
  const TestFolder programs;
  // It is called with the kind behind --convert-to, the folder behind --outdir, and the file at the end.
  PutFile(programs / "soffice",
          "#!/bin/sh\nfor last; do :; done\nwhile [ \"$1\" != --outdir ]; do shift; done\n/bin/cp '" +
              (Data / "clinic.xlsx").string() + "' \"$2/old.xlsx\"\n");
  fs::permissions(programs / "soffice", fs::perms::owner_all);
  const Variable path("PATH", programs.Path().string());
  PutFile(folder / "old.mgw", "something old");
  Workbook book;
  std::string problem;
  ASSERT_TRUE(ReadWorkbookFile(folder / "old.mgw", book, Regional(), {}, problem)) << problem;
  EXPECT_EQ(book.TextRC(2, 1), "Ann");
  PutFile(folder / "other.mgw", "something old");
  EXPECT_FALSE(ReadWorkbookFile(folder / "other.mgw", book, Regional(), {}, problem));
  EXPECT_EQ(problem, "LibreOffice could not convert the file.");
}

// All but headings, row heights (those of hidden rows come back) and the selection goes through an xlsx file.
TEST(WorkbookFiles, XlsxKeepsCellsAndLooks) {
  const TestFolder folder;
  Workbook written;
  const Regional regional;
  std::mt19937_64 random(9);
  for (int row = 1; row <= 200; ++row) {
    double value = 0;
    do value = std::bit_cast<double>(random());
    while (!std::isfinite(value));
    written.NumberRC(row, 1, value);
    written.TextRC(row, 2, row % 2 ? " <text> & \"more\"\n2nd line " : "_x0041_\x02 plain");
    written.SetLogical(row, 3, row % 3 == 0);
  }
  written.NumberRC(1, 4, 20);  // 1900-01-19, before the day that was none
  written.NumberRC(2, 4, 44000.5);
  LookChange look;
  look.number = NumberFormat{NumberFormat::Form::Date};
  written.SetLook({1, 4, 2, 4}, look);
  look = {};
  look.number = NumberFormat{NumberFormat::Form::Fixed, 3, true};
  look.bold = true;
  look.textColour = 0x112233;
  look.fillColour = 0xFFEE00;
  look.alignment = CellLook::Alignment::Right;
  written.SetLook({5, 1, 9, 6}, look);
  look = {};
  look.italic = true;
  written.SetLook({1, 2, GridStore::MaxRows, 2}, look);
  written.SetLook({3, 8, GridStore::MaxRows, 8}, look);
  written.Enter(1, 5, "=SUM(A1;1)*0+IF(1<2;\"a;b\"=\"\";3)", regional);
  written.Enter(2, 5, "=1/0", regional);
  written.Enter(3, 5, "=C3", regional);
  written.Enter(4, 5, "=B1&\"x\"", regional);
  written.Enter(5, 5, "=1+*2", regional);
  written.SetColumnWidth(2, 33.5);
  written.SetColumnWidth(6, 0);
  written.SetRowHeight(7, 0);
  SheetSettings settings = written.SettingsOfSheet();
  settings.frozenRows = 2;
  settings.showsGridlines = false;
  written.SetSettingsOfSheet(settings);
  written.AddSheet("a/b: c?");
  written.Enter(1, 1, "=Sheet1!D2+1", regional);
  written.LockSheet(true);
  written.AddSheet("third");
  written.Enter(1, 1, "='a/b: c?'!A1", regional);
  written.Sheet(2);

  std::string problem;
  ASSERT_TRUE(WriteWorkbookFile(written, folder / "book.xlsx", WorkbookFileType::Xlsx, problem)) << problem;
  Workbook read;
  ASSERT_TRUE(ReadForeignWorkbook(folder / "book.xlsx", read, problem)) << problem;
  EXPECT_EQ(read.SheetCount(), 3);
  EXPECT_EQ(read.Sheet(), 2);
  EXPECT_EQ(read.SheetName(2), "a_b_ c_");
  EXPECT_TRUE(read.SheetLocked());
  EXPECT_EQ(read.NumberRC(1, 1), 44001.5);
  read.Sheet(3);
  EXPECT_EQ(read.FormulaText(1, 1), "='a_b_ c_'!A1");
  read.Sheet(1);
  written.Sheet(1);
  for (int row = 1; row <= 200; ++row) {
    for (int column = 1; column <= 6; ++column) {
      if (row == 5 && column == 5) continue;
      EXPECT_EQ(read.TextRC(row, column), written.TextRC(row, column)) << row << " " << column;
      EXPECT_TRUE(column == 5 || read.TypeRC(row, column) == written.TypeRC(row, column)) << row << " " << column;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(read.NumberRC(row, column)),
                std::bit_cast<std::uint64_t>(written.NumberRC(row, column)));
      EXPECT_EQ(read.LookAt(row, column).number, written.LookAt(row, column).number) << row << " " << column;
      EXPECT_EQ(read.LookAt(row, column).fillColour, written.LookAt(row, column).fillColour);
      EXPECT_EQ(read.LookAt(row, column).alignment, written.LookAt(row, column).alignment);
      EXPECT_EQ(read.LookAt(row, column).bold, written.LookAt(row, column).bold);
    }
  }
  for (const int row : {1, 2, 3, 9, 10, 1000, GridStore::MaxRows}) {
    for (const int column : {2, 8}) {
      EXPECT_EQ(read.LookAt(row, column).italic, written.LookAt(row, column).italic) << row << " " << column;
    }
  }
  EXPECT_EQ(read.FormulaText(2, 5), "=1/0");
  EXPECT_EQ(read.FormulaText(1, 5), "=SUM(A1,1)*0+IF(1<2,\"a;b\"=\"\",3)");
  EXPECT_EQ(read.TypeRC(5, 5), TextCell) << "what cannot be read is a text";
  EXPECT_EQ(read.TextRC(5, 5), "=1+*2");
  EXPECT_EQ(read.ColumnWidth(2), 33.5);
  EXPECT_TRUE(read.IsColumnHidden(6));
  EXPECT_TRUE(read.IsRowHidden(7));
  EXPECT_EQ(read.SettingsOfSheet(), written.SettingsOfSheet());
  Archive archive(folder / "book.xlsx");
  std::string sheet;
  ASSERT_TRUE(archive.Read("xl/worksheets/sheet1.xml", sheet));
  EXPECT_NE(sheet.find("<c r=\"D1\" s=\"1\"><v>19</v></c>"), std::string::npos) << "19 January 1900 is day 19 there";
}

TEST(WorkbookFiles, HtmlWithLooksAndWithout) {
  const TestFolder folder;
  Workbook book;
  book.TextRC(1, 1, "a<b");
  book.NumberRC(2, 1, 0.1 + 0.2);
  book.NumberRC(2, 2, 44000);
  LookChange two, date;
  two.number = NumberFormat{NumberFormat::Form::Fixed, 2};
  two.bold = true;
  date.number = NumberFormat{NumberFormat::Form::Date};
  book.SetLook({2, 1, 2, 1}, two);
  book.SetLook({2, 2, 2, 2}, date);
  std::string problem;
  ASSERT_TRUE(WriteWorkbookFile(book, folder / "a.htm", WorkbookFileType::Html, problem)) << problem;
  ASSERT_TRUE(WriteWorkbookFile(book, folder / "b.htm", WorkbookFileType::HtmlData, problem)) << problem;
  const std::string looks = FileBytes(folder / "a.htm"), data = FileBytes(folder / "b.htm");
  EXPECT_NE(looks.find("<tr><td>a&lt;b</td><td></td></tr>\n<tr><td class=\"n l1\">0.30</td>"), std::string::npos)
      << looks;
  EXPECT_NE(looks.find("td.l1 { font-weight:bold; }"), std::string::npos);
  EXPECT_NE(data.find("<table>\n<tr><td>a&lt;b</td><td></td></tr>\n<tr><td>0.30000000000000004</td>"
                      "<td>2020-06-18</td></tr>\n</table>"),
            std::string::npos)
      << data;
  EXPECT_EQ(data.find("style"), std::string::npos);
}

}  // namespace
}  // namespace tellurix
