// The items of a summary as the commands of descriptive statistics show them.
#pragma once

#include <string>
#include <vector>

#include "numeric/Summary.h"
#include "report/Value.h"

namespace tellurix {

enum class SummaryItem {
  Count,
  Sum,
  Mean,
  Variance,
  Sd,
  Sem,
  LowerCL,
  UpperCL,
  GeometricMean,
  Skewness,
  Kurtosis,
  Cv,
  Maximum,
  UpperQuartile,
  Median,
  LowerQuartile,
  Minimum,
  CentileA,
  CentileB,
  Range,
  WeightTotal,
};

// Its name in lists and tables, with the confidence and centiles of the summary: "Lower 95% CL of mean", "5th
// percentile".
std::string SummaryLabel(SummaryItem item, const Summary& summary);

double SummaryFigure(SummaryItem item, const Summary& summary);

// The figure as reports show it.
Value SummaryText(SummaryItem item, const Summary& summary, const Formatter& format);

}  // namespace tellurix
