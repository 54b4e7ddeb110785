#include "session/SessionSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr std::array<const char*, 10> SeriesColours{"0", "255", "65280", "3", "4", "5", "65535", "255", "65280", "1"};
constexpr std::array<const char*, 10> SeriesShapes{"0", "1", "2", "3", "4", "5", "6", "7", "0", "1"};

std::vector<SettingKey> MakeSettingKeys() {
  std::vector<SettingKey> keys{
      {"MainWindow", "R1", "-1"},
      {"MainWindow", "State", "2"},  // maximised
      {"MainWindow", "Left", "0"},
      {"MainWindow", "Top", "0"},
      {"MainWindow", "Width", "0"},
      {"MainWindow", "Height", "0"},
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

// The fallback stands for what is no number or out of range.
int IntegerSetting(const Session& session, std::string_view key, int low, int high, int fallback) {
  // The file is written with "." and without grouping, whatever the user's own symbols.
  const std::string text = SettingValue(session.settings, "Analyses", key);
  const int value = ParseInteger(text);
  return ReadNumber(text, {}) && value >= low && value <= high ? value : fallback;
}

}  // namespace

const std::vector<SettingKey>& SettingKeys() {
  static const std::vector<SettingKey> keys = MakeSettingKeys();
  return keys;
}

std::string SettingValue(const Settings& settings, std::string_view section, std::string_view key) {
  const auto& keys = SettingKeys();
  const auto known = std::ranges::find_if(
      keys, [&](const SettingKey& k) { return EqualNoCase(k.section, section) && EqualNoCase(k.key, key); });
  return settings.GetIniValue(section, key, known == keys.end() ? "" : known->defaultValue);
}

void LoadSettings(Session& session) {
  Options& options = session.options;
  options.DefaultCI = IntegerSetting(session, "DefaultConfidence", 0, 99, 95);
  options.UseGroupID = IntegerSetting(session, "UseGroupID", -1, 1, 0) != 0;
  options.DecimalPlaces = IntegerSetting(session, "DecimalPlaces", 2, 12, 6);
  options.PDecimalPlaces = IntegerSetting(session, "DecimalPlacesP", 3, 7, 4);
  options.RClick = IntegerSetting(session, "RClick", -1, 1, -1) != 0;
}

void SaveSettings(Session& session) {
  const Options& options = session.options;
  const auto write = [&](const char* key, int value) {
    session.settings.SetIniValue("Analyses", key, std::to_string(value));
  };
  write("DefaultConfidence", options.DefaultCI);
  write("UseGroupID", options.UseGroupID ? -1 : 0);
  write("DecimalPlaces", options.DecimalPlaces);
  write("DecimalPlacesP", options.PDecimalPlaces);
  write("RClick", options.RClick ? -1 : 0);
}

}  // namespace tellurix
