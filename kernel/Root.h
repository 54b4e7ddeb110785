// The root of a function of one variable.
#pragma once

#include <cmath>
#include <limits>

namespace tellurix::kernel {

struct Root {
  double at;
  bool converged;
};

// R. P. Brent (1973), Algorithms for Minimization without Derivatives, chapter 4: the root between a and b, where the
// values fa and fb have opposite signs (or one is 0), to within `tolerance` and four units of the last place. Not
// converged when the signs are alike or a value is NaN, or after `iterations` calls of f.
template <typename Function>
Root BrentRoot(Function f, double a, double b, double fa, double fb, double tolerance, int iterations) {
  constexpr double Spacing = std::numeric_limits<double>::epsilon();
  if (!((fa <= 0 && fb >= 0) || (fa >= 0 && fb <= 0))) return {b, false};
  double c = a;  // the bound on the other side of the root from b, the best so far
  double fc = fa;
  double last = b - a;
  double beforeLast = last;
  for (int round = 0;; ++round) {
    if (std::fabs(fc) < std::fabs(fb)) {
      a = b;
      b = c;
      c = a;
      fa = fb;
      fb = fc;
      fc = fa;
    }
    const double nearness = 2 * Spacing * std::fabs(b) + tolerance / 2;
    const double half = (c - b) / 2;
    if (std::fabs(half) <= nearness || fb == 0) return {b, true};
    if (round == iterations) return {b, false};
    if (std::fabs(beforeLast) >= nearness && std::fabs(fa) > std::fabs(fb)) {
      const double s = fb / fa;
      double p = 2 * half * s;
      double q = 1 - s;
      if (a != c) {
        const double t = fa / fc;
        const double r = fb / fc;
        p = s * (2 * half * t * (t - r) - (b - a) * (r - 1));
        q = (t - 1) * (r - 1) * (s - 1);
      }
      if (p > 0) q = -q;
      p = std::fabs(p);
      if (2 * p < 3 * half * q - std::fabs(nearness * q) && p < std::fabs(beforeLast * q / 2)) {
        beforeLast = last;
        last = p / q;
      } else {
        beforeLast = last = half;
      }
    } else {
      beforeLast = last = half;
    }
    a = b;
    fa = fb;
    b += std::fabs(last) > nearness ? last : std::copysign(nearness, half);
    fb = f(b);
    if (std::isnan(fb)) return {b, false};
    if ((fb > 0) == (fc > 0)) {
      c = a;
      fc = fa;
      beforeLast = last = b - a;
    }
  }
}

}  // namespace tellurix::kernel
