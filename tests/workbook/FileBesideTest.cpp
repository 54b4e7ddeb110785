#include "workbook/FileBeside.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class FileBesideTest : public ::testing::Test {
 protected:
  FileBesideTest() {
    std::string name = (fs::temp_directory_path() / "tellurix-beside-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    target_ = folder_ / "data.csv";
    Put(target_, "old");
  }
  ~FileBesideTest() override { fs::remove_all(folder_); }

  static void Put(const fs::path& file, const char* text) { std::ofstream(file) << text; }
  static std::string Contents(const fs::path& file) {
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
  }
  std::size_t FilesThere() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }
  bool Save(const char* text) {
    FileBeside file(target_);
    return file.IsMade() && file.Write(text) && file.PutInPlace();
  }

  fs::path folder_;
  fs::path target_;
};

TEST_F(FileBesideTest, ReplacesOnlyWhenComplete) {
  {
    FileBeside file(target_);
    ASSERT_TRUE(file.IsMade());
    ASSERT_TRUE(file.Write("new"));
    EXPECT_EQ(Contents(target_), "old");
  }
  EXPECT_EQ(Contents(target_), "old");
  EXPECT_EQ(FilesThere(), 1u);

  fs::permissions(target_, fs::perms::owner_read | fs::perms::owner_write);
  const fs::path link = folder_ / "link";
  fs::create_symlink(target_, link);
  target_ = link;
  ASSERT_TRUE(Save("new"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(Contents(folder_ / "data.csv"), "new");
  EXPECT_EQ(fs::status(link).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(FilesThere(), 2u);
}

TEST_F(FileBesideTest, RefusesWhatMayNotBeWritten) {
  fs::permissions(target_, fs::perms::owner_read);
  const FileBeside file(target_);
  EXPECT_FALSE(file.IsMade());
  EXPECT_EQ(file.Problem(), "The file cannot be written: Permission denied.");
  const FileBeside nowhere(folder_ / "none" / "x");
  EXPECT_FALSE(nowhere.IsMade());
  EXPECT_NE(nowhere.Problem().find("No such file or directory"), std::string::npos);
  EXPECT_EQ(FilesThere(), 1u);
}

TEST_F(FileBesideTest, ClearsWhatKilledWritersLeft) {
  const FileBeside alive(target_);
  const fs::path left = alive.Path().string() + "9", other = folder_ / "data.csv~";
  for (const fs::path& file : {left, other}) Put(file, "x");
  ASSERT_TRUE(Save("new"));
  EXPECT_FALSE(fs::exists(left));
  EXPECT_TRUE(fs::exists(other));
  EXPECT_TRUE(fs::exists(alive.Path()));
}

}  // namespace
}  // namespace tellurix
