#include "desktop/ReportDefaults.h"

#include <gtest/gtest.h>

#include "shell/ScriptPlayer.h"

namespace tellurix {
namespace {

// Plays answers to the dialog.
struct Answered {
  explicit Answered(const std::string& steps) {
    host.Serve(session);
    ScriptFile script;
    std::string error;
    EXPECT_TRUE(ReadScript(steps, "x", script, error));
    host.Load(script);
    accepted = ReportDefaults(session);
  }
  OpenDocuments documents;
  IniSettings settings;
  ScriptHost host;
  Session session{host, documents, settings, Paths{}};
  bool accepted = false;
};

TEST(ReportDefaults, KeepsLengthsInEitherUnit) {
  Answered cancelled("cancel\n");
  EXPECT_FALSE(cancelled.accepted);
  EXPECT_EQ(PageOf(cancelled.settings), PageSetup());  // 2 cm on every side

  Answered centimetres("set \"Left margin\" 3.25\nset \"Top margin\" 0\npress OK\n");
  EXPECT_TRUE(centimetres.accepted) << centimetres.host.Failure();
  EXPECT_EQ(PageOf(centimetres.settings).left, 3.25);
  EXPECT_EQ(PageOf(centimetres.settings).top, 0);
  EXPECT_EQ(PageOf(centimetres.settings).right, 2);

  // 2 cm stand as 0.79 inches once inches are chosen.
  Answered inches("set Inches on\nset \"Left margin\" 1\npress OK\n");
  EXPECT_TRUE(inches.accepted) << inches.host.Failure();
  EXPECT_EQ(PageOf(inches.settings).left, 2.54);
  EXPECT_NEAR(PageOf(inches.settings).right, 2, 0.01);
  EXPECT_EQ(inches.settings.GetIniValue("Report", "Units", ""), "1");

  // An empty report takes the indents, one with contents keeps its own.
  Answered indents("set \"Indent left\" 1\nset \"Hanging indent\" 0.5\nset \"Indent right\" 2\npress OK\n");
  EXPECT_TRUE(indents.accepted) << indents.host.Failure();
  Report report;
  ReportView view;
  view.SetReport(report);
  SetStartIndents(view, indents.settings);
  view.textCursor().insertText("typed");
  view.Commit();
  const ParagraphFormat& typed = std::get<Paragraph>(report.text.blocks.front()).format;
  EXPECT_EQ(typed.leftIndent, 850);  // 1.5 cm in twips
  EXPECT_EQ(typed.firstIndent, -283);
  EXPECT_EQ(typed.rightIndent, 1134);
  SetStartIndents(view, Answered("cancel\n").settings);
  view.Commit();
  EXPECT_EQ(std::get<Paragraph>(report.text.blocks.front()).format.rightIndent, 1134);

  // What is no margin is refused, and the form stays open.
  Answered refused(
      "set \"Left margin\" wide\npress OK\nexpect message \"Error: invalid data input.\"\n"
      "set \"Left margin\" 11\npress OK\nexpect message \"Error: invalid data input.\"\ncancel\n");
  EXPECT_FALSE(refused.accepted);
  EXPECT_EQ(refused.host.Failure(), "");
}

}  // namespace
}  // namespace tellurix
