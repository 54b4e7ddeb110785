// Spearman's rank correlation, by the Hotelling-Pabst sum T of the squared rank differences.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"
#include "kernel/SpearmanCounts.h"

namespace tellurix::kernel {

namespace {

// Half the largest T of n ranks.
constexpr int Half(int n) { return (n * n * n - n) / 6; }

const std::uint64_t* CountsOf(int n) {
  const std::uint64_t* counts = SpearmanCounts;
  for (int m = 2; m < n; ++m) counts += Half(m) / 2 + 1;
  return counts;
}

// P(T <= 2 t) for t below the middle of the range, 0 <= t < Half(n)/2.
f64 ExactLower(int n, int t) {
  const std::uint64_t* counts = CountsOf(n);
  f64 sum = 0;
  for (int i = 0; i <= t; ++i) sum += static_cast<f64>(counts[i]);
  f64 all = 1;
  for (int m = 2; m <= n; ++m) all *= m;
  return sum / all;
}

// P(T >= 2 t) for 0 < t <= Half(n).
f64 ExactUpper(int n, int t) {
  const int mirrored = Half(n) - t;
  return mirrored < t ? ExactLower(n, mirrored) : 1 - ExactLower(n, t - 1);
}

}  // namespace

f64 SpearmanSeries(f64 n, f64 T) {
  if (!(n > 1) || !(T > 0)) return 1;
  if (T > (n * n - 1) * n / 3) return 0;
  T = 2 * std::ceil(T / 2);
  const f64 b = 1 / n;
  const f64 most = n * (n * n - 1);
  const f64 x = (6 * (T - 1) - most) / most * std::sqrt(n - 1);  // whole numbers: no digit lost in the middle
  const f64 y = x * x;
  const f64 u = x * b *
                (0.2274 + b * (0.2531 + 0.1745 * b) +
                 y * (-0.0758 + b * (0.1033 + 0.3932 * b) -
                      y * b * (0.0879 + 0.0151 * b - y * (0.0072 - 0.0831 * b + y * b * (0.0131 - 0.00046 * y)))));
  return std::clamp(u / std::exp(y / 2) + NormalTails(x).upper, 0.0, 1.0);
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 PRHO(const i32& n, const i32& T, i32& ifault) {
  ifault = n < 2 ? 1 : 0;
  if (n < 2 || T <= 0) return 1;
  if (n > SpearmanMost) return SpearmanSeries(n, T);
  const int t = T / 2 + T % 2;
  return t > Half(n) ? 0 : ExactUpper(n, t);
}
