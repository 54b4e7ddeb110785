#include "classical/PairedT.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "graphics/AgreementPlot.h"
#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "numeric/Power.h"
#include "numeric/Probability.h"
#include "session/ReportGraphics.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

// A larger sum of squares has no variance.
constexpr double LargestSumOfSquares = 1e300;

struct Differences {
  std::string label;
  std::vector<double> values;  // MissingValue where either of a pair is missing
};

bool SelectMatchedColumns(Session& session) {
  if (session.options.UseGroupID) return session.data.SelectGroups(-1, 1, 2, "");
  return session.data.SelectEqualData(0, ModeNumericRows, 1, 2, "Select 2 matched columns (or 1 of differences)");
}

Differences DifferencesOf(const DataSelection& data) {
  const std::string& first = data.ColumnInfo.front().Title;
  if (data.LastColumn == 0) return {"differences listed in " + first, data.DataMatrix.front()};
  Differences differences{fmt::format("differences between {} and {}", first, data.ColumnInfo[1].Title), {}};
  const auto& a = data.DataMatrix[0];
  const auto& b = data.DataMatrix[1];
  for (std::size_t row = 0; row < std::min(a.size(), b.size()); ++row) {
    const bool isMissing = a[row] == MissingValue || b[row] == MissingValue;
    differences.values.push_back(isMissing ? MissingValue : a[row] - b[row]);
  }
  return differences;
}

struct PairedTOptions {
  double confidence;
  bool agreement;
};

std::optional<PairedTOptions> AskOptions(Session& session, bool isPairOfColumns) {
  if (!isPairOfColumns) {
    const auto confidence = session.prompts.SelectConfidence();
    if (!confidence) return std::nullopt;
    return PairedTOptions{*confidence, false};
  }
  session.prompts.FillCombo(0, "Confidence (%)", 90, 99, 1, "0", 5);
  if (!session.prompts.ShowOptions("Agreement analysis", "Paired t test options")) return std::nullopt;
  return PairedTOptions{session.prompts.ComboReal(0) / 100, session.prompts.OptionOn(0)};
}

struct PairedTResult {
  double sem = MissingValue;
  double from = MissingValue;  // confidence limits of the mean difference
  double to = MissingValue;
  double t = MissingValue;
  double oneSidedP = MissingValue;
  double twoSidedP = MissingValue;
  double power = MissingValue;
  double agreementFrom = MissingValue;  // limits of agreement
  double agreementTo = MissingValue;
};

PairedTResult ComputePairedT(const ColumnStats& differences, double confidence) {
  PairedTResult result;
  if (differences.sd == MissingValue) return result;
  const std::int32_t df = differences.n - 1;
  result.sem = differences.sd / std::sqrt(differences.n);
  const double z = NormalCriticalValue(confidence);
  result.agreementFrom = differences.mean - z * differences.sd;
  result.agreementTo = differences.mean + z * differences.sd;
  double critical = 0, alpha = 0;
  CriticalValue(df, critical, confidence, alpha);
  result.from = differences.mean - critical * result.sem;
  result.to = differences.mean + critical * result.sem;
  if (result.sem == 0) return result;
  result.t = differences.mean / result.sem;
  result.oneSidedP = FoldP(UpperPFromT(std::fabs(result.t), df));
  result.twoSidedP = 2 * result.oneSidedP;
  result.power = PowerOneSample(alpha, differences.mean, differences.sd, differences.n);
  return result;
}

void SetAgreement(TemplateMerge& merge, const Formatter& format, const PairedTResult& result, double confidence) {
  merge.SetField("pc", format.FormatValue(confidence * 100, 2));
  merge.SetField("from", format.FormatStatistic(result.agreementFrom));
  merge.SetField("to", format.FormatStatistic(result.agreementTo));
}

// Of the pairs that are whole.
AgreementPlot PlotOf(const DataSelection& data, const ColumnStats& differences, const PairedTResult& result,
                     std::string_view percent) {
  const std::string& first = data.ColumnInfo[0].Title;
  const std::string& second = data.ColumnInfo[1].Title;
  AgreementPlot plot{.title = fmt::format("mean difference ± {}% limits of agreement", percent),
                     .xTitle = fmt::format("Mean (({} + {}) / 2)", first, second),
                     .yTitle = fmt::format("Difference ({} - {})", first, second),
                     .meanDifference = differences.mean,
                     .lowerLimit = result.agreementFrom,
                     .upperLimit = result.agreementTo};
  const auto& a = data.DataMatrix[0];
  const auto& b = data.DataMatrix[1];
  for (std::size_t row = 0; row < std::min(a.size(), b.size()); ++row) {
    if (a[row] == MissingValue || b[row] == MissingValue) continue;
    plot.means.push_back(std::midpoint(a[row], b[row]));
    plot.differences.push_back(a[row] - b[row]);
  }
  return plot;
}

}  // namespace

void PairedT(Session& session) {
  if (!SelectMatchedColumns(session)) return;
  const Differences differences = DifferencesOf(session.data);
  ColumnStats stats = ComputeColumnStats(differences.values);
  if (stats.n == 0) return RefuseNonNumericData(session);
  if (!(stats.sumOfSquares <= LargestSumOfSquares)) stats.sd = MissingValue;
  const auto options = AskOptions(session, session.data.LastColumn == 1);
  if (!options) return;

  const PairedTResult result = ComputePairedT(stats, options->confidence);
  Report* report = WriteReport(session, "m_paired.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    merge.SetField("label", differences.label);
    merge.SetField("mean", format.FormatStatistic(stats.mean));
    merge.SetField("n", format.FormatValue(stats.n, 0));
    merge.SetField("sd", format.FormatStatistic(stats.sd));
    merge.SetField("sem", format.FormatStatistic(result.sem));
    merge.SetField("pc", format.FormatValue(options->confidence * 100, 2));
    merge.SetField("from", format.FormatStatistic(result.from));
    merge.SetField("to", format.FormatStatistic(result.to));
    merge.SetField("df", format.FormatValue(stats.n - 1, 0));
    merge.SetField("t", format.FormatStatistic(result.t));
    merge.SetField("tail_1", format.FormatP(result.oneSidedP));
    merge.SetField("tail_2", format.FormatP(result.twoSidedP));
    merge.SetField("pwr", format.FormatPower(result.power, 1 - options->confidence));
    if (options->agreement) {
      merge.BlockKeep();
      SetAgreement(merge, format, result, options->confidence);
    } else {
      merge.BlockDrop();
    }
  });
  if (!report || !options->agreement || result.agreementFrom == MissingValue) return;
  const std::string percent = session.Format().FormatValue(options->confidence * 100, 2).text;
  const AgreementPlot plot = PlotOf(session.data, stats, result, percent);
  SetAgreementLimits(session.graphics.page, plot);
  InsertPlot(session, *report, true, [&] { DrawAgreementPlot(session.graphics, plot); });
}

}  // namespace tellurix
