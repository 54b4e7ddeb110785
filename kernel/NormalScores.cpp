#include "kernel/NormalScores.h"

#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// The density of the order statistic that has `below` of the others beneath and `above` of them over it.
struct OrderStatistic {
  f64 below;
  f64 above;

  // Its logarithm but for a constant, each logarithm of a tail from the smaller one.
  f64 LogDensity(f64 x) const {
    const Tails tails = NormalTails(x);
    const f64 logLower = tails.lower < 0.5 ? std::log(tails.lower) : std::log1p(-tails.upper);
    const f64 logUpper = tails.upper < 0.5 ? std::log(tails.upper) : std::log1p(-tails.lower);
    return below * logLower + above * logUpper - x * x / 2;
  }
};

struct Peak {
  f64 place;
  f64 width;  // of the normal curve with the same curvature
};

// By Newton's method; a hundredth of the width is near enough.
Peak PeakOf(const OrderStatistic& statistic) {
  i32 ifault = 0;
  Peak peak{GAUINV((statistic.below + 0.625) / (statistic.below + statistic.above + 1.25), ifault), 1};
  for (int round = 0; round < 50; ++round) {
    const f64 x = peak.place;
    const Tails tails = NormalTails(x);
    const f64 density = InverseSqrtTwoPi * std::exp(-x * x / 2);
    const f64 hazardBelow = density / tails.lower;
    const f64 hazardAbove = density / tails.upper;
    const f64 slope = statistic.below * hazardBelow - statistic.above * hazardAbove - x;
    const f64 curvature =
        1 + statistic.below * hazardBelow * (hazardBelow + x) + statistic.above * hazardAbove * (hazardAbove - x);
    peak.width = 1 / std::sqrt(curvature);
    const f64 step = std::clamp(slope / curvature, -1.0, 1.0);
    peak.place += step;
    if (std::fabs(step) < 0.01 * peak.width) break;
  }
  return peak;
}

f64 ExpectedValue(const OrderStatistic& statistic) {
  constexpr f64 Negligible = 1e-19;
  const Peak peak = PeakOf(statistic);
  const f64 top = statistic.LogDensity(peak.place);
  const f64 step = peak.width / 4;
  f64 sum = 1;
  f64 moment = 0;
  for (const int side : {-1, 1}) {
    for (int k = 1;; ++k) {
      const f64 away = side * k * step;
      const f64 weight = std::exp(statistic.LogDensity(peak.place + away) - top);
      sum += weight;
      moment += away * weight;
      if (!(weight > Negligible)) break;
    }
  }
  return peak.place + moment / sum;
}

}  // namespace

f64 ExpectedNormalScore(f64 n, f64 rank) {
  if (!(rank >= 1 && rank <= n)) return NaN;
  const f64 below = rank - 1;
  const f64 above = n - rank;
  if (below == above) return 0;
  return below > above ? ExpectedValue({below, above}) : -ExpectedValue({above, below});
}

void ExpectedNormalScores(i32 n, f64* scores) {
  for (i32 order = 1; order <= n; ++order) {
    const i32 mirrored = n + 1 - order;
    scores[order - 1] = order <= mirrored ? EXPNOS(n, order) : -scores[mirrored - 1];
  }
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 EXPNOS(const i32& n, const i32& order) { return ExpectedNormalScore(n, order); }
