// Slopes between all pairs of points, and their median with its confidence interval (Theil 1950).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tellurix {

// (y[j] - y[i]) / (x[j] - x[i]) over the pairs i below j, i running slowest; MissingValue for equal x. Both columns are
// of one length and hold no missing value.
std::vector<double> PairwiseSlopes(std::span<const double> y, std::span<const double> x);

struct MedianSlope {
  double slope;  // MissingValue where no pair has a slope
  double lower;  // limits: MissingValue where the points are too few for the confidence
  double upper;
};

// Of the slopes of PairwiseSlopes, whose missing ones are left out, and of the x that they were made of.
//
// The limits are the slopes with the ranks (N - w)/2, rounded down, and its mirror image, N being the number of slopes
// (P. K. Sen 1968, Journal of the American Statistical Association 63:1379-1389; W. J. Conover 1999, Practical
// Nonparametric Statistics, 3rd edition, section 5.5). w is the quantile of Kendall's S that KendallFromP gives for
// half of the complement of the confidence; where that has none, or some x are equal, the normal one: the deviate times
// the standard deviation of S, with the variance less for ties in x.
MedianSlope MedianSlopeWithLimits(std::vector<double> slopes, std::span<const double> x, double confidence);

}  // namespace tellurix
