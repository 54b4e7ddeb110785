#include "classical/ReferenceRange.h"

#include <cmath>
#include <string>
#include <vector>

#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/QuantileInterval.h"
#include "numeric/Sorting.h"
#include "numeric/Summary.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

// With fewer, the error of the spread cannot be told.
constexpr std::int32_t FewestData = 3;

struct RangeOptions {
  double reference;   // share of the population between the limits
  double confidence;  // of the interval of each limit
  bool conservative;
};

bool AskOptions(Session& session, RangeOptions& options) {
  Prompts& prompts = session.prompts;
  prompts.FillCombo(0, "Reference interval (%)", 90, 99, 1, "0", 5);
  prompts.FillCombo(1, "Confidence interval (%)", 90, 99, 1, "0", 5);
  if (!prompts.ShowOptions("Conservative CI", "Reference Range/Interval")) return false;
  options = {prompts.ComboReal(0) / 100, prompts.ComboReal(1) / 100, prompts.OptionOn(0)};
  return true;
}

void SetInterval(TemplateMerge& merge, const Formatter& format, double share, double middle, double halfWidth) {
  merge.SetField("pc", format.FormatValue(share * 100, 2));
  merge.SetField("from", format.FormatStatistic(middle - halfWidth));
  merge.SetField("to", format.FormatStatistic(middle + halfWidth));
}

// Mean -+ z s, and each limit with the interval of its standard error, the root of s^2/n + z^2 s^2/(2(n - 1)).
// M. Bland (2000) An Introduction to Medical Statistics, 3rd edition, section 15.5.
void SetNormalLimits(TemplateMerge& merge, const Formatter& format, const ColumnStats& stats,
                     const RangeOptions& options) {
  const double z = NormalCriticalValue(options.reference);
  const double n = stats.n;
  const double standardError = stats.sd * std::sqrt(1 / n + z * z / (2 * (n - 1)));
  const double halfWidth = NormalCriticalValue(options.confidence) * standardError;
  SetInterval(merge, format, options.reference, stats.mean, z * stats.sd);
  SetInterval(merge, format, options.confidence, stats.mean - z * stats.sd, halfWidth);
  SetInterval(merge, format, options.confidence, stats.mean + z * stats.sd, halfWidth);
}

void SetQuantile(TemplateMerge& merge, const Formatter& format, const std::vector<double>& sorted, double p,
                 double quantile, const RangeOptions& options) {
  const auto n = static_cast<std::int32_t>(sorted.size());
  const QuantileRanks ranks = QuantileInterval(n, p, options.confidence, options.conservative);
  const auto limit = [&](std::int32_t rank, bool isCapped) {
    Value value = format.FormatStatistic(ranks.isPossible ? sorted[static_cast<std::size_t>(rank) - 1] : MissingValue);
    if (ranks.isPossible && isCapped) value.text = "* " + value.text;
    return value;
  };
  Value upper = limit(ranks.upper, ranks.upperIsCapped);
  if (ranks.isPossible && (ranks.lowerIsCapped || ranks.upperIsCapped)) {
    upper.text += "  (* limit capped at min/max)";
  }
  Value coverage = format.FormatStatistic(ranks.coverage * 100);
  coverage.text = "Exact coverage = " + coverage.text + "%";
  merge.SetField("qx", format.FormatStatistic(p));
  merge.SetField("qxv", format.FormatStatistic(quantile));
  merge.SetField("pc", format.FormatValue(options.confidence * 100, 2));
  merge.SetField("type", options.conservative ? "(conservative)" : "(non-conservative)");
  merge.SetField("from", limit(ranks.lower, ranks.lowerIsCapped));
  merge.SetField("to", upper);
  merge.SetField("co", ranks.isPossible ? coverage : Value("Coverage not possible.", MissingValue));
}

}  // namespace

void ReferenceRange(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericCompact, 1, 1, "Select DATA")) return;
  std::vector<double> sorted = session.data.DataMatrix.front();
  sorted.resize(static_cast<std::size_t>(session.data.ColumnInfo.front().Count));
  DxSortArray(sorted);
  const ColumnStats stats = ComputeColumnStats(sorted);
  if (stats.n < FewestData) {
    ShowMessage(session, "Too few data for this method.", WarningIcon, "Reference Range/Interval");
    return;
  }
  RangeOptions options;
  if (!AskOptions(session, options)) return;

  WriteReport(session, "refrange.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    merge.SetField("name", session.data.ColumnInfo.front().Title);
    merge.SetField("mean", format.FormatStatistic(stats.mean));
    merge.SetField("size", format.FormatValue(stats.n, 0));
    merge.SetField("sd", format.FormatStatistic(stats.sd));
    SetNormalLimits(merge, format, stats, options);
    Summary summary;
    summary.CentileType = 2;  // at place p(n + 1)
    summary.FullSummaryFromXSort(sorted, "", options.confidence, 0, 0);
    for (const double p : {(1 - options.reference) / 2, (1 + options.reference) / 2}) {
      merge.BlockRepeat();
      SetQuantile(merge, format, sorted, p, summary.Quantile(p), options);
    }
    merge.BlockDrop();
  });
}

}  // namespace tellurix
