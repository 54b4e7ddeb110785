#include "numeric/Noncentral.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernel/Kernel.h"
#include "kernel/Root.h"
#include "numeric/Missing.h"

namespace tellurix {

double NoncentralityFromChi(double p, double x, double df, bool& failed) {
  failed = true;
  if (p == MissingValue || x == MissingValue || df == MissingValue) return MissingValue;
  if (!(p > 0 && p < 1 && std::isfinite(x))) return MissingValue;
  constexpr double Tolerance = 1e-6;
  constexpr int MostIterations = 300;
  constexpr double Furthest = 1e15;
  const auto excess = [&](double lambda) { return NCHI2(x, df, lambda) - p; };
  double low = 0;
  double atLow = excess(low);
  double high = std::max(1.0, x);
  double atHigh = excess(high);
  while (atHigh > 0 && high < Furthest) {
    low = high;
    atLow = atHigh;
    high *= 2;
    atHigh = excess(high);
  }
  const kernel::Root root = kernel::BrentRoot(excess, low, high, atLow, atHigh, Tolerance, MostIterations);
  failed = !root.converged;
  return failed ? MissingValue : root.at;
}

double NoncentralityFromT(double p, double t, double df, bool& failed) {
  failed = true;
  if (p == MissingValue || t == MissingValue || df == MissingValue) return MissingValue;
  if (!(df > 0 && std::isfinite(t) && p >= 0 && p <= 1)) return MissingValue;
  constexpr double Tolerance = 1e-4;
  constexpr int MostSteps = 100;
  constexpr double Edge = std::numeric_limits<double>::epsilon();
  p = std::clamp(p, Edge, 1 - Edge);
  i32 ifault = 0;
  const double spread = std::hypot(1, t / std::sqrt(2 * df));
  double width = spread;
  double delta = t;
  double excess = PNCT(t, df, delta, ifault) - p;
  // P falls as delta rises.
  const double direction = excess > 0 ? 1 : -1;
  for (int step = 0; step < MostSteps && excess != 0; ++step) {
    const double next = delta + direction * width;
    const double atNext = PNCT(t, df, next, ifault) - p;
    if (ifault != 0) return MissingValue;
    if ((atNext > 0) == (excess > 0) && atNext != 0) {
      delta = next;
      excess = atNext;
    } else if (width > Tolerance * spread) {
      width /= 10;
    } else {
      failed = false;
      return delta + (next - delta) * (excess / (excess - atNext));
    }
  }
  failed = excess != 0;
  return failed ? MissingValue : delta;
}

}  // namespace tellurix
