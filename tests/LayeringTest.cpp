// Holds the folders to their order: a file includes only from its own folder and from those above it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// From the ground up. The commands stand side by side on one level and never include one another.
const std::vector<std::vector<std::string>> Levels{
    {"kernel"},
    {"numeric"},
    {"host"},
    {"report"},
    {"workbook"},
    {"workbook/files"},
    {"workbook/files/foreign"},
    {"graphics"},
    {"session"},
    {"workbook/data", "graphics/plots", "classical", "models", "epidemiology"},
    {"shell"},
    {"cli", "desktop"}};

// The longest folder of the list that the path stands in, with its level; -1 for none.
std::pair<int, std::string> LevelOf(const std::string& path) {
  std::pair<int, std::string> best{-1, ""};
  for (std::size_t level = 0; level < Levels.size(); ++level) {
    for (const auto& folder : Levels[level]) {
      if (path.starts_with(folder + "/") && folder.size() > best.second.size())
        best = {static_cast<int>(level), folder};
    }
  }
  return best;
}

TEST(Layering, IncludesPointOnlyToTheGroundBelow) {
  const fs::path root = TELLURIX_SOURCE_DIR;
  int looked = 0;
  for (const auto& levels : Levels) {
    for (const auto& folder : levels) {
      if (!fs::exists(root / folder)) continue;
      for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
        const auto extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") continue;
        const std::string file = fs::relative(entry.path(), root).generic_string();
        const auto [fileLevel, fileFolder] = LevelOf(file);
        std::ifstream in(entry.path());
        for (std::string line; std::getline(in, line);) {
          if (!line.starts_with("#include \"")) continue;
          const std::string included = line.substr(10, line.find('"', 10) - 10);
          if (included.ends_with(".moc")) continue;  // generated from the file itself
          const auto [level, ownFolder] = LevelOf(included);
          ++looked;
          EXPECT_GE(level, 0) << file << " includes " << included << ", which is not written from the root";
          const bool allowed = ownFolder == fileFolder || level < fileLevel;
          EXPECT_TRUE(allowed) << file << " must not include " << included;
        }
      }
    }
  }
  EXPECT_GT(looked, 0);
}

}  // namespace
