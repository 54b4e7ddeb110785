// The descriptive statistics of one column, with or without weights.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "numeric/Missing.h"

namespace tellurix {

// Keeps its last result in its fields; what is undefined is MissingValue.
//
// The operations take a column, in which MissingValue is left out, its title, the confidence of the interval of the
// mean as a fraction (0.95 for one outside (0, 1)), and two centiles of the user's in per cent (none at or below 0, or
// at or above 100). They answer false where there is nothing to describe: no value, or weights that sum to 0.
//
// Sums are compensated and squares taken in a second pass, as in ComputeColumnStats, in the scale of the largest
// deviation; a sum of squares above 1e300 counts as missing all the same.
class Summary {
 public:
  std::int32_t n = 0;  // values used
  double sum = MissingValue;
  double mean = MissingValue;
  double variance = MissingValue;  // on n - 1 degrees of freedom
  double sd = MissingValue;
  double sem = MissingValue;      // sd / sqrt(n)
  double lowerCL = MissingValue;  // of the mean, by Student's t
  double upperCL = MissingValue;
  double geometricMean = MissingValue;  // only of values above 0
  double skewness = MissingValue;       // m3 / m2^(3/2) of at least four values
  double kurtosis = MissingValue;       // m4 / m2^2: near 3 for a normal sample
  double cv = MissingValue;             // sd / mean, a ratio
  double maximum = MissingValue;
  double upperQuartile = MissingValue;
  double median = MissingValue;
  double lowerQuartile = MissingValue;
  double minimum = MissingValue;
  double centileA = MissingValue;
  double centileB = MissingValue;
  double range = MissingValue;
  double weightTotal = MissingValue;  // of the scaled weights

  std::string centileALabel;  // the percentage, empty for none
  std::string centileBLabel;
  std::string confidenceLabel;  // "95% CL"
  std::string title;

  // The rule of the quantiles. 2: linear between the order statistics around (n + 1) p. Any other: the first value at
  // which the running weight exceeds n p, or the mean with the value before where that one reaches n p exactly.
  int CentileType = 0;

  // With weights of relative importance: they are multiplied by `scale`, or where that is MissingValue by
  // n / (their sum). Pairs with a missing value or weight are left out; both columns hold at least `count` values.
  // The title becomes "TITLE (weight: WEIGHT TITLE)", CentileType 1.
  bool WeightedSummaryFromXK(std::span<const double> x, std::span<const double> weights, std::int32_t count,
                             std::string_view columnTitle, std::string_view weightTitle, double confidence,
                             double percentA, double percentB, double scale = MissingValue);

  // Of values that stand in rising order already, missing ones at the end.
  bool FullSummaryFromXSort(std::span<const double> sorted, std::string_view columnTitle, double confidence,
                            double percentA, double percentB);

  bool FullSummaryFromX(std::span<const double> x, std::string_view columnTitle, double confidence, double percentA,
                        double percentB);

  // Of the first `count` values, by the quantile rule `centileType`.
  bool FullSummaryFromXK(std::span<const double> x, std::int32_t count, std::string_view columnTitle, double confidence,
                         double percentA, double percentB, int centileType);

  // The quantile of the values last summarized at p from 0 to 1; otherwise, or without values, MissingValue.
  double Quantile(double p) const;

 private:
  bool Describe(double confidence, double percentA, double percentB, double scale);
  void DescribeOrder(double percentA, double percentB);
  void Reset();

  std::vector<double> values_;   // rising
  std::vector<double> weights_;  // beside them, unscaled; empty where every weight is 1
  double weightOfN_ = 0;         // what n comes to in unscaled weights: the running weight is compared with it
};

}  // namespace tellurix
