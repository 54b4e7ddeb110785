#include "classical/UnpairedT.h"

#include <cmath>

#include "numeric/Missing.h"
#include "numeric/Power.h"
#include "numeric/Probability.h"
#include "numeric/TwoMeans.h"
#include "session/Skeleton.h"
#include "session/TwoSamples.h"

namespace tellurix {

namespace {

// Of one way to take the variances.
struct UnpairedTResult {
  MeanDifferenceError error;
  double from = MissingValue;  // confidence limits of the first mean minus the second
  double to = MissingValue;
  double t = MissingValue;
  double oneSidedP = MissingValue;
  double twoSidedP = MissingValue;
  double power = MissingValue;
};

// Without a standard error nothing can be told, without spread only the interval.
UnpairedTResult CompareMeans(double difference, const MeanDifferenceError& error, double critical) {
  UnpairedTResult result{.error = error};
  if (error.standardError == MissingValue) return result;
  result.from = difference - critical * error.standardError;
  result.to = difference + critical * error.standardError;
  if (error.standardError == 0) return result;
  result.t = difference / error.standardError;
  result.oneSidedP = FoldP(UpperPFromT(std::fabs(result.t), error.df));
  result.twoSidedP = 2 * result.oneSidedP;
  return result;
}

void SetResult(TemplateMerge& merge, const Formatter& format, const UnpairedTResult& result, double confidence) {
  merge.SetField("error", format.FormatStatistic(result.error.standardError));
  merge.SetField("df", format.FormatStatistic(result.error.df));
  merge.SetField("t", format.FormatStatistic(result.t));
  merge.SetField("p_1", format.FormatP(result.oneSidedP));
  merge.SetField("p_2", format.FormatP(result.twoSidedP));
  merge.SetField("pc", format.FormatValue(confidence * 100, 2));
  merge.SetField("from", format.FormatStatistic(result.from));
  merge.SetField("to", format.FormatStatistic(result.to));
  merge.SetField("pwr", format.FormatPower(result.power, 1 - confidence));
}

// Half of a two-sided level of 5%, whatever the confidence.
constexpr double UnequalBelow = 0.025;

void ReportUnpairedT(Session& session, const TwoSamples& samples, double confidence) {
  WriteReport(session, "m_unpair.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    const auto& [title1, first] = samples.first;
    const auto& [title2, second] = samples.second;
    const double difference = first.mean - second.mean;
    const double alpha = 1 - confidence;

    // The interval without the assumption keeps the critical value of the pooled degrees of freedom.
    const MeanDifferenceError pooledError = EqualVarianceError(first.n, first.sd, second.n, second.sd);
    double critical = MissingValue, criticalAlpha = MissingValue;
    if (pooledError.df != MissingValue) {
      CriticalValue(static_cast<std::int32_t>(pooledError.df), critical, confidence, criticalAlpha);
    }
    UnpairedTResult equal = CompareMeans(difference, pooledError, critical);
    equal.power = PowerTwoSample(alpha, std::fabs(difference), pooledError.pooledSd, first.n,
                                 static_cast<double>(second.n) / first.n);
    UnpairedTResult unequal =
        CompareMeans(difference, UnequalVarianceError(first.n, first.sd, second.n, second.sd), critical);
    unequal.power = PowerUnequalVariance(alpha, std::fabs(difference), first.n, second.n, first.sd, second.sd);

    merge.SetField("title_0", title1);
    merge.SetField("mean_0", format.FormatStatistic(first.mean));
    merge.SetField("n0", format.FormatValue(first.n, 0));
    merge.SetField("title_1", title2);
    merge.SetField("mean_1", format.FormatStatistic(second.mean));
    merge.SetField("n1", format.FormatValue(second.n, 0));
    SetResult(merge, format, equal, confidence);
    SetResult(merge, format, unequal, confidence);
    const VarianceVerdict verdict = JudgeVariances(CompareVariances(first.n, first.sd, second.n, second.sd).upperP);
    merge.SetField("say1", verdict.finding);
    merge.SetField("say2", verdict.advice);
  });
}

}  // namespace

VarianceVerdict JudgeVariances(double upperP) {
  if (upperP == MissingValue) return {"*", "The variances cannot be compared"};
  if (upperP < UnequalBelow) {
    return {"TWO SIDED F TEST IS SIGNIFICANT",
            "USE APPROXIMATE t (UNEQUAL VARIANCES) RESULT or ALTERNATIVELY MANN-WHITNEY"};
  }
  return {"Two sided F test is not significant", "No need to assume unequal variances"};
}

void UnpairedT(Session& session) {
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;
  TwoSamples samples;
  if (!SelectTwoSamples(session, samples)) return;
  ReportUnpairedT(session, samples, *confidence);
}

void UnpairedTFromSummary(Session& session) {
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;
  const auto figures = session.prompts.EnterFigures(
      "Unpaired t test", {"Sample 1 size:", "Sample 1 mean:", "Sample 1 standard deviation:", "Sample 2 size:",
                          "Sample 2 mean:", "Sample 2 standard deviation:"});
  if (!figures) return;
  const auto first = StatsFromSummary((*figures)[0], (*figures)[1], (*figures)[2]);
  const auto second = StatsFromSummary((*figures)[3], (*figures)[4], (*figures)[5]);
  if (!first || !second) return;
  ReportUnpairedT(session, {{"* sample 1 from summary", *first}, {"* sample 2 from summary", *second}}, *confidence);
}

}  // namespace tellurix
