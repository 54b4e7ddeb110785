// Regions of what finds a statistic or a non-centrality for a probability: the exact counts and the 50-digit tails
// there and one step beyond.

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "numeric/Noncentral.h"
#include "numeric/RankStatistics.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

using Integer = boost::multiprecision::cpp_int;
using i32 = std::int32_t;

// --- Kendall's S: the largest whose upper tail is at least p ---

// For every S of n ranks, from the largest down, P(S' >= S): n! times it, by the orders with each number of inversions.
std::vector<Integer> OrdersUpTo(i32 n) {
  std::vector<Integer> counts{1};
  for (i32 m = 2; m <= n; ++m) {
    std::vector<Integer> next(counts.size() + static_cast<std::size_t>(m) - 1);
    for (std::size_t s = 0; s < counts.size(); ++s) {
      for (std::size_t j = 0; j < static_cast<std::size_t>(m); ++j) next[s + j] += counts[s];
    }
    counts = std::move(next);
  }
  for (std::size_t s = 1; s < counts.size(); ++s) counts[s] += counts[s - 1];
  return counts;
}

Region KendallInverseRegion() {
  return {"KendallFromP", "n 4 to 40, p 1e-4 to 0.4, exact integers", 0, 0, [](Random& random) -> std::optional<Point> {
            static const auto all = [] {
              std::map<i32, std::vector<Integer>> orders;
              for (i32 n = 4; n <= 40; ++n) orders[n] = OrdersUpTo(n);
              return orders;
            }();
            const i32 n = 4 + static_cast<i32>(random() % 37);
            const double p = LogUniform(random, 1e-4, 0.4);
            const auto& orders = all.at(n);
            const auto tail = [&](std::size_t inversions) { return Real(orders[inversions]) / Real(orders.back()); };
            std::size_t inversions = 0;
            while (tail(inversions) < p) ++inversions;
            const i32 wanted = n * (n - 1) / 2 - 2 * static_cast<i32>(inversions);
            if (wanted < 3) return std::nullopt;  // it is sought down to 3
            double tau = 0;
            i32 S = 0;
            i32 ifault = 0;
            KendallFromP(p, tau, S, n, ifault);
            const double exactTau = wanted / (n * (n - 1) / 2.0);
            return Point{{p, static_cast<double>(n)}, Exactly(ifault == 0 && S == wanted && tau == exactTau)};
          }};
}

// --- The Hotelling-Pabst T: the largest whose lower tail does not pass p ---

// The numbers of orders of n ranks with each sum of squared differences, one rank placed after the other.
std::map<i32, i32> SquaredDifferences(i32 n) {
  std::vector<std::map<i32, i32>> ways(std::size_t{1} << n);  // by the set of places taken
  ways[0][0] = 1;
  for (std::size_t taken = 0; taken + 1 < ways.size(); ++taken) {
    const i32 rank = __builtin_popcountll(taken);
    for (i32 place = 0; place < n; ++place) {
      const std::size_t with = taken | std::size_t{1} << place;
      if (with == taken) continue;
      for (const auto& [T, count] : ways[taken]) ways[with][T + (rank - place) * (rank - place)] += count;
    }
    ways[taken].clear();
  }
  return ways.back();
}

Region HotellingInverseRegion() {
  return {"HotellingFromP", "n 4 to 11, count of all orders", 0, 0, [](Random& random) -> std::optional<Point> {
            static const auto all = [] {
              std::map<i32, std::map<i32, i32>> counts;
              for (i32 n = 4; n <= 11; ++n) counts[n] = SquaredDifferences(n);
              return counts;
            }();
            const i32 n = 4 + static_cast<i32>(random() % 8);
            const double p = LogUniform(random, 1e-4, 0.9);
            double orders = 1;
            for (i32 m = 2; m <= n; ++m) orders *= m;
            double below = 0;  // orders with a smaller T
            double reachedThere = 0;
            i32 wanted = 0;
            for (const auto& [T, count] : all.at(n)) {
              if (below / orders > p) break;
              wanted = T;
              reachedThere = below / orders;
              below += count;
            }
            // A T that no order gives lies between two that orders give, and has the tail of the next.
            double reached = 0;
            i32 T = 0;
            i32 ifault = 0;
            HotellingFromP(p, reached, T, n, ifault);
            return Point{{p, static_cast<double>(n)},
                         Exactly(ifault == 0 && T == wanted && std::fabs(reached - reachedThere) < 1e-15)};
          }};
}

// --- Spearman's series for every n ---

// The series of AS 89 in 50 digits: upper tail of the normal deviate of rho, corrected for continuity, and four terms.
Real SpearmanSeriesReference(i32 n, double T) {
  const Real b = Real(1) / n;
  const Real n3 = (Real(n) * n * n - n) / 3;
  const Real x = (6 * (Real(T) - 1) * b / (1 / (b * b) - 1) - 1) * sqrt(1 / b - 1);
  Real y = x * x;
  const Real u =
      x * b *
      (Real("0.2274") + b * (Real("0.2531") + Real("0.1745") * b) +
       y * (Real("-0.0758") + b * (Real("0.1033") + Real("0.3932") * b) -
            y * b *
                (Real("0.0879") + Real("0.0151") * b -
                 y * (Real("0.0072") - Real("0.0831") * b + y * b * (Real("0.0131") - Real("4.6e-4") * y)))));
  const Real p = u / exp(y / 2) + Normal(x).upper;
  if (Real(T) > n3) return 0;
  return p < 0 ? Real(0) : p > 1 ? Real(1) : p;
}

Region SpearmanSeriesRegion() {
  return {"SpearmanUpperP", "n 3 to 1e5, its series in 50 digits, absolute", 1e-14, 0,
          [](Random& random) -> std::optional<Point> {
            const i32 n = static_cast<i32>(LogUniform(random, 3, 1e5));
            const double most = std::floor((std::pow(n, 3) - n) / 6);
            const double T = 2 * std::floor(Uniform(random, 1, most));
            i32 ifault = 0;
            const double p = SpearmanUpperP(n, T, ifault);
            return Point{{static_cast<double>(n), T},
                         ifault == 0 ? AbsoluteError(p, SpearmanSeriesReference(n, T)) : INFINITY};
          }};
}

// --- Non-centralities ---

// By how much P in 50 digits misses p at the non-centrality found, in units of that parameter.
template <typename Tail>
double Miss(const Tail& tail, double found, double p) {
  const Real step = Real("1e-8") * (1 + std::fabs(found));
  const Real slope = (tail(Real(found) + step) - tail(Real(found) - step)) / (2 * step);
  return static_cast<double>(abs((tail(Real(found)) - p) / slope));
}

Region NoncentralityTRegion() {
  return AtMost(300, {"NoncentralityFromT", "t 0.1 to 20, df 2 to 200, P in 50 digits, absolute", 2e-6, 0,
                      [](Random& random) -> std::optional<Point> {
                        const double t = Uniform(random, 0.1, 20);
                        const double df = std::floor(LogUniform(random, 2, 200));
                        const double p = Uniform(random, 0.005, 0.995);
                        bool failed = true;
                        const double delta = NoncentralityFromT(p, t, df, failed);
                        const auto tail = [&](const Real& at) { return NoncentralT(t, df, at); };
                        return Point{{p, t, df}, failed ? INFINITY : Miss(tail, delta, p)};
                      }});
}

Region NoncentralityChiRegion() {
  return AtMost(300, {"NoncentralityFromChi", "x 1 to 200, df 1 to 100, P in 50 digits, absolute", 2e-6, 0,
                      [](Random& random) -> std::optional<Point> {
                        const double x = Uniform(random, 1, 200);
                        const double df = std::floor(LogUniform(random, 1, 100));
                        const double central = static_cast<double>(Gamma(Real(df) / 2, Real(x) / 2).lower);
                        const double p = Uniform(random, 0.005, 0.995) * central;
                        if (p < 0.005) return std::nullopt;
                        bool failed = true;
                        const double lambda = NoncentralityFromChi(p, x, df, failed);
                        if (!failed && lambda < 1e-3) return std::nullopt;  // no room below for the slope
                        const auto tail = [&](const Real& at) { return NoncentralChi(x, df, at); };
                        return Point{{p, x, df}, failed ? INFINITY : Miss(tail, lambda, p)};
                      }});
}

std::vector<Region> InversionRegions() {
  return {KendallInverseRegion(), HotellingInverseRegion(), SpearmanSeriesRegion(), NoncentralityTRegion(),
          NoncentralityChiRegion()};
}

const bool added = AddRegions(&InversionRegions);

}  // namespace

}  // namespace tellurix::accuracy
