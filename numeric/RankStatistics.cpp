#include "numeric/RankStatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "kernel/Tails.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

constexpr int KendallExact = 50;
constexpr int KendallSteps = KendallExact * (KendallExact - 1) / 4 + 1;

// A sum with what its roundings left out: T. J. Dekker (1971), Numerische Mathematik 18:224-242.
struct CarefulSum {
  double sum = 0;
  double rest = 0;
  void Add(double value) {
    const double next = sum + value;
    const double part = next - sum;
    rest += (sum - (next - part)) + (value - part);
    sum = next;
  }
};

// P(inversions <= most) over the permutations of n, for `most` below the middle of the range. The counts for m follow
// from those for m - 1: each is the sum of the last m of them.
double InversionsLower(int n, int most) {
  std::array<double, KendallSteps> counts{};
  std::array<double, KendallSteps> next{};
  counts[0] = 1;
  double all = 1;
  for (int m = 2; m <= n; ++m) {
    all *= m;
    CarefulSum window;
    for (int s = 0, last = std::min(most, m * (m - 1) / 2); s <= last; ++s) {
      window.Add(counts[s]);
      if (s >= m) window.Add(-counts[s - m]);
      next[s] = window.sum + window.rest;
    }
    std::copy_n(next.begin(), most + 1, counts.begin());
  }
  double sum = 0;
  for (int s = 0; s <= most; ++s) sum += counts[s];
  return sum / all;
}

double KendallExactUpper(int n, int S) {
  const int pairs = n * (n - 1) / 2;
  const int inversions = (pairs - S) / 2;
  if (2 * inversions < pairs) return InversionsLower(n, inversions);
  return pairs - inversions == 0 ? 1 : 1 - InversionsLower(n, pairs - inversions - 1);
}

// AS 71 (Best & Gipps 1974).
double KendallSeriesUpper(double n, double S) {
  const double x = (S - 1) / std::sqrt(n * (n - 1) * (2 * n + 5) / 18);
  std::array<double, 16> h;  // Hermite's polynomials
  h[0] = 1;
  h[1] = x;
  for (int i = 2; i < 16; ++i) h[i] = x * h[i - 1] - (i - 1) * h[i - 2];
  const double r = 1 / n;
  const double sum =
      r * (h[3] * (-0.09 + r * (0.045 + r * (-0.5325 + r * 0.506))) +
           r * (h[5] * (0.036735 + r * (-0.036735 + r * 0.3214)) + h[7] * (0.00405 + r * (-0.023336 + r * 0.07787)) +
                r * (h[9] * (-0.0033061 - r * 0.0065166) + h[11] * (-0.0001215 + r * 0.0025927) +
                     r * (h[13] * 0.00014878 + h[15] * 0.0000027338))));
  constexpr double InverseSqrtTwoPi = 0.398942280401432677939946;
  return std::clamp(kernel::NormalTails(x).upper + sum * InverseSqrtTwoPi * std::exp(-x * x / 2), 0.0, 1.0);
}

}  // namespace

double KendallUpperP(std::int32_t S, std::int32_t n, std::int32_t& ifault) {
  const std::int64_t pairs = static_cast<std::int64_t>(n) * (static_cast<std::int64_t>(n) - 1) / 2;
  ifault = n < 2 ? 1 : S > pairs || S < -pairs ? 3 : 0;
  if (ifault != 0) return MissingValue;
  // S has the parity of the number of pairs.
  const std::int64_t attainable = S + ((pairs - S) % 2 != 0 ? 1 : 0);
  if (n <= KendallExact) return KendallExactUpper(n, static_cast<int>(attainable));
  return KendallSeriesUpper(n, static_cast<double>(attainable));
}

void KendallFromP(double p, double& tau, std::int32_t& S, std::int32_t n, std::int32_t& ifault) {
  constexpr int Start = 5;
  constexpr int Step = 10;
  constexpr int Most = 1000;
  constexpr int Least = 3;
  constexpr double Gap = 1e-14;

  S = 0;
  tau = MissingValue;
  ifault = n < 2 || !(p > 0 && p < 1) ? 1 : 0;
  if (ifault != 0) return;
  const double pairs = 0.5 * n * (n - 1.0);
  const auto upperP = [&](int at) {
    std::int32_t fault = 0;
    return at > pairs ? 0 : KendallUpperP(at, n, fault);
  };
  int at = Start;
  while (at <= Most && upperP(at) >= p) at += Step;
  if (at > Most && upperP(at) >= p) at = 0;
  while (at >= Least && upperP(at) < p && std::fabs(upperP(at) - p) >= Gap) --at;
  if (at < Least) {
    ifault = 1;
    return;
  }
  // An S of the other parity has the tail of the next one.
  S = at + (static_cast<std::int64_t>(pairs) - at) % 2;
  tau = S / pairs;
}

void HotellingFromP(double p, double& reached, std::int32_t& T, std::int32_t n, std::int32_t& ifault) {
  constexpr std::int64_t Start = -5;
  constexpr std::int64_t Step = 10;
  constexpr double Gap = 1e-14;
  constexpr std::int64_t Most = std::numeric_limits<std::int32_t>::max();

  T = 0;
  reached = MissingValue;
  ifault = n < 2 || !(p > 0 && p < 1) ? 1 : 0;
  if (ifault != 0) return;
  const auto lowerP = [&](std::int64_t at) {
    std::int32_t fault = 0;
    return 1 - PRHO(n, static_cast<std::int32_t>(at), fault);
  };
  // The first of Start, Start + Step, ... above p; by halving, for there may be millions below it.
  std::int64_t below = 0;
  std::int64_t above = (Most - Start) / Step;
  if (lowerP(Start + above * Step) <= p) {
    ifault = 1;
    return;
  }
  while (above - below > 1) {
    const std::int64_t middle = (below + above) / 2;
    (lowerP(Start + middle * Step) <= p ? below : above) = middle;
  }
  std::int64_t at = Start + above * Step;
  while (lowerP(at) > p && std::fabs(lowerP(at) - p) >= Gap) --at;
  at += at % 2;  // an odd T has the tail of the next even one
  T = static_cast<std::int32_t>(at);
  reached = lowerP(at);
}

double SpearmanUpperP(std::int32_t n, double T, std::int32_t& ifault) {
  ifault = n < 2 || std::isnan(T) || T == MissingValue ? 1 : 0;
  return ifault != 0 ? 1 : kernel::SpearmanSeries(n, T);
}

}  // namespace tellurix
