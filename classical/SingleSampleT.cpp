#include "classical/SingleSampleT.h"

#include <cmath>

#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "numeric/Power.h"
#include "numeric/Probability.h"
#include "numeric/Rounding.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

struct SingleSampleTResult {
  double from = MissingValue;  // confidence limits of mean minus population mean
  double to = MissingValue;
  double t = MissingValue;
  double oneSidedP = MissingValue;
  double twoSidedP = MissingValue;
  double power = MissingValue;
};

// What a sample of one or without spread cannot tell stays missing.
SingleSampleTResult ComputeSingleSampleT(const ColumnStats& sample, double populationMean, double confidence) {
  SingleSampleTResult result;
  const std::int32_t df = sample.n - 1;
  if (df < 1) return result;
  const double difference = sample.mean - populationMean;
  const double standardError = sample.sd / std::sqrt(static_cast<double>(sample.n));
  double critical = 0, alpha = 0;
  CriticalValue(df, critical, confidence, alpha);
  result.from = difference - critical * standardError;
  result.to = difference + critical * standardError;
  if (standardError == 0) return result;
  result.t = difference / standardError;
  result.oneSidedP = FoldP(UpperPFromT(std::fabs(result.t), df));
  result.twoSidedP = 2 * result.oneSidedP;
  result.power = PowerOneSample(1 - confidence, difference, sample.sd, sample.n);
  return result;
}

void ReportSingleSampleT(Session& session, std::string_view name, const ColumnStats& sample, double populationMean,
                         double confidence) {
  WriteReport(session, "m_single.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    const SingleSampleTResult result = ComputeSingleSampleT(sample, populationMean, confidence);
    merge.SetField("name", name);
    merge.SetField("sam_mean", format.FormatStatistic(sample.mean));
    merge.SetField("pop_mean", format.FormatStatistic(populationMean));
    merge.SetField("size", format.FormatValue(sample.n, 0));
    merge.SetField("sd", format.FormatStatistic(sample.sd));
    merge.SetField("pc", format.FormatValue(confidence * 100, 2));
    merge.SetField("for", populationMean == 0 ? "for the mean" : "for mean difference");
    merge.SetField("from", format.FormatStatistic(result.from));
    merge.SetField("to", format.FormatStatistic(result.to));
    merge.SetField("df", format.FormatValue(sample.n - 1, 0));
    merge.SetField("t", format.FormatStatistic(result.t));
    merge.SetField("p_1", format.FormatP(result.oneSidedP));
    merge.SetField("p_2", format.FormatP(result.twoSidedP));
    merge.SetField("pwr", format.FormatPower(result.power, 1 - confidence));
  });
}

}  // namespace

void SingleSampleT(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select DATA")) return;
  const ColumnStats sample = ComputeColumnStats(session.data.DataMatrix.front());
  if (sample.n == 0) return RefuseNonNumericData(session);

  session.prompts.FillCombo(0, "Confidence (%)", 90, 99, 1, "0", 5);
  session.prompts.FillEntry(1, "Population mean", "0");
  if (!session.prompts.ShowOptions("", "Single sample t test")) return;
  ReportSingleSampleT(session, session.data.ColumnInfo.front().Title, sample, session.prompts.ComboReal(1),
                      session.prompts.ComboReal(0) / 100);
}

void SingleSampleTFromSummary(Session& session) {
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;
  const auto figures = session.prompts.EnterFigures(
      "Single sample t test", {"Sample size:", "Sample mean:", "Sample standard deviation:", "Population mean:"});
  if (!figures) return;
  const auto sample = StatsFromSummary((*figures)[0], (*figures)[1], (*figures)[2]);
  if (!sample) return;
  ReportSingleSampleT(session, "* from summary data", *sample, (*figures)[3], *confidence);
}

}  // namespace tellurix
