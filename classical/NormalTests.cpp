#include "classical/NormalTests.h"

#include <cmath>
#include <optional>

#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/Summary.h"
#include "numeric/TwoMeans.h"
#include "session/Skeleton.h"
#include "session/TwoSamples.h"

namespace tellurix {

namespace {

struct ZResult {
  double from = MissingValue;  // confidence limits of the difference
  double to = MissingValue;
  double z = MissingValue;
};

ZResult ComputeZ(double difference, double standardError, double confidence) {
  ZResult result;
  if (standardError == MissingValue) return result;
  const double critical = NormalCriticalValue(confidence);
  result.from = difference - critical * standardError;
  result.to = difference + critical * standardError;
  if (standardError != 0) result.z = difference / standardError;
  return result;
}

struct Population {
  double mean;
  double sd;  // MissingValue when it is not known
};

// Nothing when the mean was cancelled; a cancelled standard deviation is not known.
std::optional<Population> AskPopulation(Session& session) {
  constexpr const char* title = "Single sample z test";
  const std::string mean = session.prompts.InputValue("Enter population mean", title, "0");
  if (mean == CancelledInput) return std::nullopt;
  for (;;) {
    const std::string sd =
        session.prompts.InputValue("Enter population standard deviation\n(click cancel if not known)", title, "");
    const Regional& regional = session.options.regional;
    if (sd == CancelledInput) return Population{ParseReal(mean, regional), MissingValue};
    if (ParseReal(sd, regional) > 0) return Population{ParseReal(mean, regional), ParseReal(sd, regional)};
    session.data.ShowInvalidData();
  }
}

}  // namespace

void SingleSampleZ(Session& session) {
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;
  if (!session.data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select DATA")) return;
  const auto& values = session.data.DataMatrix.front();
  const ColumnStats sample = ComputeColumnStats(values);
  if (sample.n == 0) return RefuseNonNumericData(session);
  const auto population = AskPopulation(session);
  if (!population) return;

  WriteReport(session, "z_norm1.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    const bool isKnown = population->sd != MissingValue;
    const double sd = isKnown ? population->sd : sample.sd;
    const double standardError = sd == MissingValue ? MissingValue : sd / std::sqrt(sample.n);
    const ZResult result = ComputeZ(sample.mean - population->mean, standardError, *confidence);
    const double spread = sd == MissingValue ? MissingValue : NormalCriticalValue(*confidence) * sd;
    Summary summary;
    summary.FullSummaryFromX(values, "", *confidence, 0, 0);
    merge.SetField("name", session.data.ColumnInfo.front().Title);
    merge.SetField("mean", format.FormatStatistic(sample.mean));
    merge.SetField("pop_mean", format.FormatStatistic(population->mean));
    merge.SetField("size", format.FormatValue(sample.n, 0));
    merge.SetField("sd", format.FormatStatistic(sample.sd));
    merge.SetField("psd", isKnown ? format.FormatStatistic(population->sd) : Value("not known"));
    merge.SetField("pc", format.FormatValue(*confidence * 100, 2));
    merge.SetField("for", population->mean == 0 ? "for the mean" : "for mean difference");
    merge.SetField("from", format.FormatStatistic(result.from));
    merge.SetField("to", format.FormatStatistic(result.to));
    merge.SetField("z", format.FormatStatistic(result.z));
    SetPFields(merge, format, result.z);
    merge.SetField("gmean", format.FormatStatistic(summary.geometricMean));
    merge.SetField("pc2", format.FormatValue(*confidence * 100, 2));
    merge.SetField("lrr", format.FormatStatistic(spread == MissingValue ? MissingValue : sample.mean - spread));
    merge.SetField("urr", format.FormatStatistic(spread == MissingValue ? MissingValue : sample.mean + spread));
  });
}

void UnpairedZ(Session& session) {
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;
  TwoSamples samples;
  if (!SelectTwoSamples(session, samples)) return;

  WriteReport(session, "z_norm2.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    for (const auto& [title, stats] : {samples.first, samples.second}) {
      merge.SetField("name", title);
      merge.SetField("mean", format.FormatStatistic(stats.mean));
      merge.SetField("var", format.FormatStatistic(VarianceOf(stats)));
      merge.SetField("size", format.FormatValue(stats.n, 0));
    }
    const auto& first = samples.first.stats;
    const auto& second = samples.second.stats;
    const double standardError = UnequalVarianceError(first.n, first.sd, second.n, second.sd).standardError;
    const ZResult result = ComputeZ(first.mean - second.mean, standardError, *confidence);
    merge.SetField("error", format.FormatStatistic(standardError));
    merge.SetField("pc", format.FormatValue(*confidence * 100, 2));
    merge.SetField("from", format.FormatStatistic(result.from));
    merge.SetField("to", format.FormatStatistic(result.to));
    merge.SetField("z", format.FormatStatistic(result.z));
    SetPFields(merge, format, result.z);
  });
}

}  // namespace tellurix
