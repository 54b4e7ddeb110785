#include "workbook/data/RankScores.h"

#include <fmt/format.h>

#include "numeric/Scores.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr const char* ScoreNames[] = {"vdW", "Blom", "EO"};

}  // namespace

void RankColumns(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for RANKING", MaxSelectedColumns);
  if (!columns) return;
  if (!session.prompts.ShowOptions(
          "^None|^Sum t^3 - t / 12|^Sum t * (t-1) / 2|^Sum t * (t-1) * (2*t+5)|^Sum t * (t-1) * (t-2)",
          "Select tie correction")) {
    return;
  }
  const int method = ChosenOption(session, 5);  // as the kernel numbers them
  BusyPointer(session);
  std::vector<NumberColumn> results;
  for (const NumberColumn& column : *columns) {
    RankedColumn ranked = RankColumn(column.values, method);
    const std::string title =
        fmt::format("Rank: {} [tie correction = {}]", column.title, NumberText(session, ranked.tieTerm));
    results.push_back({title, column.firstRow, std::move(ranked.ranks)});
  }
  WriteNewColumns(session, std::move(results));
}

void NormalScores(Session& session) {
  const auto columns = SelectNumbers(session, "Select data for NORMAL SCORES", MaxSelectedColumns);
  if (!columns) return;
  if (!session.prompts.ShowOptions("^van der Waerden|^Blom|^expected normal order", "Select score method")) return;
  const int chosen = ChosenOption(session, 3);
  BusyPointer(session);
  std::vector<NumberColumn> results;
  {
    const Calculation calculation(session);
    for (const NumberColumn& column : *columns) {
      RankedColumn ranked = RankColumn(column.values);
      const auto goOn = [&](double share) { return ShowProgress(session, "Normal scores", share); };
      if (!ScoreRanks(ranked, static_cast<NormalScore>(chosen), goOn)) return;
      const std::string title = fmt::format("Nml Score ({}): {}", ScoreNames[chosen], column.title);
      results.push_back({title, column.firstRow, std::move(ranked.ranks)});
    }
  }
  WriteNewColumns(session, std::move(results));
}

}  // namespace tellurix
