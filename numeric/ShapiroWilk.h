// The Shapiro-Wilk test for departure from the normal distribution.
#pragma once

#include <cstdint>
#include <span>

namespace tellurix {

inline constexpr std::int32_t ShapiroWilkFewest = 3;
inline constexpr std::int32_t ShapiroWilkMost = 5000;

// The most observations that may be censored beside `uncensored` ones: four fifths of all, all being 20 at least and
// 5000 at most; 0 where no number will do.
std::int32_t MostCensored(std::int32_t uncensored);

struct ShapiroWilk {
  double w;       // 0 to 1
  double upperP;  // of a sample at least as far from normal
};

// W and its P for values in rising order, the smallest of a sample of which `censored` more lie above the last one. The
// weights and the normalizing transformation of P. Royston (1995), Algorithm AS R94, Applied Statistics 44:547-551,
// after S. S. Shapiro & M. B. Wilk (1965), Biometrika 52:591-611; censored samples by P. Royston (1993), A toolkit for
// testing for non-normality in complete and censored samples, The Statistician 42:37-43. Both are MissingValue for
// fewer than 3 values, more than 5000 with the censored, more censored than MostCensored (or in samples below 20), and
// values that are all alike.
ShapiroWilk TestShapiroWilk(std::span<const double> sorted, std::int32_t censored);

}  // namespace tellurix
