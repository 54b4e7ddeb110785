#include "session/Skeleton.h"

#include <gtest/gtest.h>

#include <set>

#include "session/SessionSettings.h"
#include "tests/FakeHost.h"

namespace tellurix {
namespace {

class SkeletonTest : public ::testing::Test {
 protected:
  FakeHost host;
  FakeDocuments documents;
  FakeSettings settings;
  Session session{host, documents, settings, {}};
};

TEST_F(SkeletonTest, EnsureReportFindsOrMakesTheTarget) {
  Report* first = EnsureReport(session);
  ASSERT_EQ(documents.ReportCount(), 1);
  EXPECT_EQ(EnsureReport(session), first);  // the only one: no question
  Report* second = EnsureReport(session, true);
  EXPECT_EQ(documents.ReportCount(), 2);
  const auto pick = [](const char* row) {
    return [row](Form& form) {
      EXPECT_EQ(form.title, "Select report for output");
      form.Set("List", row);
      form.Press("Select");
    };
  };
  host.forms = {pick("Report1"), pick("Report2"),
                [](Form& form) {
                  EXPECT_EQ(form.IndexOf("List"), 1);  // the active one is marked
                  form.Close();
                },
                pick("New Report")};
  EXPECT_EQ(EnsureReport(session), first);
  EXPECT_EQ(documents.ActiveReport(), first);
  EXPECT_EQ(EnsureReport(session), second);
  EXPECT_EQ(EnsureReport(session), nullptr);
  EXPECT_EQ(documents.ReportCount(), 2);
  Report* third = EnsureReport(session);
  ASSERT_EQ(documents.ReportCount(), 3);
  EXPECT_EQ(third, &documents.ReportAt(2));
}

TEST_F(SkeletonTest, ACalculationEndsOnEveryWayOut) {
  session.CancelRequested = true;
  {
    const Calculation calculation(session);
    EXPECT_TRUE(session.CalculationRunning);
    EXPECT_FALSE(session.CancelRequested);
    BusyPointer(session);
    session.HelpContext = 9;
    EXPECT_EQ(ShowMessage(session, "text", WarningIcon, "title"), Reply::Ok);
    EXPECT_FALSE(host.busyWhenAsked);
    EXPECT_TRUE(host.busy);
    EXPECT_EQ(host.messages[0].helpContext, 9);
    const Poll poll = ProgressPoll(session);
    EXPECT_TRUE(poll("half", 0.5));
    host.progressGoesOn = false;
    EXPECT_FALSE(poll("more", 0.6));
    host.progressGoesOn = true;
    EXPECT_FALSE(poll("more", 0.7));  // once cancelled it stays so
    EXPECT_TRUE(session.CancelRequested);
  }
  EXPECT_FALSE(session.CalculationRunning);
  EXPECT_FALSE(host.busy);
  RefuseNonNumericData(session);
  EXPECT_EQ(host.LastMessage(), "You must select numerical data for this function");
  EXPECT_EQ(host.messages.back().title, "Worksheet Data Selection");
}

TEST_F(SkeletonTest, SettingsComeAndGo) {
  const auto options = [&] {
    const Options& o = session.options;
    return std::vector{o.DefaultCI, o.DecimalPlaces, o.PDecimalPlaces, int{o.UseGroupID}, int{o.RClick}};
  };
  LoadSettings(session);
  EXPECT_EQ(options(), (std::vector{95, 6, 4, 0, 1}));  // the defaults of the file
  session.options.DefaultCI = 0;
  session.options.DecimalPlaces = 9;
  session.options.PDecimalPlaces = 5;
  session.options.UseGroupID = true;
  session.options.RClick = false;
  session.options.regional.decimalSymbol = ",";
  SaveSettings(session);
  EXPECT_EQ(settings.values["Analyses.UseGroupID"] + settings.values["Analyses.RClick"], "-10");
  session.options = {};
  LoadSettings(session);
  EXPECT_EQ(options(), (std::vector{0, 9, 5, 1, 0}));
  for (const char* bad : {"", "many", "-7", "1000", "1e99"}) {
    for (auto& [key, value] : settings.values) value = bad;
    LoadSettings(session);
    EXPECT_EQ(options(), (std::vector{95, 6, 4, 0, 1})) << bad;
  }
}

TEST_F(SkeletonTest, TheTableOfSettingsHasItsDefaults) {
  std::set<std::string> names;
  for (const SettingKey& key : SettingKeys()) EXPECT_TRUE(names.insert(key.section + "." + key.key).second) << key.key;
  const struct {
    const char *section, *key, *value;
  } cases[] = {{"MainWindow", "R1", "-1"},
               {"MainWindow", "State", "2"},
               {"Paths", "ExcelTellurixLink", "0"},
               {"Analyses", "DefaultConfidence", "95"},
               {"Analyses", "DecimalPlacesP", "4"},
               {"Analyses", "MetaExact", "-1"},
               {"Analyses", "MetaPlot", "1"},
               {"Analyses", "MetaPlotCI", "-1"},
               {"Graphics", "TitleSize", "28"},
               {"Graphics", "TitleBold", "400"},
               {"Graphics", "LabelSize", "20"},
               {"Graphics", "LabelItalic", "-1"},
               {"Graphics", "Shape7", "7"},
               {"Graphics", "Shape9", "1"},
               {"Graphics", "Colour2", "65280"},
               {"Graphics", "Colour6", "65535"},
               {"Graphics", "Colour9", "1"},
               {"Graphics", "Width5", "1"},
               {"Graphics", "Style5", "0"},
               {"Chart", "Mean", "-1"},
               {"Chart", "3SD", "-1"},
               {"Chart", "Manual2", "0"},
               {"FileHistory", "Caption1", "&1 test.tlw"},
               {"Tools", "Caption2", "Tellurix &Update"},
               {"Tools", "CommandLine4", "wordpad.exe"}};
  for (const auto& c : cases) EXPECT_EQ(SettingValue(settings, c.section, c.key), c.value) << c.key;
  EXPECT_EQ(SettingValue(settings, "analyses", "decimalplaces"), "6");
  EXPECT_EQ(SettingValue(settings, "None", "None"), "");
}

}  // namespace
}  // namespace tellurix
