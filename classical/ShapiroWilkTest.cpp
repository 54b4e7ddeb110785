#include "classical/ShapiroWilkTest.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"
#include "numeric/ShapiroWilk.h"
#include "numeric/Sorting.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Shapiro-Wilk test";

void RefuseSize(Session& session) {
  ShowMessage(session, "Sample size must be between 3 and 5000.", WarningIcon, Caption);
}

// An integer from 0 to `limit`, asked for until it is one; nothing when cancelled.
std::optional<std::int32_t> AskCensored(Session& session, std::int32_t limit) {
  const std::string prompt = fmt::format("Enter number of censored data (0 to {})", limit);
  for (;;) {
    const std::string typed = session.prompts.InputValue(prompt, Caption, "0");
    if (typed == CancelledInput) return std::nullopt;
    const auto number = ReadNumber(typed, session.options.regional);
    if (number && *number >= 0 && *number <= limit && *number == ToInteger(*number)) return ToInteger(*number);
    session.data.ShowInvalidData();
  }
}

}  // namespace

const char* ShapiroWilkVerdict(double p) {
  if (p == MissingValue) return "Error in calculation";
  if (p < 0.05) return "Sample unlikely to be from a normal distribution";
  if (p < 0.1) return "Test not quite significant but do NOT assume normality";
  return "No evidence of non-normality";
}

void ShapiroWilkTest(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericCompact, 1, 1, "Select UNCENSORED DATA")) return;
  std::vector<double> sorted = session.data.DataMatrix.front();
  sorted.resize(static_cast<std::size_t>(session.data.ColumnInfo.front().Count));
  const auto uncensored = static_cast<std::int32_t>(sorted.size());
  if (uncensored < ShapiroWilkFewest || uncensored > ShapiroWilkMost) return RefuseSize(session);
  const auto censored = AskCensored(session, MostCensored(uncensored));
  if (!censored) return;

  WriteReport(session, "shapwilk.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    DxSortArray(sorted);
    const ColumnStats stats = ComputeColumnStats(sorted);
    const ShapiroWilk test = TestShapiroWilk(sorted, *censored);
    merge.SetField("sample", session.data.ColumnInfo.front().Title);
    merge.SetField("uncens", format.FormatValue(uncensored, 0));
    merge.SetField("cens", format.FormatValue(*censored, 0));
    merge.SetField("mean", format.FormatStatistic(stats.mean));
    merge.SetField("sd", format.FormatStatistic(stats.sd));
    merge.SetField("sqm", format.FormatStatistic(stats.sumOfSquares));
    merge.SetField("w", format.FormatStatistic(test.w));
    merge.SetField("sig", format.FormatP(test.upperP));
    merge.SetField("result", ShapiroWilkVerdict(test.upperP));
  });
}

}  // namespace tellurix
