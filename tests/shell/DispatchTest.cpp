#include "shell/Dispatch.h"

#include <gtest/gtest.h>

#include <new>

#include "session/Skeleton.h"
#include "tests/FakeHost.h"

namespace tellurix {
namespace {

int runs = 0;

// Selects groups and says so.
void Select(Session& session) {
  ++runs;
  BusyPointer(session);
  if (!session.data.SelectGroups(0, 1, 5, "")) return;
  BeginCalculation(session);
  session.results.Current().delivered = true;
}

void Throw(Session& session) {
  BeginCalculation(session);
  throw std::runtime_error("the matrix is singular");
}

void RunOutOfMemory(Session&) { throw std::bad_alloc(); }

void RunAnother(Session& session) {
  ++runs;
  if (runs > 1) return;
  MenuEntry other;
  other.helpContext = 2;
  other.command = Select;
  EXPECT_EQ(RunCommand(session, other), RunStatus::Cancelled);
  EXPECT_EQ(session.HelpContext, 1);
}

class DispatchTest : public ::testing::Test {
 protected:
  DispatchTest() { Fill(grid, 1, 1, {{"Data", "Group"}, {"1", "one"}, {"2", "one"}}); }

  RunStatus Run(Command command) {
    runs = 0;
    MenuEntry entry;
    entry.name = "M_Test";
    entry.path = "Test/Entry";
    entry.helpContext = 1;
    entry.command = command;
    return RunCommand(session, entry);
  }
  void Bar(const char* range, bool batch) {
    host.selections.push_back([this, range, batch] {
      EXPECT_FALSE(session.data.HasRangeSelected());  // nothing marked from the run before
      Mark(grid, {range});
      return SelectionReply{SelectionReply::Answer::Ok, batch};
    });
  }
  void BarReply(SelectionReply::Answer answer, bool batch) {
    host.selections.push_back([=] { return SelectionReply{answer, batch}; });
  }

  FakeHost host;
  FakeDocuments documents;
  Workbook& grid = documents.NewWorkbook();
  FakeSettings settings;
  Session session{host, documents, settings, {}};
};

TEST_F(DispatchTest, RunsOnceAndCleansUp) {
  Bar("A1:A3", false);
  EXPECT_EQ(Run(Select), RunStatus::Done);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(session.HelpContext, 1);
  EXPECT_FALSE(session.CalculationRunning || session.CommandRunning || host.busy);
  EXPECT_EQ(session.results.Runs().back().entry + session.results.Runs().back().path, "M_TestTest/Entry");
  Mark(grid, {"A1"});
  BarReply(SelectionReply::Answer::Cancel, false);
  EXPECT_EQ(Run(Select), RunStatus::Cancelled);
  EXPECT_FALSE(host.busy);
  EXPECT_EQ(Run(nullptr), RunStatus::Cancelled);
}

TEST_F(DispatchTest, BatchGoesRoundUntilTheBoxIsUnticked) {
  Bar("A1:A3", true);
  Bar("A2:A3", true);
  BarReply(SelectionReply::Answer::Cancel, true);  // ends that run only
  Bar("A1:A3", false);
  EXPECT_EQ(Run(Select), RunStatus::Done);
  EXPECT_EQ(runs, 4);
  EXPECT_EQ(session.results.Runs().size(), 4u);
  EXPECT_EQ(session.results.Runs()[2].status, RunStatus::Cancelled);
  EXPECT_TRUE(host.AllUsed());
}

TEST_F(DispatchTest, TheOtherRadioBeginsTheSameRunAgain) {
  BarReply(SelectionReply::Answer::Restart, false);  // to identifiers
  Bar("B1:B3", false);
  host.selections.push_back([&] {
    session.data.SelectionRestart = true;  // and out again at the data
    session.options.UseGroupID = false;
    grid.SetSelection({1, 1, 1, 1});
    return SelectionReply{SelectionReply::Answer::Cancel, false};
  });
  Bar("A1:A3", false);
  EXPECT_EQ(Run(Select), RunStatus::Done);
  EXPECT_EQ(runs, 3);
  EXPECT_EQ(settings.values["Analyses.UseGroupID"], "-1");  // the choice is kept
  ASSERT_EQ(session.results.Runs().size(), 1u);
  ASSERT_EQ(session.results.Current().selection.size(), 1u);  // what was selected before does not count
  EXPECT_EQ(session.results.Current().selection[0].title, "Data");
  EXPECT_EQ(host.requests[1].prompt, "Select GROUP IDENTIFIERS (Min 1: Max 20)");
}

TEST_F(DispatchTest, AStrayExceptionBecomesAMessage) {
  EXPECT_EQ(Run(Throw), RunStatus::Failed);
  EXPECT_EQ(host.LastMessage(), "Error: the matrix is singular");
  EXPECT_FALSE(session.CalculationRunning || session.CommandRunning);
  EXPECT_EQ(Run(RunOutOfMemory), RunStatus::Failed);
  EXPECT_EQ(host.LastMessage(), "Error: not enough memory");
}

TEST_F(DispatchTest, NoSecondCommandStartsWhileOneRuns) {
  Run(RunAnother);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(session.results.Runs().size(), 1u);
}

}  // namespace
}  // namespace tellurix
