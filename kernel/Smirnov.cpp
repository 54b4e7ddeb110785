// The two-sample Smirnov statistic.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

constexpr f64 Pi = 3.14159265358979323846264;

// Up to this many lattice points, on that many diagonals, the paths are followed. Beyond, the limiting distribution
// serves for samples that are not smaller than LeastLimit.
constexpr f64 MostPoints = 2e9;
constexpr f64 MostDiagonals = 1e8;
constexpr i64 LeastLimit = 100;

// The limiting distribution: 2 (e^(-2 x^2) - e^(-8 x^2) + ...), near 0 in the form of Jacobi's theta functions.
f64 KolmogorovUpper(f64 x) {
  if (x < 0.1) return 1;
  f64 sum = 0;
  if (x < 0.9) {
    for (int i = 1; i < 10; i += 2) sum += std::exp(-i * i * Pi * Pi / (8 * x * x));
    return 1 - std::sqrt(2 * Pi) / x * sum;
  }
  for (int i = 1; i < 10; ++i) sum += (i % 2 == 1 ? 2 : -2) * std::exp(-2.0 * i * i * x * x);
  return sum;
}

// P(D >= d) of large samples, `sizes` being n1 n2 / (n1 + n2), with the next term of the expansion for one sample,
// which is the case of a second sample that is far larger: z + 1/(6 sqrt(n)) for z (J. Vrbik 2018, Pioneer Journal of
// Theoretical and Applied Statistics 15:15-23).
f64 LargeSamples(f64 d, f64 sizes) {
  const f64 root = std::sqrt(sizes);
  return KolmogorovUpper(d * root + 1 / (6 * root));
}

// ln C(2 n, n + j) - ln C(2 n, n) for 0 < j <= n, by Stirling's formula throughout.
f64 LogCentralRatio(f64 n, f64 j) {
  if (j == n) return std::log(Pi * n) / 2 - n * std::log(4.0) + 2 * StirlingRemainder(n) - StirlingRemainder(2 * n);
  const f64 u = j / n;
  const f64 logSquare = std::log1p(-u * u);
  return -n * (2 * u * std::atanh(u) + logSquare) - logSquare / 2 + 2 * StirlingRemainder(n) -
         StirlingRemainder(n + j) - StirlingRemainder(n - j);
}

// P(D >= c/n) of two samples of n by reflection: twice the alternating sum of C(2 n, n + k c)/C(2 n, n) over k >= 1
// (B. V. Gnedenko & V. S. Korolyuk 1951, Doklady Akademii Nauk SSSR 80:525-528).
f64 EqualSizes(f64 n, f64 c) {
  f64 sum = 0;
  f64 sign = 2;
  for (f64 j = c; j <= n; j += c) {
    const f64 term = std::exp(LogCentralRatio(n, j));
    sum += sign * term;
    if (term < 1e-18 * sum) break;
    sign = -sign;
  }
  return sum;
}

i64 FloorDivide(i64 above, i64 below) { return above >= 0 ? above / below : -((-above - 1) / below) - 1; }

// The share of the paths of m steps right and n steps up that touch |i b - j a| >= q, with i and j the steps taken so
// far and a/b = m/n in lowest terms. It follows the share of the touching paths among those to each point of the
// diagonal i + j = s, where nothing cancels and nothing overflows (T. Viehmann 2021, Numerically more stable
// computation of the p-values for the two-sample Kolmogorov-Smirnov test, arXiv:2102.08037). `share` has room for m + 2
// values.
f64 TouchingPaths(i64 m, i64 n, i64 a, i64 b, i64 q, f64* share) {
  std::fill(share, share + m + 2, 1.0);
  share += 1;  // share[i] is that of the point (i, s - i), 1 for the points that touch
  share[0] = 0;
  i64 begin = 0;
  for (i64 s = 1; s <= m + n; ++s) {
    // The points within: -q < i (a + b) - s a < q.
    const i64 first = std::max({FloorDivide(s * a - q, a + b) + 1, i64{0}, s - n});
    const i64 end = std::min({FloorDivide(s * a + q - 1, a + b) + 1, m + 1, s + 1});
    const f64 perS = 1 / static_cast<f64>(s);
    // From the right to the left, for the share at i comes from those at i and i - 1.
    for (i64 i = end - 1; i >= first; --i) {
      const f64 right = static_cast<f64>(i);
      share[i] = (right * share[i - 1] + (static_cast<f64>(s) - right) * share[i]) * perS;
    }
    for (; begin < first; ++begin) share[begin] = 1;
  }
  return share[m];
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 KSP2(const i32& n1, const i32& n2, const f64& d, i32& ifault) {
  ifault = n1 < 1 || n2 < 1 || std::isnan(d) ? 1 : 0;
  if (ifault != 0 || d <= 0) return ifault != 0 ? 0 : 1;
  const i64 m = std::min(n1, n2);
  const i64 n = std::max(n1, n2);
  const i64 divisor = std::gcd(m, n);
  // D is a multiple of 1/steps; the tolerance is for the rounding of the two quotients it came from.
  const f64 steps = static_cast<f64>(m / divisor) * static_cast<f64>(n);
  const f64 q = std::ceil(d * steps - std::max(1e-7, 8 * Epsilon * steps));
  if (q > steps) return 0;
  if (q < 1) return 1;
  const f64 sizes = static_cast<f64>(m) * (static_cast<f64>(n) / static_cast<f64>(m + n));
  if (m == n) return std::clamp(EqualSizes(static_cast<f64>(n), q), 0.0, 1.0);
  if (2 * q * static_cast<f64>(divisor) > MostPoints || static_cast<f64>(m + n) > MostDiagonals) {
    ifault = m < LeastLimit ? 3 : 0;
    return ifault != 0 ? 0 : std::clamp(LargeSamples(d, sizes), 0.0, 1.0);
  }
  const std::unique_ptr<f64[]> share(new (std::nothrow) f64[static_cast<std::size_t>(m) + 2]);
  if (share == nullptr) {
    ifault = 2;
    return 0;
  }
  return TouchingPaths(m, n, m / divisor, n / divisor, static_cast<i64>(q), share.get());
}
