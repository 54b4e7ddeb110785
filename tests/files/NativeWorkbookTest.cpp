// The system's own workbook file: what it keeps, what it refuses, and what it survives.

#include "workbook/files/NativeWorkbook.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>

#include "tests/files/Samples.h"
#include "workbook/FileBeside.h"
#include "workbook/files/Sqlite.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

void FillWith(Workbook& book, double value) {
  for (int row = 1; row <= 500; ++row) book.NumberRC(row, 1, value + row);
}

// Which FillWith a file holds; NaN for a file that cannot be read.
double ValueIn(const fs::path& path, std::string& problem) {
  Workbook book;
  if (!ReadNativeWorkbook(path, book, problem)) return std::nan("");
  for (int row = 2; row <= 500; ++row) {
    if (book.NumberRC(row, 1) != book.NumberRC(1, 1) + row - 1) return std::nan("");
  }
  return book.NumberRC(1, 1) - 1;
}

TEST(NativeWorkbook, KeepsEverything) {
  const TestFolder folder;
  const fs::path path = folder / "a #1 50%?.tlw";
  Workbook written;
  FillSample(written);
  std::string problem;
  ASSERT_TRUE(WriteNativeWorkbook(written, path, problem)) << problem;
  EXPECT_EQ(folder.FileCount(), 1u);

  Workbook read;
  FillWith(read, 7);
  read.AddSheet("goes");
  ASSERT_TRUE(ReadNativeWorkbook(path, read, problem)) << problem;
  EXPECT_EQ(Dump(read), Dump(written));
  EXPECT_FALSE(read.document.changed);
  EXPECT_FALSE(read.CanUndo());

  // Formulas are alive, across sheets too.
  read.Sheet(1);
  read.LockSheet(false);
  read.NumberRC(1, 3, 1000);
  read.Sheet(2);
  EXPECT_EQ(read.NumberRC(1, 1), 1001);
}

TEST(NativeWorkbook, RefusesWhatIsNoneOfOurs) {
  const TestFolder folder;
  Workbook book;
  FillWith(book, 1);
  const std::string before = Dump(book);
  std::string problem;
  const auto refused = [&](const fs::path& path) {
    problem.clear();
    const bool good = ReadNativeWorkbook(path, book, problem);
    EXPECT_EQ(Dump(book), before);
    return good ? std::string("read") : problem;
  };
  EXPECT_EQ(refused(folder / "none.tlw"), "No such file or directory");
  PutFile(folder / "text.tlw", "a,b\n1,2\n");
  EXPECT_EQ(refused(folder / "text.tlw"), "The file is not a Tellurix workbook.");
  PutFile(folder / "empty.tlw", "");
  EXPECT_EQ(refused(folder / "empty.tlw"), "The file is not a Tellurix workbook.");
  {
    SqliteDatabase foreign;
    ASSERT_TRUE(foreign.OpenNew(folder / "foreign.tlw") && foreign.Run("CREATE TABLE sheets(id)") && foreign.Close());
  }
  EXPECT_EQ(refused(folder / "foreign.tlw"), "The file is not a Tellurix workbook.");
  ASSERT_TRUE(WriteNativeWorkbook(book, folder / "newer.tlw", problem));
  {
    SqliteDatabase newer;
    ASSERT_TRUE(newer.OpenNew(folder / "newer.tlw") && newer.Run("PRAGMA user_version=2") && newer.Close());
  }
  EXPECT_EQ(refused(folder / "newer.tlw"), "The file was saved by a newer version of Tellurix.");
  ASSERT_TRUE(WriteNativeWorkbook(book, folder / "less.tlw", problem));
  {
    SqliteDatabase less;
    ASSERT_TRUE(less.OpenNew(folder / "less.tlw") && less.Run("DELETE FROM sheets") && less.Close());
  }
  EXPECT_EQ(refused(folder / "less.tlw"), "The file is damaged.");
}

// Saves over one file until it is killed.
[[noreturn]] void SaveForEver(const fs::path& path) {
  std::string problem;
  Workbook books[2];
  FillWith(books[0], 1000);
  FillWith(books[1], 2000);
  for (int i = 0;; ++i) WriteNativeWorkbook(books[i % 2], path, problem);
}

TEST(NativeWorkbook, SurvivesBeingKilledAtAnyMoment) {
  const TestFolder folder;
  const fs::path path = folder / "book.tlw";
  Workbook old;
  FillWith(old, 0);
  std::string problem;
  std::mt19937 random(1);
  std::uniform_int_distribution<int> microseconds(0, 8000);
  int before = 0, after = 0;
  for (int round = 0; round < 200; ++round) {
    ASSERT_TRUE(WriteNativeWorkbook(old, path, problem)) << problem;
    const pid_t child = fork();
    if (child == 0) SaveForEver(path);
    usleep(static_cast<useconds_t>(microseconds(random)));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const double value = ValueIn(path, problem);
    ASSERT_TRUE(value == 0 || value == 1000 || value == 2000) << "round " << round << ": " << value << " " << problem;
    ++(value == 0 ? before : after);
    ASSERT_EQ(folder.FileCount(), 1u) << "what the killed one left is gone after opening";
  }
  EXPECT_GT(before, 0);
  EXPECT_GT(after, 0);
}

TEST(NativeWorkbook, TwoProcessesSaveTheSameFile) {
  const TestFolder folder;
  const fs::path path = folder / "book.tlw";
  pid_t children[2];
  for (int i = 0; i < 2; ++i) {
    children[i] = fork();
    if (children[i] != 0) continue;
    Workbook book;
    FillWith(book, 1000 * (i + 1));
    std::string problem;
    for (int n = 0; n < 60; ++n) {
      if (!WriteNativeWorkbook(book, path, problem)) _exit(1);
    }
    _exit(0);
  }
  std::string problem;
  int read = 0;
  for (int done = 0; done < 2;) {
    if (fs::exists(path)) {
      const double value = ValueIn(path, problem);
      EXPECT_TRUE(value == 1000 || value == 2000) << problem;
      ++read;
    }
    int status = 0;
    if (waitpid(-1, &status, WNOHANG) > 0) {
      EXPECT_EQ(status, 0);
      ++done;
    }
  }
  EXPECT_GT(read, 0);
  EXPECT_EQ(folder.FileCount(), 1u);
}

// In a process of its own, with its files cut off at a length.
int SaveWithLimit(const fs::path& path, rlim_t bytes) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
    Workbook book;
    FillSample(book);
    std::string problem;
    const bool good = WriteNativeWorkbook(book, path, problem);
    _exit(good ? 0 : problem == "The disk refused to read or write." ? 1 : 2);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(NativeWorkbook, AFullDiskLeavesTheOldFile) {
  const TestFolder folder;
  const fs::path path = folder / "book.tlw";
  Workbook old;
  FillWith(old, 5);
  std::string problem;
  ASSERT_TRUE(WriteNativeWorkbook(old, path, problem));
  for (const rlim_t bytes : {rlim_t{0}, rlim_t{1000}, rlim_t{4096}, rlim_t{9000}, rlim_t{20000}}) {
    EXPECT_EQ(SaveWithLimit(path, bytes), 1) << bytes;
    EXPECT_EQ(ValueIn(path, problem), 5) << problem;
    EXPECT_EQ(folder.FileCount(), 1u);
  }
  EXPECT_EQ(SaveWithLimit(path, rlim_t{1} << 30), 0);
}

TEST(NativeWorkbook, ASmallDiskIsFull) {
  const TestFolder folder;
  const pid_t child = fork();
  if (child == 0) {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) _exit(77);
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) _exit(77);
    if (mount("none", folder.Path().c_str(), "tmpfs", 0, "size=64k") != 0) _exit(77);
    Workbook small, large;
    FillWith(small, 5);
    FillSample(large, 20000);
    std::string problem;
    if (!WriteNativeWorkbook(small, folder / "book.tlw", problem)) _exit(1);
    if (WriteNativeWorkbook(large, folder / "book.tlw", problem) || problem != "The disk is full.") _exit(2);
    if (folder.FileCount() != 1 || ValueIn(folder / "book.tlw", problem) != 5) _exit(3);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "no leave to mount";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(NativeWorkbook, FollowsLinksAndKeepsPermissions) {
  const TestFolder folder;
  fs::create_directory(folder / "real");
  Workbook book;
  FillWith(book, 3);
  std::string problem;
  ASSERT_TRUE(WriteNativeWorkbook(book, folder / "real/book.tlw", problem));
  ASSERT_EQ(chmod((folder / "real/book.tlw").c_str(), 0640), 0);
  fs::create_symlink("real/book.tlw", folder / "link.tlw");
  FillWith(book, 4);
  ASSERT_TRUE(WriteNativeWorkbook(book, folder / "link.tlw", problem)) << problem;
  EXPECT_TRUE(fs::is_symlink(folder / "link.tlw"));
  EXPECT_EQ(ValueIn(folder / "real/book.tlw", problem), 4);
  EXPECT_EQ(fs::status(folder / "real/book.tlw").permissions(), fs::perms{0640});
}

TEST(NativeWorkbook, FoldersThatCannotBeWritten) {
  const TestFolder folder;
  Workbook book;
  std::string problem;
  EXPECT_FALSE(WriteNativeWorkbook(book, folder / "gone/book.tlw", problem));
  EXPECT_EQ(problem, "A new file cannot be made in the folder: No such file or directory.");
  EXPECT_FALSE(WriteNativeWorkbook(book, "/proc/book.tlw", problem));
  EXPECT_NE(problem, "");
  fs::create_directory(folder / "folder.tlw");
  EXPECT_FALSE(WriteNativeWorkbook(book, folder / "folder.tlw", problem));
  EXPECT_EQ(problem, "The file could not be put in its place: Is a directory.");
  EXPECT_EQ(folder.FileCount(), 1u);
}

// A folder without leave to write; as root in a process that gives its rights up.
TEST(NativeWorkbook, AReadOnlyFolderIsRefusedWithWords) {
  const TestFolder folder;
  Workbook book;
  std::string problem;
  ASSERT_TRUE(WriteNativeWorkbook(book, folder / "book.tlw", problem));
  ASSERT_EQ(chmod((folder / "book.tlw").c_str(), 0644), 0);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
  const pid_t child = fork();
  if (child == 0) {
    constexpr uid_t Nobody = 65534;
    if (geteuid() == 0 && setuid(Nobody) != 0) _exit(3);
    const bool old = !WriteNativeWorkbook(book, folder / "book.tlw", problem) &&
                     problem.find("Permission denied") != std::string::npos;
    const bool fresh = !WriteNativeWorkbook(book, folder / "new.tlw", problem) &&
                       problem.find("Permission denied") != std::string::npos;
    _exit(old && fresh ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  chmod(folder.Path().c_str(), 0755);
}

// Every change to a file is found or harmless; none crashes, hangs or is half taken over.
TEST(NativeWorkbook, DamagedFilesAreRefusedQuickly) {
  const char* more = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = more ? std::atoi(more) : 500;
  const TestFolder folder;
  Workbook written;
  FillSample(written, 60);
  std::string problem;
  ASSERT_TRUE(WriteNativeWorkbook(written, folder / "good.tlw", problem));
  const std::string good = FileBytes(folder / "good.tlw");
  Workbook book;
  FillWith(book, 9);
  const std::string before = Dump(book);
  std::mt19937 random(77);
  int refused = 0;
  for (int round = 0; round < rounds; ++round) {
    std::string bytes = good;
    if (round % 5 == 0) {
      bytes.resize(random() % bytes.size());
    } else {
      for (unsigned flips = 1 + random() % 8; flips > 0; --flips) {
        bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
      }
    }
    PutFile(folder / "bad.tlw", bytes);
    const auto start = std::chrono::steady_clock::now();
    Workbook target;
    FillWith(target, 9);
    const bool isRead = ReadNativeWorkbook(folder / "bad.tlw", target, problem);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << "round " << round;
    if (isRead) {
      ASSERT_EQ(Dump(target), Dump(written)) << "round " << round;
      continue;
    }
    ++refused;
    ASSERT_EQ(Dump(target), before) << "round " << round;
    ASSERT_NE(problem, "");
  }
  EXPECT_GT(refused, rounds / 8);
}

}  // namespace
}  // namespace tellurix
