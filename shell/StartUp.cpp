#include "shell/StartUp.h"

#include <fmt/format.h>

#include <algorithm>

#include "numeric/Text.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"
#include "shell/Product.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr const char* DefaultWorkbook = "Tellurix.tlw";
constexpr const char* SampleWorkbook = "test.tlw";

fs::path SampleOf(const Paths& paths) { return paths.user / "data" / SampleWorkbook; }

bool HoldsFile(const fs::path& folder, const char* extension) {
  std::error_code error;
  return std::ranges::any_of(fs::directory_iterator(folder, error),
                             [&](const fs::directory_entry& entry) { return entry.path().extension() == extension; });
}

void UseSystemSymbols(Session& session) {
  if (!session.systemSymbols) return;
  const SystemSymbols symbols = session.systemSymbols();
  session.options.regional = {symbols.decimal, symbols.grouping, symbols.dateForm};
}

void CopyWhenAbsent(const fs::path& from, const fs::path& to) {
  std::error_code error;
  if (fs::exists(from, error) && !fs::exists(to, error)) fs::copy_file(from, to, error);
}

void MakeUserFolder(Session& session) {
  const Paths& paths = session.paths;
  std::error_code error;
  fs::create_directories(paths.user / "data", error);
  if (error) {
    ShowMessage(session,
                fmt::format("The folder {} could not be made: {}\nSettings will not be kept.",
                            (paths.user / "data").string(), error.message()),
                WarningIcon);
    return;
  }
  CopyWhenAbsent(paths.program / "Data" / DefaultWorkbook, paths.user / DefaultWorkbook);
  CopyWhenAbsent(paths.program / "Data" / SampleWorkbook, SampleOf(paths));
}

// What a new settings file begins with.
void WriteFirstSettings(Session& session) {
  if (IntegerSetting(session.settings, "MainWindow", "R1", -1, 1) == 0) return;
  const Paths& paths = session.paths;
  std::vector<IniValue> first{{"MainWindow", "R1", "0"}, {"MainWindow", "State", "2"}};
  // No size: the window has had no place yet.
  for (const std::string& form : PlacedForms()) {
    for (const char* key : {"Top", "Left", "Width", "Height", "WindowState"}) first.push_back({form, key, "0"});
  }
  for (const char* key : {"DefaultCI", "UseGroupID", "DecimalPlaces", "DecimalPlacesP", "RClick"}) {
    first.push_back({"Analyses", key, SettingDefault("Analyses", key)});
  }
  std::error_code error;
  if (const fs::path sample = SampleOf(paths); fs::exists(sample, error)) {
    first.push_back({"FileHistory", "Caption1", SettingDefault("FileHistory", "Caption1")});
    first.push_back({"FileHistory", "Path1", sample.string()});
  }
  first.push_back({"Paths", "Data", FolderText(paths.user / "data")});
  for (int n = 1; n <= 4; ++n) {
    const std::string caption = fmt::format("Caption{}", n), line = fmt::format("CommandLine{}", n);
    const std::string command = SettingDefault("Tools", line);
    const bool isOurs = command.starts_with("Tellurix");
    first.push_back({"Tools", caption, SettingDefault("Tools", caption)});
    first.push_back({"Tools", line, isOurs ? (paths.program / command).string() : command});
  }
  if (session.systemSymbols && session.systemSymbols().measuresInInches) first.push_back({"Report", "Units", "1"});
  session.settings.SetIniValues(first);
}

void FindHelp(Session& session) {
  const fs::path folder = FolderFromText(SettingValue(session.settings, "Paths", "Help"));
  std::error_code error;
  if (!folder.empty() && fs::is_directory(folder, error)) session.paths.help = folder;
}

void OfferSpreadsheetLink(Session& session, FrontEnd& front) {
  if (!EqualNoCase(SettingValue(session.settings, "Paths", "ExcelTellurixLink"), "Ask")) return;
  if (!front.CanLinkSpreadsheet()) return;
  bool isLinked =
      ShowMessage(session,
                  "Do you want to install the add-in \"TellurixExcelLink\", which sends worksheets from your "
                  "spreadsheet program to Tellurix?",
                  YesNo | QuestionIcon) == Reply::Yes;
  if (isLinked && !front.LinkSpreadsheet()) {
    ShowMessage(session, "The add-in could not be installed.", WarningIcon);
    isLinked = false;
  }
  session.settings.SetIniValue("Paths", "ExcelTellurixLink", isLinked ? "1" : "0");
}

}  // namespace

bool ProgramFilesArePresent(const Paths& paths) {
  return !paths.program.empty() && HoldsFile(paths.program / "Template", ".rtf") &&
         HoldsFile(paths.program / "Help", ".md");
}

std::string MissingFilesText() {
  return std::string("Tellurix files are not properly installed, please re-install and report the problem to ") +
         SupportAddress;
}

bool StartUp(Session& session, FrontEnd& front, const std::vector<std::string>& commandLine) {
  session.paths.help = session.paths.program / "Help";
  front.SetTitle(ProductName);
  session.host.SetStatus("Loading Tellurix");
  if (!ProgramFilesArePresent(session.paths)) {
    ShowMessage(session, MissingFilesText(), ErrorIcon);
    return false;
  }
  if (!CheckRegionalSettings(session, "Tellurix will not run until you make these changes.")) return false;
  UseSystemSymbols(session);
  MakeUserFolder(session);
  WriteFirstSettings(session);
  LoadSettings(session);
  FindHelp(session);
  OfferSpreadsheetLink(session, front);
  for (const std::string& text : commandLine) {
    ExecuteLinkCommand(session, text, [&](const std::filesystem::path& file) { return front.OpenLinkedFile(file); });
  }
  front.ShowOpening(ProductName, ProductVersion);
  front.ShowMainWindow();
  NormalPointer(session);
  session.host.SetStatus("Ready");
  return true;
}

}  // namespace tellurix
