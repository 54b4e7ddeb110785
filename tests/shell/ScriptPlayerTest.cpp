// The script language as it is played, checked and recorded.

#include "shell/ScriptPlayer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "shell/DocumentFiles.h"
#include "shell/ProgramFolder.h"
#include "shell/ResultsJson.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

const fs::path Root = TELLURIX_SOURCE_DIR;

// A folder of the test's own, with a small worksheet of two columns.
class ScriptPlay : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "tellurix-test-XXXXXX").string();
    folder = ::mkdtemp(name.data());
    Put("two.csv", "First,Second\n1,10\n2,20\n3,40\n");
  }
  void TearDown() override { fs::remove_all(folder); }

  void Put(const std::string& name, std::string_view text) { std::ofstream(folder / name, std::ios::binary) << text; }

  // Plays the lines as the script "play.tlx" of the folder; the failure, or nothing.
  std::string Play(ScriptPlayer& player, const std::string& text) {
    ScriptFile script;
    std::string error;
    if (!ReadScript(text, (folder / "play.tlx").string(), script, error)) return error;
    return player.Play(script) ? "" : player.Failure();
  }
  std::string Play(const std::string& text) {
    ScriptPlayer player(ScriptPaths(Root));
    return Play(player, text);
  }
  // The failure without the folder in front of the file's name.
  std::string Failure(const std::string& text) {
    const std::string failure = Play(text);
    const auto at = failure.find("play.tlx");
    return at == std::string::npos ? failure : failure.substr(at);
  }

  fs::path folder;
};

const std::string Begin = "open \"two.csv\"\nrun M_t_Single\n";

TEST(ScriptReader, TakesWordsQuotesAndComments) {
  ScriptFile script;
  std::string error;
  ASSERT_TRUE(
      ReadScript("\xEF\xBB\xBF# Source: a book\n  # Source: R\r\nset \"Group\"/\"A \\\"b\\\"\" -1.5 # why\n\n"
                 "set #edpdf 1.96\nenter #Dat 10 20 / 30 \"a # b\"\n",
                 "x.tlx", script, error));
  EXPECT_EQ(script.source, "a book; R");
  ASSERT_EQ(script.steps.size(), 3u);
  EXPECT_EQ(StepText(script.steps[0]), R"(set "Group" / "A \"b\"" -1.5)");
  EXPECT_EQ(script.steps[0].line, 3);
  EXPECT_EQ(StepText(script.steps[1]), "set #edpdf 1.96");
  EXPECT_EQ(StepText(script.steps[2]), R"(enter #Dat 10 20 / 30 "a # b")");
  EXPECT_FALSE(ReadScript("run \"x", "x.tlx", script, error));
  EXPECT_EQ(error, "x.tlx:1: a quote is left open");
}

TEST_F(ScriptPlay, StopsWithFileLineAndWhatWasAsked) {
  // A prompt that nothing answers, at the end and before a step that does not answer it.
  EXPECT_EQ(Failure(Begin), "play.tlx:2: A selection (\"Select DATA (1 column)\") is asked, but the script ends here");
  EXPECT_EQ(Failure(Begin + "press OK\n"),
            "play.tlx:3: A selection (\"Select DATA (1 column)\") is asked, but the next step is: press OK");
  EXPECT_EQ(Failure(Begin + "select A1:A4\nset \"Power\" 3\n"),
            "play.tlx:4: the form \"Single sample t test\" has no \"Power\": it has \"Confidence (%)\", \"Population "
            "mean\", \"OK\", \"Cancel\"");
  EXPECT_EQ(Failure(Begin + "select A1:A4\nset \"Confidence (%)\" 12\n"),
            "play.tlx:4: \"Confidence (%)\" does not take this: set \"Confidence (%)\" 12");
  // An answer that no prompt takes.
  EXPECT_EQ(Failure(Begin + "select A1:A4\npress OK\npress OK\n"), "play.tlx:5: nothing asks for this: press OK");
  // A message that was not expected, or another than expected.
  EXPECT_EQ(Failure(Begin + "select A1:B4\n"),
            "play.tlx:3: the message \"Error: you must select 1 column but you selected 2.\" is shown");
  EXPECT_EQ(Failure(Begin + "select A1:B4\nexpect message \"three\"\n"),
            "play.tlx:4: the message is \"Error: you must select 1 column but you selected 2.\", not \"three\"");
  EXPECT_EQ(Failure("select A1\n"), "play.tlx:1: nothing asks for this: select A1");
  EXPECT_EQ(Failure("jump\n"), "play.tlx:1: no such step: jump");
  EXPECT_EQ(Failure("run \"Analysis/None\"\n"), "play.tlx:1: there is no command \"Analysis/None\"");
  EXPECT_EQ(Failure("run M_Print\n"), "play.tlx:1: \"File/Print\" has no command yet");
  EXPECT_EQ(Failure("run M_t_Single\nselect A1:A3\n"), "play.tlx:2: no workbook is open");
  EXPECT_EQ(Failure(Begin + "select \"Third\"\n"),
            "play.tlx:3: \"Third\" is neither a range nor the title of a column");
  EXPECT_EQ(Failure("setting Analyses.Nothing 3\n"), "play.tlx:1: there is no setting Analyses.Nothing");
}

TEST_F(ScriptPlay, ExpectationsHoldOrStopTheScript) {
  const std::string run = Begin + "select \"Second\"\npress OK\n";
  EXPECT_EQ(
      Play(run + "expect m_single.sam_mean 23.3333 within 1e-4\nexpect size 3\nexpect m_single.name \"Second\"\n"), "");
  EXPECT_EQ(Failure(run + "expect m_single.sam_mean 23.3333\n"),
            "play.tlx:5: m_single.sam_mean is 23.333333333333332, expected 23.3333");
  EXPECT_EQ(Failure(run + "expect m_single.sam_mean *\n"),
            "play.tlx:5: m_single.sam_mean is 23.333333333333332, expected *");
  EXPECT_EQ(Failure(run + "expect m_single.name \"First\"\n"),
            "play.tlx:5: m_single.name is \"Second\", expected \"First\"");
  EXPECT_EQ(Failure(run + "expect m_single.size[2] 3\n"), "play.tlx:5: the last run filled no field m_single.size[2]");
  EXPECT_EQ(Failure(run + "expect no report\n"), "play.tlx:5: report is \"written\", expected \"none\"");
  EXPECT_EQ(Failure(run + "expect text \"Paired\"\n"),
            "play.tlx:5: report is \"a report without it\", expected \"Paired\"");
  EXPECT_EQ(Play("open \"two.csv\"\nexpect cell B4 40\nexpect cell A1 \"First\"\nexpect cell C1 *\n"), "");
  EXPECT_EQ(Failure("open \"two.csv\"\nexpect cell B4 41\n"), "play.tlx:2: B4 is 40, expected 41");
}

TEST_F(ScriptPlay, MarksAnswerOnePromptAndNeverALaterOne) {
  // `mark` answers without the bar; a run without it starts with nothing marked.
  EXPECT_EQ(Play("open \"two.csv\"\nmark A1:A4\nrun M_t_Single\npress OK\nexpect m_single.name \"First\"\n"), "");
  EXPECT_EQ(Failure("open \"two.csv\"\nmark A1:A4\nrun M_t_Single\npress OK\nrun M_t_Single\npress OK\n"),
            "play.tlx:6: A selection (\"Select DATA (1 column)\") is asked, but the next step is: press OK");
}

TEST_F(ScriptPlay, BatchModeRunsOverAndOver) {
  ScriptPlayer player(ScriptPaths(Root));
  EXPECT_EQ(Play(player, Begin + "batch on\nselect \"First\"\npress OK\n"
                                 "expect m_single.sam_mean 2\n"  // looked at when the next prompt comes
                                 "select \"Second\"\npress OK\nbatch off\ncancel\n"),
            "");
  const auto& runs = player.PlayedSession().results.Runs();
  ASSERT_EQ(runs.size(), 3u);
  EXPECT_EQ(runs[0].status, RunStatus::Done);
  EXPECT_EQ(runs[1].status, RunStatus::Done);
  EXPECT_EQ(runs[2].status, RunStatus::Cancelled);
  EXPECT_EQ(runs[1].selection.front().title, "Second");
  EXPECT_EQ(player.PlayedDocuments().ReportCount(), 1);
}

TEST_F(ScriptPlay, ARecordingPlaysToTheSameReport) {
  const std::string canonical = "setting Analyses.DecimalPlaces 3\nopen \"" + (folder / "two.csv").string() + R"TLX("
run "Analysis/Parametric/Single Sample t"
  batch on
  select A1:A4
  set "Confidence (%)" 90
  set "Population mean" -1.5
  press OK
  select A1:A4 B1:B4
  expect message "Error: you must select 1 column but you selected 2."
  select B1:B4
  press "Cancel"
  batch off
  cancel
run "Analysis/Options"
  set "Use a default CI" off
  set "Decimal places for P values" 7
  press OK
new report
run "Analysis/Parametric/Single Sample t"
  select B1:B4
  press OK
  pick "Report 02"
)TLX";
  ScriptPlayer first(ScriptPaths(Root));
  first.Record();
  ASSERT_EQ(Play(first, canonical), "");
  // A press of the cancel button is a cancel.
  std::string expected = canonical;
  expected.replace(expected.find("press \"Cancel\""), 14, "cancel");
  EXPECT_EQ(first.Recording(), expected);

  ScriptPlayer second(ScriptPaths(Root));
  second.Record();
  ASSERT_EQ(Play(second, first.Recording()), "");
  EXPECT_EQ(second.Recording(), first.Recording());
  ASSERT_EQ(second.PlayedDocuments().ReportCount(), 2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(WriteRtf(second.PlayedDocuments().ReportAt(i).text), WriteRtf(first.PlayedDocuments().ReportAt(i).text));
  }
  // What is chosen by title is written down as the range that it was.
  ScriptPlayer byTitle(ScriptPaths(Root));
  byTitle.Record();
  ASSERT_EQ(Play(byTitle, Begin + "select \"Second\"\npress OK\n"), "");
  EXPECT_NE(byTitle.Recording().find("  select B1:B4\n"), std::string::npos);
}

// A form with every kind of action, as a script sees it.
TEST_F(ScriptPlay, ActsOnEveryKindOfControl) {
  OpenDocuments documents;
  IniSettings settings;
  ScriptHost host;
  Session session(host, documents, settings, ScriptPaths(Root));
  host.Serve(session);
  std::vector<std::string> heard;
  const auto run = [&](const std::string& text) {
    ScriptFile script;
    std::string error;
    EXPECT_TRUE(ReadScript(text, "x", script, error));
    host.Load(script);
    Form form("Some", "Some form");
    form.AddText("edpdf", "Value:", "0");
    form.AddCheck("c", "&Check", false);
    form.AddRadio("r1", "One", "Kind", true);
    form.AddRadio("r2", "Two", "Kind", false);
    form.AddRadio("s2", "Two", "Side", true);
    form.Add({.kind = ControlKind::Grid, .id = "Dat"});
    form.AddButton("Up", "&Up", ButtonRole::None);
    form.AddButton("Calc", "&Calculate", ButtonRole::Default);
    form.AddButton("Quit", "Quit", ButtonRole::Cancel);
    int ups = 0;
    form.onPress = [&](const Control& button) {
      if (button.id == "Up") ++ups;
      if (button.id == "Calc") form.Finish(true);
    };
    form.onClose = [&] { return ups > 0; };  // refuses to close before Up was pressed
    const bool accepted = host.RunForm(form);
    heard = {accepted ? "accepted" : "closed", form.ValueOf("edpdf"), form.IsChecked("c") ? "on" : "off",
             form.IsChecked("r2") ? "two" : "one", std::to_string(ups)};
    for (const auto& row : form.Find("Dat")->cells) {
      for (const auto& cell : row) heard.back() += " " + cell;
    }
    return host.Failure();
  };
  EXPECT_EQ(run("set \"value\" 1.96\nset \"Check\" on\nset \"Kind\"/\"Two\" on\nenter #Dat 10 20 / 30 40\n"
                "press \"Up\" 3\nfocus #edpdf\npress OK\n"),
            "");
  EXPECT_EQ(heard, (std::vector<std::string>{"accepted", "1.96", "on", "two", "3 10 20 30 40"}));
  EXPECT_EQ(run("press Up\ncancel\n"), "");
  EXPECT_EQ(heard.front(), "closed");
  EXPECT_EQ(run("cancel\n"), "x:1: the form \"Some form\" does not close");
  EXPECT_EQ(run("set #edpdf 1 2\n"), "x:1: one value is wanted");
}

TEST_F(ScriptPlay, AModelessFormIsUsedByItsTitle) {
  ScriptHost host;
  auto form = std::make_shared<Form>("TLCalc", "Tellurix Calculator");
  form->AddText("expression", "Expression", "");
  host.ShowForm(form);
  EXPECT_EQ(host.Modeless("tellurix calculator"), form.get());
  ScriptFile script;
  std::string error;
  ASSERT_TRUE(ReadScript("set \"Expression\" \"1 + 1\"", "x", script, error));
  EXPECT_TRUE(host.ActOn(*form, script.steps.front()));
  EXPECT_EQ(form->ValueOf("expression"), "1 + 1");
  form->Close();
  EXPECT_EQ(host.Modeless("Tellurix Calculator"), nullptr);
}

// Templates and files that are not as they should be.
TEST_F(ScriptPlay, DamagedTemplatesAreFound) {
  std::ifstream original(Root / "Template" / "m_single.rtf", std::ios::binary);
  const std::string good((std::istreambuf_iterator<char>(original)), {});
  fs::create_directory(folder / "Template");
  const auto playWith = [&](const std::string& body, const std::string& more = "") {
    Put("Template/m_single.rtf", body);
    ScriptPlayer player(ScriptPaths(folder));
    const std::string failure = Play(player, Begin + "select \"First\"\npress OK\n" + more);
    const bool hasText =
        player.PlayedDocuments().ReportCount() > 0 && ReportHasText(player.PlayedDocuments().ReportAt(0));
    return (hasText ? "report; " : "no report; ") + (failure.empty() ? "" : failure.substr(failure.find("play.tlx")));
  };
  const auto with = [&](std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  };
  EXPECT_EQ(playWith(good), "report; ");
  EXPECT_EQ(playWith(with(good, "/*sd/", "sd")), "report; ");  // a template may leave fields out
  EXPECT_EQ(playWith(with(with(good, "/*sd/", "/*size/"), "/*size/", "/*sd/")),
            "report; play.tlx:4: the field \"size\" went into the mark \"sd\" of m_single.rtf");
  EXPECT_EQ(playWith(with(good, "/*pwr/", "/*pwr/ /*extra/")),
            "report; play.tlx:4: the mark \"extra\" of m_single.rtf was not filled");
  const std::string refusal = "expect message \"Error: could not open template: m_single.rtf, please check\"\n";
  EXPECT_EQ(playWith(good.substr(0, good.size() - 1), refusal), "no report; ");
  EXPECT_EQ(playWith("", refusal), "no report; ");
  EXPECT_EQ(playWith("no rich text }", "expect message \"Error in calculation, report invalid.\"\n"), "no report; ");
  fs::remove(folder / "Template" / "m_single.rtf");
  ScriptPlayer player(ScriptPaths(folder));
  EXPECT_EQ(Play(player, Begin + "select \"First\"\npress OK\n" + refusal + "expect no report\n"), "");
}

TEST_F(ScriptPlay, FilesThatCannotBeReadOrWritten) {
  const std::string missing = (folder / "none.csv").string();
  EXPECT_NE(Play("open \"none.csv\"\n").find("NONE.CSV is not available"), std::string::npos);
  fs::create_directory(folder / "dir.csv");
  EXPECT_NE(Play("open \"dir.csv\"\n"), "");
  Put("bad.rtf", "no rich text");
  EXPECT_NE(Play("open \"bad.rtf\"\n").find("is not a valid (rich) text file"), std::string::npos);
  EXPECT_NE(Play("open \"two.xyz\"\n"), "");

  Report report;
  report.text = *ReadRtf("{\\rtf1 hello}");
  std::string problem;
  EXPECT_FALSE(SaveReport(report, folder / "nowhere" / "r.rtf", problem));
  EXPECT_NE(problem.find("Error saving"), std::string::npos);
  EXPECT_FALSE(SaveReport(report, folder / "r.doc", problem));
  // What was there is replaced whole, and nothing is left beside it.
  for (const char* name : {"r.rtf", "r.html", "r.txt", "r.rtf"})
    EXPECT_TRUE(SaveReport(report, folder / name, problem));
  std::string bytes;
  ASSERT_TRUE(ReadWholeFile(folder / "r.txt", bytes, problem));
  EXPECT_EQ(bytes, "hello\n");
  for (const auto& entry : fs::directory_iterator(folder)) {
    EXPECT_EQ(entry.path().string().find('~'), std::string::npos) << entry.path();
  }
}

TEST_F(ScriptPlay, ResultsAreWrittenUnrounded) {
  ScriptPlayer player(ScriptPaths(Root));
  ASSERT_TRUE(player.SetSetting("Analyses.DecimalPlaces=2"));
  EXPECT_FALSE(player.SetSetting("Analyses.Nothing=2"));
  EXPECT_FALSE(player.SetSetting("nonsense"));
  ASSERT_EQ(Play(player, "seed 7\n" + Begin +
                             "select B1:B2\npress OK\nexpect m_single.sam_mean \"10\"\n"
                             "run M_t_Single\nselect \"Second\"\npress OK\n"
                             "run M_t_Single\ncancel\n"),
            "");
  const auto json = nlohmann::json::parse(ResultsAsJson(player.PlayedSession()));
  EXPECT_EQ(json["seed"], 7);
  EXPECT_EQ(json["settings"]["Analyses"]["DecimalPlaces"], "2");
  ASSERT_EQ(json["runs"].size(), 3u);
  const auto& run = json["runs"][1];
  EXPECT_EQ(run["entry"], "M_t_Single");
  EXPECT_EQ(run["path"], "Analysis/Parametric/Single Sample t");
  EXPECT_EQ(run["status"], "done");
  EXPECT_EQ(run["selection"][0], (nlohmann::json{{"title", "Second"}, {"range", "B2:B4"}, {"n", 3}}));
  EXPECT_EQ(run["templates"][0]["file"], "m_single.rtf");
  const auto& mean = run["templates"][0]["fields"][1];
  EXPECT_EQ(mean["text"], "23.33");
  EXPECT_EQ(mean["value"], 70.0 / 3);
  EXPECT_TRUE(json["runs"][0]["templates"][0]["fields"][4]["value"].is_null());  // sd of one value
  EXPECT_EQ(json["runs"][2]["status"], "cancelled");
}

TEST_F(ScriptPlay, SettingsLiveInAFileThatIsReplacedWhole) {
  const fs::path file = folder / "Tellurix.ini";
  Put("Tellurix.ini", "[Analyses]\nDecimalPlaces = 9\nUnknown = kept\n[Other]\nx = 1\n");
  {
    IniSettings settings(file);
    EXPECT_EQ(settings.GetIniValue("analyses", "decimalplaces", "6"), "9");
    EXPECT_EQ(settings.GetIniValue("Analyses", "DecimalPlacesP", "4"), "4");
    settings.SetIniValue("Analyses", "UseGroupID", "-1");
  }
  IniSettings again(file);
  EXPECT_EQ(again.GetIniValue("Analyses", "UseGroupID", "0"), "-1");
  EXPECT_EQ(again.GetIniValue("Analyses", "Unknown", ""), "kept");
  EXPECT_EQ(again.GetIniValue("Other", "x", ""), "1");
  Put("Tellurix.ini", std::string("\0\xff[[[\n=\n", 9));
  EXPECT_EQ(IniSettings(file).GetIniValue("Analyses", "DecimalPlaces", "6"), "6");
}

}  // namespace
}  // namespace tellurix
