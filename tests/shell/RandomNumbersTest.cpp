// The commands of the Random Numbers menu as a person meets them: refusals, cancels, undo. Their figures are checked by
// tests/validation/random-numbers.tlx and tests/numeric.

#include "workbook/data/RandomNumbers.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/shell/Played.h"

namespace tellurix {
namespace {

class RandomNumbers : public Played {
 protected:
  // A sheet with two columns in use.
  void SetUp() override { ASSERT_EQ(Play("new workbook\ncells A1 \"x\" 1 / 2 3\nseed 7\n"), ""); }

  void ExpectSheetAsItWas() { ExpectNothingDone(2, 2); }
};

std::string Command(int index, const std::string& answers) {
  return fmt::format("run M_Random({})\n{}", index, answers);
}

TEST_F(RandomNumbers, CountsAreAskedForUntilTheyAreWithinTheLimits) {
  const std::string refused = "expect message \"Error: invalid data input.\"\n";
  std::string script = "run M_Random(0)\n";
  for (const char* columns : {"0", "51", "-1", "ten", "\"\""}) script += fmt::format("type {}\n", columns) + refused;
  script += "type 50\n";
  for (const char* rows : {"0", "65001", "1e99", "x"}) script += fmt::format("type {}\n", rows) + refused;
  script += "type 2\npick \"Book 01\"\n";
  ASSERT_EQ(Play(script), "");
  EXPECT_EQ(Book().LastCol(), 52);
  EXPECT_EQ(Book().LastRow(), 3);
}

TEST_F(RandomNumbers, ParametersOutOfRangeEndTheCommand) {
  struct Refusal {
    int command;
    const char* a;
    const char* b;  // empty: there is none
  };
  const Refusal refusals[] = {{1, "3", "3"},    {1, "x", "3"},    {2, "0", "0"},   {2, "0", "-1"},    {2, "abc", "1"},
                              {3, "0", "0"},    {3, "800", "1"},  {4, "0", "0.5"}, {4, "2.5", "0.5"}, {4, "3e9", "0.5"},
                              {4, "5", "1.01"}, {4, "5", "-0.1"}, {5, "0", ""},    {5, "1e16", ""},   {6, "0", "1"},
                              {6, "1", "0"},    {7, "0", ""},     {8, "-1", ""},   {9, "0", "1"},     {9, "1", "0"},
                              {10, "0", ""},    {11, "0", "0"},   {12, "0", ""},   {12, "1.1", ""},   {13, "0", "0.5"},
                              {13, "1", "0"},   {14, "0", "0"},   {15, "0", "1"},  {15, "1", "-1"},   {16, "0", "1"},
                              {16, "1", "\"\""}};
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(fmt::format("{}: {} {}", refusal.command, refusal.a, refusal.b));
    std::string answers = fmt::format("type 1\ntype 5\nset #Combo0 {}\n", refusal.a);
    if (*refusal.b) answers += fmt::format("set #Combo1 {}\n", refusal.b);
    EXPECT_EQ(
        Play(Command(refusal.command, answers + "press OK\nexpect message \"The parameters are not acceptable.\"\n")),
        "");
    ExpectSheetAsItWas();
  }
}

TEST_F(RandomNumbers, CancelAtAnyPromptLeavesTheSheet) {
  for (const char* before : {"", "type 1\n", "type 1\ntype 5\n", "type 1\ntype 5\npress OK\n"}) {
    EXPECT_EQ(Play(Command(2, std::string(before) + "cancel\n")), "");
    ExpectSheetAsItWas();
  }
}

// With the values that the prompts propose, every command works, as one step to undo.
TEST_F(RandomNumbers, IsOneUndoStep) {
  for (int command = 0; command < 17; ++command) {
    SCOPED_TRACE(command);
    ASSERT_EQ(Play(Command(command, command == 0 ? "type 2\ntype 30\npick \"Book 01\"\n"
                                                 : "type 2\ntype 30\npress OK\npick \"Book 01\"\n")),
              "");
    ASSERT_EQ(Run().columns.size(), 2u);
    EXPECT_NE(Run().columns[0].values, Run().columns[1].values);
    EXPECT_NE(Run().columns[0].title.find("(seed 7"), std::string::npos) << Run().columns[0].title;
    EXPECT_EQ(Book().LastCol(), 4);
    EXPECT_EQ(Book().LastRow(), 31);
    ASSERT_TRUE(Book().Undo());
    EXPECT_EQ(Book().LastCol(), 2);
    EXPECT_EQ(Book().LastRow(), 2);
  }
}

TEST_F(RandomNumbers, WithoutASeedTakesOneFromTheClock) {
  player.PlayedSession().AutomaticSeed = 0;
  ASSERT_EQ(Play(Command(0, "type 1\ntype 5\npick \"Book 01\"\n")), "");
  const std::string title = Run().columns.at(0).title;
  const auto digits = title.find("(seed ") + 6;
  const std::string seed = title.substr(digits, title.size() - digits - 1);
  const std::vector<double> drawn = Run().columns[0].values;
  ASSERT_EQ(Play("seed " + seed + "\n" + Command(0, "type 1\ntype 5\npick \"Book 01\"\n")), "");
  EXPECT_EQ(Run().columns.at(0).title, title);
  EXPECT_EQ(Run().columns[0].values, drawn);
}

TEST_F(RandomNumbers, ARecordingDrawsTheSameNumbers) {
  player.PlayedSession().AutomaticSeed = 0;
  player.Record();
  ASSERT_EQ(Play(Command(0, "type 1\ntype 5\npick \"Book 01\"\n")), "");
  const std::vector<double> drawn = Run().columns.at(0).values;
  ScriptPlayer again(ScriptPaths(TELLURIX_SOURCE_DIR));
  ScriptFile script;
  std::string error;
  const std::string recording = player.Recording();
  ASSERT_TRUE(ReadScript(recording, "recording", script, error)) << error;
  ASSERT_TRUE(again.Play(script)) << again.Failure() << "\n" << recording;
  EXPECT_EQ(again.PlayedSession().results.Runs().back().columns.at(0).values, drawn) << recording;
}

// Titles and parameters are read and written with the symbols of the user.
TEST_F(RandomNumbers, ParametersFollowTheDecimalSymbol) {
  player.PlayedSession().options.regional.decimalSymbol = ",";
  ASSERT_EQ(Play(Command(4, "type 1\ntype 5\nset #Combo0 12\nset #Combo1 \"0,25\"\npress OK\npick \"Book 01\"\n")), "");
  EXPECT_EQ(Run().columns.at(0).title, "Binomial (seed 7, n = 12, p = 0,25)");
}

}  // namespace
}  // namespace tellurix
