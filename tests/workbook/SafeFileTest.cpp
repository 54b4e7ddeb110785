#include "workbook/SafeFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class SafeFileTest : public ::testing::Test {
 protected:
  SafeFileTest() {
    std::string name = (fs::temp_directory_path() / "tellurix-safe-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    target_ = folder_ / "data.csv";
    Put(target_, "old");
  }
  ~SafeFileTest() override { fs::remove_all(folder_); }

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
    SafeFile file;
    return file.Open(target_) && file.Write(text) && file.Commit();
  }

  fs::path folder_;
  fs::path target_;
};

TEST_F(SafeFileTest, ReplacesOnlyWhenComplete) {
  {
    SafeFile file;
    ASSERT_TRUE(file.Open(target_));
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

TEST_F(SafeFileTest, RefusesWhatMayNotBeWritten) {
  fs::permissions(target_, fs::perms::owner_read);
  SafeFile file;
  EXPECT_FALSE(file.Open(target_));
  EXPECT_EQ(file.Problem(), "Permission denied");
  SafeFile nowhere;
  EXPECT_FALSE(nowhere.Open(folder_ / "none" / "x"));
  EXPECT_EQ(nowhere.Problem(), "No such file or directory");
  // A device on which nothing can be left.
  SafeFile full;
  EXPECT_FALSE(full.Open("/dev/full/x"));
  EXPECT_EQ(FilesThere(), 1u);
}

TEST_F(SafeFileTest, ClearsWhatKilledWritersLeft) {
  const fs::path left = folder_ / "data.csv~abc123", alive = folder_ / "data.csv~zzzzz9",
                 young = folder_ / "data.csv~young1", other = folder_ / "data.csv~backup-of-mine";
  for (const fs::path& file : {left, alive, young, other}) Put(file, "x");
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
  for (const fs::path& file : {left, alive, other}) fs::last_write_time(file, longAgo);
  const int writer = ::open(alive.c_str(), O_RDWR);
  ASSERT_EQ(::flock(writer, LOCK_EX), 0);
  ASSERT_TRUE(Save("new"));
  ::close(writer);
  EXPECT_FALSE(fs::exists(left));
  for (const fs::path& file : {alive, young, other}) EXPECT_TRUE(fs::exists(file)) << file;
}

}  // namespace
}  // namespace tellurix
