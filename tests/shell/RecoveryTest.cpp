#include "shell/Recovery.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <set>

#include "report/RichText.h"
#include "tests/FakeHost.h"
#include "tests/TemporaryFolder.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

RichText Sentence(const std::string& text) { return *ReadRtf("{\\rtf1\\ansi " + text + "}"); }

class RecoveryTest : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  FakeHost host;
  OpenDocuments documents;
  FakeSettings settings;
  Session session{host, documents, settings, {}};

  static void ChangeSome(OpenDocuments& open) {
    Workbook& book = open.NewWorkbook();
    book.NumberRC(1, 1, 0.1);
    book.TextRC(2, 1, "text");
    open.NewWorkbook();  // unchanged
    Report& report = open.NewReport();
    report.Append(Sentence("A result."));
    report.document.path = "/somewhere/results.rtf";
    open.NewReport().document.changed = true;  // without text
  }

  std::set<std::string> Copies() const {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
      const auto name = entry.path().filename();
      if (entry.is_regular_file() && name != "lock") names.insert(name.string());
    }
    return names;
  }

  // Runs `action` as a program of its own that is killed at its end.
  static void RunAndKill(const std::function<void()>& action) {
    const pid_t child = ::fork();
    if (child == 0) {
      action();
      ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
  }
};

TEST_F(RecoveryTest, WhatAKilledProgramHadUnsavedComesBack) {
  RunAndKill([&] {
    OpenDocuments open;
    ChangeSome(open);
    Recovery recovery(folder.Path());
    std::string problem;
    EXPECT_TRUE(recovery.Keep(open, problem)) << problem;
    ::kill(::getpid(), SIGKILL);
  });
  Recovery own(folder.Path());
  host.replies = {Reply::Cancel};
  OfferUnsavedWork(session, documents, own, folder.Path());
  EXPECT_NE(host.LastMessage().find("\nBook 01\nresults.rtf\n"), std::string::npos) << host.LastMessage();
  EXPECT_EQ(host.messages.back().title, "Unsaved Work");
  ASSERT_EQ(documents.WorkbookCount() + documents.ReportCount(), 0);

  host.replies = {Reply::Yes};
  OfferUnsavedWork(session, documents, own, folder.Path());
  ASSERT_EQ(documents.WorkbookCount(), 1);
  Workbook& book = documents.WorkbookAt(0);
  EXPECT_EQ(book.NumberRC(1, 1), 0.1);
  EXPECT_EQ(book.TextRC(2, 1), "text");
  EXPECT_TRUE(book.document.changed);
  EXPECT_EQ(book.document.caption, "Recovered Book 01 (not saved)");
  book.NumberRC(5, 5, 1);
  book.Undo();
  EXPECT_TRUE(book.document.changed);  // undoing does not make it saved
  ASSERT_EQ(documents.ReportCount(), 1);
  EXPECT_EQ(WriteText(documents.ReportAt(0).text), "A result.\n");
  EXPECT_EQ(documents.ReportAt(0).document.path, "/somewhere/results.rtf");
  EXPECT_TRUE(documents.ReportAt(0).document.changed);

  // They are kept by the new program now, and by nobody once it has closed.
  EXPECT_TRUE(FindAbandonedWork(folder.Path()).empty());
  EXPECT_EQ(Copies(), (std::set<std::string>{"1.tlw", "1.json", "2.rtf", "2.json"}));
  own.Clear();
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST_F(RecoveryTest, RunningProgramsKeepTheirOwn) {
  ChangeSome(documents);
  std::string problem;
  Recovery first(folder.Path()), second(folder.Path());
  ASSERT_TRUE(first.Keep(documents, problem)) << problem;
  ASSERT_TRUE(second.Keep(documents, problem)) << problem;
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2);
  EXPECT_TRUE(FindAbandonedWork(folder.Path()).empty());
  first.Clear();
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
}

TEST_F(RecoveryTest, WritesWhatHasChangedSinceAndDropsWhatIsSaved) {
  ChangeSome(documents);
  std::string problem;
  Recovery recovery(folder.Path());
  ASSERT_TRUE(recovery.Keep(documents, problem));
  const auto written = [&](const char* name) {
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
      if (entry.path().filename() == name) return entry.last_write_time();
    }
    ADD_FAILURE() << name;
    return fs::file_time_type();
  };
  const auto book = written("1.tlw"), report = written("2.rtf");
  ASSERT_TRUE(recovery.Keep(documents, problem));
  EXPECT_EQ(written("1.tlw"), book);
  EXPECT_EQ(written("2.rtf"), report);
  documents.ReportAt(0).Append(Sentence("Another."));
  ASSERT_TRUE(recovery.KeepInBackground(documents, problem));
  ASSERT_TRUE(recovery.Keep(documents, problem)) << problem;  // waits for the child
  EXPECT_EQ(written("1.tlw"), book);
  EXPECT_GT(written("2.rtf"), report);
  documents.WorkbookAt(0).MarkSaved();
  recovery.Tidy(documents);
  EXPECT_EQ(Copies(), (std::set<std::string>{"2.rtf", "2.json"}));
}

TEST_F(RecoveryTest, ACopyThatIsBeingWrittenGoesWithItsDocument) {
  ChangeSome(documents);
  std::string problem;
  Recovery recovery(folder.Path());
  ASSERT_TRUE(recovery.KeepInBackground(documents, problem));
  documents.CloseWorkbook(documents.WorkbookAt(0));
  documents.CloseReport(documents.ReportAt(0));
  recovery.Tidy(documents);
  ASSERT_TRUE(recovery.Keep(documents, problem)) << problem;
  EXPECT_TRUE(Copies().empty());
}

TEST_F(RecoveryTest, WhatCannotBeReadStaysAndIsNamed) {
  RunAndKill([&] {
    OpenDocuments open;
    ChangeSome(open);
    Recovery recovery(folder.Path());
    std::string problem;
    recovery.Keep(open, problem);
    ::kill(::getpid(), SIGKILL);
  });
  fs::path damaged;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    if (entry.path().extension() == ".tlw") damaged = entry.path();
  }
  WriteTestFile(damaged, "no workbook");
  Recovery own(folder.Path());
  host.replies = {Reply::Yes};
  OfferUnsavedWork(session, documents, own, folder.Path());
  EXPECT_EQ(documents.WorkbookCount(), 0);
  EXPECT_EQ(documents.ReportCount(), 1);
  EXPECT_NE(host.LastMessage().find("It is kept as " + damaged.string()), std::string::npos) << host.LastMessage();
  EXPECT_EQ(ReadTestFile(damaged), "no workbook");
  EXPECT_TRUE(FindAbandonedWork(folder.Path()).empty());  // not asked again
  EXPECT_TRUE(fs::exists(damaged));
}

TEST_F(RecoveryTest, NoDeletesIt) {
  RunAndKill([&] {
    OpenDocuments open;
    ChangeSome(open);
    Recovery recovery(folder.Path());
    std::string problem;
    recovery.Keep(open, problem);
    ::kill(::getpid(), SIGKILL);
  });
  Recovery own(folder.Path());
  host.replies = {Reply::No};
  OfferUnsavedWork(session, documents, own, folder.Path());
  EXPECT_TRUE(fs::is_empty(folder.Path()));
  OfferUnsavedWork(session, documents, own, folder.Path());  // nothing to ask about
}

TEST_F(RecoveryTest, SaysWhenNothingCanBeKept) {
  WriteTestFile(folder / "file", "");
  ChangeSome(documents);
  Recovery recovery(folder / "file/inside");
  std::string problem;
  EXPECT_FALSE(recovery.Keep(documents, problem));
  EXPECT_FALSE(problem.empty());
  problem.clear();
  EXPECT_FALSE(recovery.KeepInBackground(documents, problem));
  EXPECT_FALSE(problem.empty());
}

}  // namespace
}  // namespace tellurix
