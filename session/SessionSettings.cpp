#include "session/SessionSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "numeric/Text.h"
#include "session/ReportGraphics.h"

namespace tellurix {

namespace {

constexpr std::array<const char*, 10> SeriesColours{"0", "255", "65280", "3", "4", "5", "65535", "255", "65280", "1"};
constexpr std::array<const char*, 10> SeriesShapes{"0", "1", "2", "3", "4", "5", "6", "7", "0", "1"};

std::vector<SettingKey> MakeSettingKeys() {
  std::vector<SettingKey> keys{
      {"MainWindow", "R1", "-1"},   {"MainWindow", "State", "2"},  // maximised
      {"MainWindow", "Left", "0"},  {"MainWindow", "Top", "0"},
      {"MainWindow", "Width", "0"}, {"MainWindow", "Height", "0"},
  };
  for (const std::string& form : PlacedForms()) {
    for (const char* key : {"Top", "Left", "Width", "Height", "WindowState"}) keys.push_back({form, key, ""});
  }
  const std::vector<SettingKey> options{
      {"Paths", "Data", ""},
      {"Paths", "Help", ""},
      {"Paths", "ExcelTellurixLink", "0"},
      {"Analyses", "DefaultConfidence", "95"},
      {"Analyses", "DefaultCI", "-1"},
      {"Analyses", "UseGroupID", "0"},
      {"Analyses", "DecimalPlaces", "6"},
      {"Analyses", "DecimalPlacesP", "4"},
      {"Analyses", "RClick", "-1"},
      {"Analyses", "MetaCC", "0"},
      {"Analyses", "MetaDelay", "0"},
      {"Analyses", "MetaExact", "-1"},
      {"Analyses", "MetaPlot", "1"},
      {"Analyses", "MetaPlotCI", "-1"},
      {"Graphics", "TitleFont", "Arial"},
      {"Graphics", "TitleSize", "28"},
      {"Graphics", "TitleBold", "400"},
      {"Graphics", "TitleItalic", "0"},
      {"Graphics", "TitleUline", "0"},
      {"Graphics", "TitleStrike", "0"},
      {"Graphics", "TitleColour", "0"},
      {"Graphics", "LabelFont", "Arial"},
      {"Graphics", "LabelSize", "20"},
      {"Graphics", "LabelBold", "400"},
      {"Graphics", "LabelItalic", "-1"},
      {"Graphics", "LabelUline", "0"},
      {"Graphics", "LabelStrike", "0"},
      {"Graphics", "LabelColour", "0"},
      {"Graphics", "AllBlack", "0"},
      {"Graphics", "RequestScales", "0"},
      {"Graphics", "BoxAxes", "0"},
      {"Graphics", "RotateAllY", "0"},
  };
  keys.insert(keys.end(), options.begin(), options.end());
  for (std::size_t n = 0; n < SeriesShapes.size(); ++n) {
    keys.push_back({"Graphics", fmt::format("Shape{}", n), SeriesShapes[n]});
    keys.push_back({"Graphics", fmt::format("Colour{}", n), SeriesColours[n]});
    keys.push_back({"Graphics", fmt::format("Width{}", n), "1"});
    keys.push_back({"Graphics", fmt::format("Style{}", n), "0"});
  }
  for (const auto& [key, value] : {std::pair{"Join", "0"},
                                   {"DateX", "0"},
                                   {"Mean", "-1"},
                                   {"1SD", "-1"},
                                   {"2SD", "-1"},
                                   {"3SD", "-1"},
                                   {"Manual1", "0"},
                                   {"Manual2", "0"}}) {
    keys.push_back({"Chart", key, value});
  }
  // Margins and indents in hundredths of a centimetre; Units 0 is centimetres.
  for (const auto& [key, value] : {std::pair{"Units", "0"},
                                   {"PrintMarginLeft", "200"},
                                   {"PrintMarginRight", "200"},
                                   {"PrintMarginTop", "200"},
                                   {"PrintMarginBottom", "200"},
                                   {"PageIndentLeft", "0"},
                                   {"PageIndentHanging", "0"},
                                   {"PageIndentRight", "0"}}) {
    keys.push_back({"Report", key, value});
  }
  for (int n = 1; n <= 4; ++n) {
    keys.push_back({"FileHistory", fmt::format("Caption{}", n), n == 1 ? "&1 test.tlw" : ""});
    keys.push_back({"FileHistory", fmt::format("Path{}", n), ""});
  }
  const std::array<std::pair<const char*, const char*>, 4> tools{{{"&Calculator", "TellurixCalculator"},
                                                                  {"Tellurix &Update", "TellurixUpdater"},
                                                                  {"&Notepad", "notepad.exe"},
                                                                  {"&Wordpad", "wordpad.exe"}}};
  for (std::size_t n = 0; n < tools.size(); ++n) {
    keys.push_back({"Tools", fmt::format("Caption{}", n + 1), tools[n].first});
    keys.push_back({"Tools", fmt::format("CommandLine{}", n + 1), tools[n].second});
  }
  keys.push_back({"Edit", "DragDrop", "-1"});
  return keys;
}

}  // namespace

const std::vector<SettingKey>& SettingKeys() {
  static const std::vector<SettingKey> keys = MakeSettingKeys();
  return keys;
}

const std::string& SettingDefault(std::string_view section, std::string_view key) {
  static const std::string none;
  const auto& keys = SettingKeys();
  const auto known = std::ranges::find_if(
      keys, [&](const SettingKey& k) { return EqualNoCase(k.section, section) && EqualNoCase(k.key, key); });
  return known == keys.end() ? none : known->defaultValue;
}

std::string SettingValue(const Settings& settings, std::string_view section, std::string_view key) {
  return settings.GetIniValue(section, key, SettingDefault(section, key));
}

int IntegerSetting(const Settings& settings, std::string_view section, std::string_view key, int low, int high) {
  // The file is written with "." and without grouping, whatever the user's own symbols.
  const std::string text = SettingValue(settings, section, key);
  const int value = ParseInteger(text);
  return ReadNumber(text, {}) && value >= low && value <= high ? value : ParseInteger(SettingDefault(section, key));
}

std::string FolderText(const std::filesystem::path& folder) { return folder.empty() ? "" : (folder / "").string(); }

std::filesystem::path FolderFromText(std::string_view text) {
  const std::filesystem::path folder(text);
  return folder.has_filename() || !folder.has_relative_path() ? folder : folder.parent_path();
}

const std::vector<std::string>& PlacedForms() {
  static const std::vector<std::string> forms{"TLCalc", "Analysis", "Formula", "pdf", "Regress", "Varform"};
  return forms;
}

void LoadSettings(Session& session) {
  Options& options = session.options;
  const auto read = [&](const char* key, int low, int high) {
    return IntegerSetting(session.settings, "Analyses", key, low, high);
  };
  const std::string data = SettingValue(session.settings, "Paths", "Data");
  if (!data.empty()) session.paths.data = FolderFromText(data);
  options.DefaultCI = read("DefaultConfidence", 0, 99);
  options.UseGroupID = read("UseGroupID", -1, 1) != 0;
  options.DecimalPlaces = read("DecimalPlaces", 2, 12);
  options.PDecimalPlaces = read("DecimalPlacesP", 3, 7);
  options.RClick = read("RClick", -1, 1) != 0;
  LoadLooks(session);
}

void SaveSettings(Session& session) {
  const Options& options = session.options;
  session.settings.SetIniValues({{"Analyses", "DefaultConfidence", std::to_string(options.DefaultCI)},
                                 {"Analyses", "UseGroupID", options.UseGroupID ? "-1" : "0"},
                                 {"Analyses", "DecimalPlaces", std::to_string(options.DecimalPlaces)},
                                 {"Analyses", "DecimalPlacesP", std::to_string(options.PDecimalPlaces)},
                                 {"Analyses", "RClick", options.RClick ? "-1" : "0"}});
}

}  // namespace tellurix
