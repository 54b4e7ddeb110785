// Reports for the tests: a result as the single sample t test writes it, beside the random ones.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "report/Report.h"
#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"
#include "tests/RandomRichText.h"

namespace tellurix {

inline const RichText& SampleResult() {
  static const RichText result = [] {
    const std::filesystem::path root = TELLURIX_SOURCE_DIR;
    ScriptPlayer player{ScriptPaths(root)};
    EXPECT_TRUE(player.PlayFile(root / "Data/examples/first-analysis.tlx")) << player.Failure();
    return player.PlayedDocuments().ReportAt(0).text;
  }();
  return result;
}

}  // namespace tellurix
