#include "shell/LinkCommand.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace tellurix {
namespace {

namespace fs = std::filesystem;

TEST(LinkCommand, NamesAFileInManyWays) {
  std::string name = (fs::temp_directory_path() / "tellurix-test-XXXXXX").string();
  const fs::path folder = ::mkdtemp(name.data());
  for (const char* file : {"a.csv", "with blank.csv", "~excel.xls"}) std::ofstream(folder / file) << "1\n";
  const auto path = [&](const std::string& text) {
    const auto file = ReadLinkCommand(text, folder);
    return file ? fs::relative(*file, folder).string() : "none";
  };
  const std::string full = (folder / "a.csv").string();
  EXPECT_EQ(path("FileOpen " + full), "a.csv");
  EXPECT_EQ(path("[FileOpen \"" + full + "\""), "a.csv");
  EXPECT_EQ(path("  " + full + " "), "a.csv");
  EXPECT_EQ(path("\"" + (folder / "with blank.csv").string() + "\""), "with blank.csv");
  EXPECT_EQ(path("a.csv"), "a.csv");  // in the program's folder
  EXPECT_EQ(path("FileOpen a.csv"), "a.csv");
  EXPECT_EQ(path("/x a.csv"), "a.csv");  // the last word
  EXPECT_EQ(path("fileopen " + (folder / "~excel.xls").string()), "~excel.xls");
  EXPECT_EQ(path("FileOpen none.csv"), "none");
  EXPECT_EQ(path("FileOpen"), "none");
  EXPECT_EQ(path(""), "none");
  fs::remove_all(folder);
}

}  // namespace
}  // namespace tellurix
