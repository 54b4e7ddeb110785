// Commands as a person meets them: scripts played one after the other on one session.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"
#include "workbook/Workbook.h"

namespace tellurix {

class Played : public testing::Test {
 protected:
  // "", or what went wrong.
  std::string Play(const std::string& text) {
    ScriptFile script;
    std::string error;
    if (!ReadScript(text, "play.tlx", script, error)) return error;
    return player.Play(script) ? "" : player.Failure();
  }
  Workbook& Book(int index = 0) { return player.PlayedDocuments().WorkbookAt(index); }
  const RunResult& Run() { return player.PlayedSession().results.Latest(); }

  // Of the first workbook, which is the only one: nothing written, nothing reserved, the pointer back.
  void ExpectNothingDone(int lastColumn, int lastRow) {
    EXPECT_EQ(player.PlayedDocuments().WorkbookCount(), 1);
    EXPECT_EQ(Book().LastCol(), lastColumn);
    EXPECT_EQ(Book().LastRow(), lastRow);
    EXPECT_FALSE(Run().delivered);
    EXPECT_FALSE(player.PlayedSession().host.IsBusy());
  }

  ScriptPlayer player{ScriptPaths(TELLURIX_SOURCE_DIR)};
};

}  // namespace tellurix
