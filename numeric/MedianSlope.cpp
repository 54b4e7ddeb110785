#include "numeric/MedianSlope.h"

#include <algorithm>
#include <cmath>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/RankStatistics.h"

namespace tellurix {

namespace {

// The S that the statistic of independent pairs exceeds with half of the complement of the confidence, at the most.
double KendallQuantile(std::span<const double> x, double confidence) {
  const auto n = static_cast<std::int32_t>(x.size());
  std::vector<double> ranks(x.size());
  double ties = 0;  // sum of t (t - 1) (2 t + 5)
  RANK(x.data(), ranks.data(), n, 3, ties);
  if (ties == 0) {
    double tau = 0;
    std::int32_t S = 0, ifault = 0;
    KendallFromP((1 - confidence) / 2, tau, S, n, ifault);
    if (ifault == 0) return S;
  }
  const double size = n;
  return NormalCriticalValue(confidence) * std::sqrt((size * (size - 1) * (2 * size + 5) - ties) / 18);
}

double MedianOf(const std::vector<double>& sorted) {
  const std::size_t half = sorted.size() / 2;
  if (sorted.size() % 2 == 1) return sorted[half];
  return sorted[half - 1] + (sorted[half] - sorted[half - 1]) / 2;
}

}  // namespace

std::vector<double> PairwiseSlopes(std::span<const double> y, std::span<const double> x) {
  std::vector<double> slopes;
  slopes.reserve(x.size() * (x.size() - std::min<std::size_t>(1, x.size())) / 2);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = i + 1; j < x.size(); ++j) {
      const double slope = (y[j] - y[i]) / (x[j] - x[i]);
      slopes.push_back(x[i] != x[j] && std::isfinite(slope) ? slope : MissingValue);
    }
  }
  return slopes;
}

MedianSlope MedianSlopeWithLimits(std::vector<double> slopes, std::span<const double> x, double confidence) {
  std::erase(slopes, MissingValue);
  MedianSlope result{MissingValue, MissingValue, MissingValue};
  if (slopes.empty()) return result;
  std::ranges::sort(slopes);
  result.slope = MedianOf(slopes);
  const double rank = std::floor((static_cast<double>(slopes.size()) - KendallQuantile(x, confidence)) / 2);
  if (!(rank >= 1)) return result;
  const auto lower = std::min(static_cast<std::size_t>(rank), (slopes.size() + 1) / 2);
  result.lower = slopes[lower - 1];
  result.upper = slopes[slopes.size() - lower];
  return result;
}

}  // namespace tellurix
