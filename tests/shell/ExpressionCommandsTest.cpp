// Apply Function, Extract, Fill Series and the calculator as a person meets them: refusals, cancels, undo. Their
// figures are checked by tests/validation.

#include <gtest/gtest.h>

#include "host/Form.h"
#include "report/RichText.h"
#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"
#include "workbook/Workbook.h"

namespace tellurix {
namespace {

class ExpressionCommands : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(Play("new workbook\ncells A1 \"a\" \"b\" / -3 4 / 2 \"*\" / 7 8\n"), ""); }

  std::string Play(const std::string& text) {
    ScriptFile script;
    std::string error;
    if (!ReadScript(text, "play.tlx", script, error)) return error;
    return player.Play(script) ? "" : player.Failure();
  }
  Workbook& Book() { return player.PlayedDocuments().WorkbookAt(0); }
  Regional& Symbols() { return player.PlayedSession().options.regional; }
  const RunResult& Run() { return player.PlayedSession().results.Latest(); }

  void ExpectSheetAsItWas() {
    EXPECT_EQ(Book().LastCol(), 2);
    EXPECT_EQ(Book().LastRow(), 4);
    EXPECT_FALSE(Run().delivered);
    EXPECT_FALSE(player.PlayedSession().host.IsBusy());
  }

  ScriptPlayer player{ScriptPaths(TELLURIX_SOURCE_DIR)};
};

TEST_F(ExpressionCommands, CancelAtAnyPromptLeavesTheSheet) {
  const char* scripts[] = {"run M_Datax(0)\ncancel\n",
                           "run M_Datax(0)\nselect \"a\"\ncancel\n",
                           "run M_Datax(0)\nselect \"a\"\ntype V1\ncancel\n",
                           "run M_Datax(0)\nselect \"a\"\ntype V1\ntype x\ncancel\n",
                           "run M_Grouping(1)\nselect \"a\"\ncancel\n",
                           "run M_Grouping(1)\nselect \"a\"\nset where v1>0\npress OK\ncancel\n",
                           "run M_Datax(4)\ncancel\n",
                           "run M_Datax(4)\ntype x+1\ncancel\n",
                           "run M_Datax(4)\ntype x+1\npress OK\ncancel\n"};
  for (const char* script : scripts) {
    EXPECT_EQ(Play(script), "") << script;
    ExpectSheetAsItWas();
  }
}

TEST_F(ExpressionCommands, EachIsOneUndoStep) {
  const char* scripts[] = {"run M_Datax(0)\nselect \"a\"\ntype V1+1\ntype x\npick \"Book 01\"\n",
                           "run M_Grouping(1)\nselect \"a\"\nset where v1>0\npress OK\npick \"Book 01\"\n"
                           "expect message \"2 data points were extracted into the new variable: a where v1>0\"\n",
                           "run M_Datax(4)\ntype x+1\npress OK\npick \"Book 01\"\n"};
  for (const char* script : scripts) {
    ASSERT_EQ(Play(script), "") << script;
    EXPECT_EQ(Book().LastCol(), 3);
    ASSERT_TRUE(Book().Undo());
    EXPECT_EQ(Book().LastCol(), 2);
    EXPECT_EQ(Book().LastRow(), 4);
  }
}

TEST_F(ExpressionCommands, DigitGroupingSymbolsAreRefused) {
  Symbols() = {.decimalSymbol = ",", .groupingSymbol = ".", .dateForm = "dd.mm.yyyy"};
  ASSERT_EQ(Play("run M_Datax(0)\nselect \"a\" \"b\"\ntype \"V1*1.000\"\n"
                 "expect message \"You must not use digit grouping symbols in the expression\"\n"
                 "type \"V1*1000,5+V2\"\ntype product\npick \"Book 01\"\n"),
            "");
  EXPECT_EQ(Run().columns.at(0).values, (std::vector<double>{-2997.5, 3e300, 7011.5}));
  ASSERT_EQ(Play("run M_Grouping(1)\nselect \"a\"\nset where \"v1<1.000\"\npress OK\n"
                 "expect message \"Digit grouping symbol removed from your expression, try again.\"\n"
                 "press OK\npick \"Book 01\"\nexpect message \"3 data points\"\n"),
            "");
  EXPECT_EQ(Run().columns.at(0).title, "a where v1<1000");
  ASSERT_EQ(Play("run M_Datax(4)\ntype \"x=x+1.000\"\n"
                 "expect message \"You must not use digit grouping symbols in the formula\"\n"
                 "type \"x=x+0,5\"\nset #Combo0 \"1,5\"\nset #Combo1 3\npress OK\npick \"Book 01\"\n"),
            "");
  EXPECT_EQ(Run().columns.at(0).values, (std::vector<double>{1.5, 2, 2.5}));
  ASSERT_EQ(Play("run M_Apps(0)\nuse \"Tellurix Calculator\"\nset Expression \"1.000+0,5\"\npress Calculate\n"
                 "expect message \" Digit grouping symbols removed, try again\"\npress Calculate\n"
                 "expect TLCalc.result 1000.5\npress \",\"\npress 5\npress Calculate\nexpect TLCalc.result[2] 0.5\n"),
            "");
}

TEST_F(ExpressionCommands, OnlyTheColumnsThatAreNamedCanBeMissing) {
  ASSERT_EQ(Play("run M_Datax(0)\nselect \"a\" \"b\"\ntype V1*2\ntype x\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Run().columns.at(0).values, (std::vector<double>{-6, 4, 14}));
  // Nothing evaluated: LR stays.
  ASSERT_EQ(Play("run M_Datax(0)\nselect \"a\" \"b\"\ntype LR+V2\ntype x\npick \"Book 01\"\n"), "");
  EXPECT_EQ(Run().columns.at(0).values, (std::vector<double>{18, 3e300, 26}));
}

TEST_F(ExpressionCommands, TheCalculatorAsksWhatToDoWithSavedLines) {
  const std::string save =
      "run M_Apps(0)\nuse \"Tellurix Calculator\"\nset Expression 2+3\npress Calculate\npress Save\n";
  Host& host = player.PlayedSession().host;
  host.SetClipboard("before");
  ASSERT_EQ(Play(save + "press Close\nanswer Cancel\n"), "");
  EXPECT_TRUE(player.PlayedSession().calculator.lock()->IsOpen());
  ASSERT_EQ(Play("use \"Tellurix Calculator\"\npress Close\nanswer No\n"), "");
  EXPECT_EQ(host.Clipboard(), "before");
  ASSERT_EQ(Play(save + "set Expression 1/0\npress Calculate\npress Save\npress Close\nanswer Yes\n"), "");
  EXPECT_EQ(host.Clipboard(), "2+3 = 5\n1/0 = error\n");
  ASSERT_EQ(Play("new report\n" + save + "press Close\nanswer Yes\nexpect text \"2+3 = 5\"\n"), "");
  // Nothing saved, nothing asked.
  ASSERT_EQ(Play("run M_Apps(0)\nuse \"Tellurix Calculator\"\nset Expression 1\npress Calculate\npress Close\n"), "");
}

}  // namespace
}  // namespace tellurix
