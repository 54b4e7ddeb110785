// Drives the start step by step, a front end in front that notes what it is told.
#include "shell/StartUp.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/History.h"
#include "shell/IniSettings.h"
#include "tests/FakeHost.h"
#include "tests/TemporaryFolder.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class StartUpTest : public ::testing::Test, public FrontEnd {
 protected:
  // What was seen, in its order.
  std::vector<std::string> steps;
  std::vector<fs::path> opened;
  bool canLink = false;
  bool linkWorks = true;

  void SetTitle(const std::string& title) override { steps.push_back("title " + title); }
  bool OpenLinkedFile(const fs::path& file) override {
    steps.push_back("open " + file.filename().string());
    EXPECT_TRUE(host.busy);
    opened.push_back(file);
    return true;
  }
  void ShowOpening(const std::string& name, const std::string&) override { steps.push_back("opening " + name); }
  void ShowMainWindow() override { steps.push_back("MD1"); }
  bool CanLinkSpreadsheet() const override { return canLink; }
  bool LinkSpreadsheet() override {
    steps.push_back("link");
    return linkWorks;
  }

  StartUpTest() {
    WriteTestFile(folder / "program/Template/m_single.rtf", "{\\rtf1 }");
    WriteTestFile(folder / "program/Help/contents.md", "# Help");
    WriteTestFile(folder / "program/Data/Tellurix.tlw", "default workbook");
    WriteTestFile(folder / "program/Data/test.tlw", "sample workbook");
    session.systemSymbols = [this] { return symbols; };
  }

  bool Start(const std::vector<std::string>& commandLine = {}) { return StartUp(session, *this, commandLine); }

  TemporaryFolder folder;
  FakeHost host;
  FakeDocuments documents;
  IniSettings settings{folder / "user/Tellurix.ini"};
  Session session{host,
                  documents,
                  settings,
                  {.program = folder / "program", .user = folder / "user", .data = folder / "program/Data"}};
  SystemSymbols symbols;
};

TEST_F(StartUpTest, AFirstStartMakesTheUsersFolderAndItsSettings) {
  symbols = {.decimal = ",", .grouping = ".", .moneyDecimal = ",", .moneyGrouping = ".", .dateForm = "dd.mm.yyyy"};
  ASSERT_TRUE(Start());
  EXPECT_EQ(steps, (std::vector<std::string>{"title Tellurix", "opening Tellurix", "MD1"}));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_FALSE(host.busy);
  EXPECT_EQ(ReadTestFile(folder / "user/Tellurix.tlw"), "default workbook");
  EXPECT_EQ(ReadTestFile(folder / "user/data/test.tlw"), "sample workbook");
  EXPECT_EQ(session.options.regional.decimalSymbol, ",");
  EXPECT_EQ(session.options.regional.dateForm, "dd.mm.yyyy");
  EXPECT_EQ(session.options.PDecimalPlaces, 4);
  EXPECT_EQ(session.paths.data, folder / "user/data");
  EXPECT_EQ(session.paths.help, folder / "program/Help");
  const auto value = [&](const char* section, const char* key) { return settings.GetIniValue(section, key, "none"); };
  EXPECT_EQ(value("Paths", "Data"), (folder / "user/data/").string());
  EXPECT_EQ(value("MainWindow", "R1"), "0");
  EXPECT_EQ(value("MainWindow", "State"), "2");
  for (const char* form : {"TLCalc", "Analysis", "Formula", "pdf", "Regress", "Varform"}) {
    for (const char* key : {"Top", "Left", "Width", "Height", "WindowState"}) EXPECT_EQ(value(form, key), "0") << form;
  }
  EXPECT_EQ(value("Analyses", "DefaultCI"), "-1");
  EXPECT_EQ(value("Analyses", "UseGroupID"), "0");
  EXPECT_EQ(value("Analyses", "DecimalPlaces"), "6");
  EXPECT_EQ(value("Analyses", "DecimalPlacesP"), "4");
  EXPECT_EQ(value("Analyses", "RClick"), "-1");
  EXPECT_EQ(value("FileHistory", "Caption1"), "&1 test.tlw");
  EXPECT_EQ(value("FileHistory", "Path1"), (folder / "user/data/test.tlw").string());
  EXPECT_EQ(value("Tools", "Caption1"), "&Calculator");
  EXPECT_EQ(value("Tools", "CommandLine1"), (folder / "program/TellurixCalculator").string());
  EXPECT_EQ(value("Tools", "CommandLine4"), "wordpad.exe");
}

TEST_F(StartUpTest, ALaterStartLeavesWhatTheUserHas) {
  ASSERT_TRUE(Start());
  settings.SetIniValue("Analyses", "DecimalPlaces", "9");
  settings.SetIniValue("Tools", "Caption1", "");
  WriteTestFile(folder / "user/Tellurix.tlw", "my own");
  fs::create_directories(folder / "help");
  settings.SetIniValue("Paths", "Help", (folder / "help/").string());
  ASSERT_TRUE(Start());
  EXPECT_EQ(session.options.DecimalPlaces, 9);
  EXPECT_EQ(settings.GetIniValue("Tools", "Caption1", "none"), "");
  EXPECT_EQ(ReadTestFile(folder / "user/Tellurix.tlw"), "my own");
  EXPECT_EQ(session.paths.help, folder / "help");
}

TEST_F(StartUpTest, EndsWithoutItsOwnFiles) {
  fs::remove(folder / "program/Template/m_single.rtf");
  EXPECT_FALSE(Start());
  EXPECT_TRUE(host.LastMessage().starts_with(
      "Tellurix files are not properly installed, please re-install and report the problem to "));
  EXPECT_FALSE(fs::exists(folder / "user"));
  EXPECT_EQ(steps, std::vector<std::string>{"title Tellurix"});
}

TEST_F(StartUpTest, EndsWhereNumbersAndMoneyAreWrittenWithOtherSymbols) {
  const std::string advice =
      "Please adjust your system settings for 'Decimal symbol' and 'Digit grouping symbol'\n"
      "so that they are the same under the 'Numeric' tab as they are under the 'Currency' tab\n"
      "in 'Regional Options' in Windows 'Control Pannel'.\n\n";
  symbols.moneyDecimal = ",";
  EXPECT_FALSE(Start());
  EXPECT_EQ(host.LastMessage(), advice + "Tellurix will not run until you make these changes.");
  EXPECT_EQ(host.messages.back().title, "Regional Settings Need Updating");
  EXPECT_FALSE(fs::exists(folder / "user"));
  symbols = {.grouping = ",", .moneyGrouping = " "};
  EXPECT_FALSE(Start());
  // Before a report it is no more than a warning.
  EXPECT_NE(EnsureReport(session), nullptr);
  EXPECT_EQ(host.LastMessage(), advice + "Tellurix will not properly run until you make these changes.");
  host.messages.clear();
  session.systemSymbols = nullptr;
  EXPECT_NE(EnsureReport(session), nullptr);
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(StartUpTest, OpensTheFilesOfTheCommandLine) {
  WriteTestFile(folder / "a b.csv", "1");
  WriteTestFile(folder / "~excel.xls", "1");
  ASSERT_TRUE(Start({(folder / "a b.csv").string(), "FileOpen \"" + (folder / "~Excel.xls").string() + "\"",
                     (folder / "~excel.xls").string(), (folder / "été.csv").string(), ""}));
  ASSERT_EQ(opened.size(), 2u);
  EXPECT_EQ(opened[0].filename(), "a b.csv");
  EXPECT_EQ(opened[1].filename(), "~excel.xls");
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[0].title, "File Open");
  EXPECT_TRUE(host.LastMessage().ends_with("ÉTÉ.CSV is not available")) << host.LastMessage();
  EXPECT_EQ(steps.back(), "MD1");
}

TEST_F(StartUpTest, AsksAboutTheLinkOnlyWhereOneCanBeMade) {
  settings.SetIniValue("Paths", "ExcelTellurixLink", "Ask");
  const auto answer = [&] { return settings.GetIniValue("Paths", "ExcelTellurixLink", ""); };
  ASSERT_TRUE(Start());
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(answer(), "Ask");
  canLink = true;
  host.replies = {Reply::Yes};
  ASSERT_TRUE(Start());
  EXPECT_EQ(answer(), "1");
  EXPECT_TRUE(host.AllUsed());
  settings.SetIniValue("Paths", "ExcelTellurixLink", "Ask");
  host.replies = {Reply::No};
  ASSERT_TRUE(Start());
  EXPECT_EQ(answer(), "0");
  settings.SetIniValue("Paths", "ExcelTellurixLink", "Ask");
  linkWorks = false;
  host.replies = {Reply::Yes};
  ASSERT_TRUE(Start());
  EXPECT_EQ(answer(), "0");
  EXPECT_EQ(std::ranges::count(steps, "link"), 2);
}

TEST_F(StartUpTest, SaysWhenTheUsersFolderCannotBeMade) {
  WriteTestFile(folder / "user", "a file in its place");
  ASSERT_TRUE(Start());
  EXPECT_TRUE(host.LastMessage().starts_with("The folder ")) << host.LastMessage();
  EXPECT_EQ(steps.back(), "MD1");
}

TEST_F(StartUpTest, TheHistoryHoldsFourFilesTheNewestFirst) {
  const auto shown = [&] {
    std::string text;
    for (const HistoryRow& row : History(session)) text += row.caption + "|";
    return text;
  };
  EXPECT_EQ(shown(), "");
  for (const char* name : {"a.csv", "b.csv", "c.csv", "d.csv", "e.csv"}) AddToHistory(session, folder / name);
  EXPECT_EQ(shown(), "&1 e.csv|&2 d.csv|&3 c.csv|&4 b.csv|");
  AddToHistory(session, folder / "x/../c.csv");
  EXPECT_EQ(shown(), "&1 c.csv|&2 e.csv|&3 d.csv|&4 b.csv|");
  EXPECT_EQ(session.paths.data, folder.Path());
  EXPECT_EQ(settings.GetIniValue("Paths", "Data", ""), (folder.Path() / "").string());
  RemoveFromHistory(session, folder / "e.csv");
  EXPECT_EQ(shown(), "&1 c.csv|&2 d.csv|&3 b.csv|");
  EXPECT_EQ(settings.GetIniValue("FileHistory", "Caption4", "none"), "");
  EXPECT_EQ(settings.GetIniValue("FileHistory", "Caption2", ""), "&2 d.csv");
}

}  // namespace
}  // namespace tellurix
