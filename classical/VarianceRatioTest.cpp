#include "classical/VarianceRatioTest.h"

#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/TwoMeans.h"
#include "session/Skeleton.h"
#include "session/TwoSamples.h"

namespace tellurix {

void VarianceRatioTest(Session& session) {
  TwoSamples samples;
  if (!SelectTwoSamples(session, samples)) return;
  WriteReport(session, "variance.rtf", [&](TemplateMerge& merge, const Formatter& format) {
    const auto& [title1, first] = samples.first;
    const auto& [title2, second] = samples.second;
    const VarianceRatio ratio = CompareVariances(first.n, first.sd, second.n, second.sd);
    const double oneSidedP = FoldP(ratio.upperP);
    merge.SetField("title_0", title1);
    merge.SetField("df_0", format.FormatValue(first.n - 1, 0));
    merge.SetField("var_0", format.FormatStatistic(VarianceOf(first)));
    merge.SetField("title_1", title2);
    merge.SetField("df_1", format.FormatValue(second.n - 1, 0));
    merge.SetField("var_1", format.FormatStatistic(VarianceOf(second)));
    merge.SetField("f", format.FormatStatistic(ratio.f));
    merge.SetField("p_1", format.FormatP(oneSidedP));
    merge.SetField("p_2", format.FormatP(oneSidedP == MissingValue ? MissingValue : 2 * oneSidedP));
  });
}

}  // namespace tellurix
