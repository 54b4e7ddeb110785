#include "classical/PoissonInterval.h"

#include <cmath>
#include <span>
#include <string>

#include "kernel/Kernel.h"
#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

struct Limits {
  double lower = MissingValue;
  double upper = MissingValue;
};

// Half the chi-square quantile, MissingValue where there is none.
double HalfChi(double p, double df) {
  i32 ifault = 0;
  const double chi = PPCHI2(p, df, ifault);
  return ifault == 0 ? chi / 2 : MissingValue;
}

// Exact limits of the mean of a Poisson count x >= 0 with `tail` beyond each. F. Garwood (1936) Fiducial limits for the
// Poisson distribution, Biometrika 28:437-442.
Limits PoissonLimits(double x, double tail) {
  return {x == 0 ? 0 : HalfChi(tail, 2 * x), HalfChi(1 - tail, 2 * x + 2)};
}

double PerObservation(double limit, double n) { return limit == MissingValue ? MissingValue : limit / n; }

struct Counts {
  double sum = 0;
  bool hasNegative = false;
  bool hasFraction = false;
};

Counts CountsOf(std::span<const double> values) {
  Counts counts;
  for (const double x : values) {
    if (x == MissingValue) continue;
    counts.sum += x;
    counts.hasNegative = counts.hasNegative || x < 0;
    counts.hasFraction = counts.hasFraction || x != std::floor(x);
  }
  return counts;
}

const char* WarningOf(const Counts& counts) {
  if (counts.hasNegative) return "(error - negative values used)";
  return counts.hasFraction ? "(warning - source data not integers)" : "";
}

}  // namespace

void PoissonInterval(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select data for POISSON ESTIMATES")) return;
  const auto& values = session.data.DataMatrix.front();
  const ColumnStats stats = ComputeColumnStats(values);
  if (stats.n == 0) return RefuseNonNumericData(session);
  session.prompts.FillCombo(0, "Confidence (%)", {"80", "85", "90", "95", "99"}, 3);
  if (!session.prompts.ShowOptions("^Two sided|^One sided", "POISSON ESTIMATES",
                                   "Select the type of confidence interval you want")) {
    return;
  }
  const double confidence = session.prompts.ComboReal(0) / 100;
  const bool isTwoSided = session.prompts.OptionOn(0);

  WriteReport(session, "poisson.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    const Counts counts = CountsOf(values);
    const double tail = isTwoSided ? (1 - confidence) / 2 : 1 - confidence;
    const Limits limits = counts.hasNegative ? Limits() : PoissonLimits(counts.sum, tail);
    Value label = format.FormatValue(confidence * 100, 2);
    label.text += isTwoSided ? "% two sided " : "% one sided ";
    merge.SetField("ti", session.data.ColumnInfo.front().Title);
    merge.SetField("n", format.FormatValue(stats.n, 0));
    merge.SetField("mean", format.FormatStatistic(stats.mean));
    merge.SetField("pc", label);
    merge.SetField("lower", format.FormatStatistic(PerObservation(limits.lower, stats.n)));
    merge.SetField("upper", format.FormatStatistic(PerObservation(limits.upper, stats.n)));
    merge.SetField("warn", WarningOf(counts));
  });
}

}  // namespace tellurix
