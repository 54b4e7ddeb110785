// The confidence interval of a quantile from the ranks of a sample, which supposes nothing of the distribution.
#pragma once

#include <cstdint>

namespace tellurix {

struct QuantileRanks {
  bool isPossible = false;  // otherwise nothing below holds
  std::int32_t lower = 0;   // 1-based ranks of the limits
  std::int32_t upper = 0;
  bool lowerIsCapped = false;  // the limit fell outside the data and is the minimum, or the maximum
  bool upperIsCapped = false;
  double coverage = 0;  // of the interval between the ranks
};

// The ranks between which the quantile of probability p, 0 < p < 1, of a continuous distribution lies with the given
// confidence, in a sample of n >= 1. The number of observations below the quantile is binomial, so the ranks l < u
// cover it with P(X <= u - 1) - P(X <= l - 1). W. J. Conover (1999) Practical Nonparametric Statistics, 3rd edition,
// section 3.2.
//   - conservative: the innermost ranks with at most half of the complement in either tail; where one of them is capped
//     the other moves outward until the confidence is reached. Not possible when the whole sample does not reach it;
//   - otherwise: in either tail the rank whose probability is nearest to half of the complement, the coverage being
//   what
//     it is. Not possible where the limits would meet.
QuantileRanks QuantileInterval(std::int32_t n, double p, double confidence, bool conservative);

}  // namespace tellurix
