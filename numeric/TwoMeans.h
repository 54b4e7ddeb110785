// What comparisons of two independent samples share: the standard error of the difference of their means, and the ratio
// of their variances. Standard deviations are scaled before they are squared, so that they may be of any size.
#pragma once

#include <cstdint>

namespace tellurix {

// The standard error of a difference of means, with its degrees of freedom.
struct MeanDifferenceError {
  double pooledSd;  // MissingValue where variances are not pooled
  double standardError;
  double df;
};

// For variances that are taken as equal: df = n1 + n2 - 2. The standard deviation of a sample of one says nothing and
// may be MissingValue. All are MissingValue with df below 1.
MeanDifferenceError EqualVarianceError(std::int32_t n1, double sd1, std::int32_t n2, double sd2);

// For variances that are not: the root of a + b with a = sd1^2/n1 and b = sd2^2/n2, on
// (a + b)^2 / (a^2/(n1 - 1) + b^2/(n2 - 1)) degrees of freedom. F. E. Satterthwaite (1946), Biometrics Bulletin
// 2:110-114; B. L. Welch (1947), Biometrika 34:28-35. All are MissingValue with a sample below 2; without spread in
// either, df is.
MeanDifferenceError UnequalVarianceError(std::int32_t n1, double sd1, std::int32_t n2, double sd2);

// The larger variance over the smaller one.
struct VarianceRatio {
  double f;       // OverflowMarker when only the smaller is 0; MissingValue when both are, or with a sample below 2
  double upperP;  // of F on the degrees of freedom of the larger and of the smaller
};

// The first sample is the numerator on a tie.
VarianceRatio CompareVariances(std::int32_t n1, double sd1, std::int32_t n2, double sd2);

}  // namespace tellurix
