// Regions of the exact distributions of rank statistics: enumeration, exact integers, reflection in 50 digits.

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <map>
#include <memory>
#include <numeric>

#include "kernel/Tails.h"
#include "numeric/RankStatistics.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

using Integer = boost::multiprecision::cpp_int;
using i64 = std::int64_t;

Real Ratio(const Integer& above, const Integer& below) { return Real(above) / Real(below); }

// --- Spearman ---

struct Hotelling {
  i32 n;
  i32 T;
  Real p;
};

// P(T' >= T) for every T that n ranks can give, by all permutations.
void Enumerate(i32 n, std::vector<Hotelling>& cases) {
  std::vector<i32> p(static_cast<std::size_t>(n));
  std::iota(p.begin(), p.end(), 0);
  std::map<i32, int> counts;
  int all = 0;
  do {
    i32 T = 0;
    for (i32 i = 0; i < n; ++i) T += (p[static_cast<std::size_t>(i)] - i) * (p[static_cast<std::size_t>(i)] - i);
    ++counts[T];
    ++all;
  } while (std::next_permutation(p.begin(), p.end()));
  int above = all;
  for (const auto& [T, count] : counts) {
    cases.push_back({n, T, Real(above) / all});
    above -= count;
  }
}

double Prho(i32 n, i32 T) {
  i32 ifault = 0;
  const double p = PRHO(n, T, ifault);
  return ifault == 0 ? p : INFINITY;
}

Region EnumeratedHotellingRegion() {
  std::vector<Hotelling> cases;
  for (i32 n = 2; n <= 8; ++n) Enumerate(n, cases);
  return Listed("PRHO", "n 2 to 8, all permutations", 1e-15, cases, [](const Hotelling& at) {
    return Point{{static_cast<double>(at.n), static_cast<double>(at.T)}, RelativeError(Prho(at.n, at.T), at.p)};
  });
}

// The second and fourth moments of rho, of which M. G. Kendall & J. D. Gibbons (1990), Rank Correlation Methods, 5th
// edition, give the fourth as 3 (25 n^3 - 38 n^2 - 35 n + 72) / (25 n (n + 1) (n - 1)^3).
Region HotellingMomentRegion() {
  std::vector<i32> sizes(20);
  std::iota(sizes.begin(), sizes.end(), 3);
  return Listed("PRHO", "n 3 to 22, second and fourth moment", 1e-13, sizes, [](i32 n) {
    const i32 most = (n * n * n - n) / 3;
    Real second = 0;
    Real fourth = 0;
    for (i32 T = 0; T <= most; T += 2) {
      const Real square = pow(1 - Real(2 * T) / most, 2);
      const Real p = Real(Prho(n, T)) - Prho(n, T + 2);
      second += p * square;
      fourth += p * square * square;
    }
    const Real m = n - 1;
    const Real wanted = 3 * (25 * Real(n) * n * n - 38 * n * n - 35 * n + 72) / (25 * Real(n) * (n + 1) * m * m * m);
    return Point{{static_cast<double>(n)},
                 static_cast<double>(std::max<Real>(abs(second * m - 1), abs(fourth / wanted - 1)))};
  });
}

Region HotellingSeriesRegion() {
  return {"PRHO", "its series above n 22, at 22 against the counts, absolute", 5e-5, 0,
          [](Random& random) -> std::optional<Point> {
            const i32 T = static_cast<i32>(2 * (random() % 1772));
            return Point{{22, static_cast<double>(T)}, AbsoluteError(kernel::SpearmanSeries(22, T), Prho(22, T))};
          }};
}

// --- Kendall ---

// For every n to 60 the permutations with at most so many inversions, from those of n - 1.
const std::vector<std::vector<Integer>>& InversionsUpTo() {
  static const auto sums = [] {
    std::vector<std::vector<Integer>> all(61);
    std::vector<Integer> counts{1};
    for (std::size_t n = 2; n <= 60; ++n) {
      std::vector<Integer> next(counts.size() + n - 1);
      for (std::size_t s = 0; s < counts.size(); ++s) {
        for (std::size_t j = 0; j < n; ++j) next[s + j] += counts[s];
      }
      counts = std::move(next);
      all[n].resize(counts.size());
      std::partial_sum(counts.begin(), counts.end(), all[n].begin());
    }
    return all;
  }();
  return sums;
}

Region KendallRegion(i32 least, i32 most, bool absolute, double worst, const std::string& name) {
  return {"KendallUpperP", name, worst, 0, [=](Random& random) -> std::optional<Point> {
            const i32 n = least + static_cast<i32>(random() % static_cast<unsigned>(most - least + 1));
            const auto& upTo = InversionsUpTo()[static_cast<std::size_t>(n)];
            const std::size_t inversions = random() % upTo.size();
            const i32 S = n * (n - 1) / 2 - 2 * static_cast<i32>(inversions);
            i32 ifault = 0;
            const double p = KendallUpperP(S, n, ifault);
            const Real wanted = Ratio(upTo[inversions], upTo.back());
            const double error = absolute ? AbsoluteError(p, wanted) : RelativeError(p, wanted);
            return Point{{static_cast<double>(S), static_cast<double>(n)}, ifault == 0 ? error : INFINITY};
          }};
}

// --- Smirnov ---

// The share of all orders of the pooled sample in which m n D is at least q, by the number of orders to each point of
// the lattice.
Real CountedSmirnov(i32 m, i32 n, i64 q) {
  std::vector<Integer> inside(static_cast<std::size_t>(m) + 1);
  std::vector<Integer> all(inside.size());
  inside[0] = all[0] = 1;
  for (i32 j = 0; j <= n; ++j) {
    for (i32 i = 0; i <= m; ++i) {
      const auto at = static_cast<std::size_t>(i);
      if (i > 0) {
        inside[at] += inside[at - 1];
        all[at] += all[at - 1];
      }
      if (std::abs(i64{i} * n - i64{j} * m) >= q) inside[at] = 0;
    }
  }
  return Ratio(all.back() - inside.back(), all.back());
}

// P(n D >= k) for two samples of n, by reflection: 2 sum (-1)^(i - 1) C(2n, n - ik) / C(2n, n).
Real ReflectedSmirnov(i32 n, i32 k) {
  const Real middle = 2 * LogGamma(Real(n) + 1);
  Real sum = 0;
  for (i64 shift = k, sign = 1; shift <= n; shift += k, sign = -sign) {
    const Real term = exp(middle - LogGamma(Real(n - shift) + 1) - LogGamma(Real(n + shift) + 1));
    sum += sign * term;
    if (term < Real("1e-40") * sum) break;
  }
  return 2 * sum;
}

Point SmirnovPoint(i32 m, i32 n, double d, const Real& wanted) {
  i32 ifault = 0;
  const double p = KSP2(m, n, d, ifault);
  return {{static_cast<double>(m), static_cast<double>(n), d}, ifault == 0 ? RelativeError(p, wanted) : INFINITY};
}

Region CountedSmirnovRegion(double low, double high, double worst, const std::string& name) {
  return {"KSP2", name, worst, 0, [=](Random& random) -> std::optional<Point> {
            const i32 m = static_cast<i32>(LogUniform(random, low, high + 0.999));
            const i32 n = static_cast<i32>(LogUniform(random, low, high + 0.999));
            const i64 q = 1 + static_cast<i64>(random() % static_cast<unsigned>(m * n));
            return SmirnovPoint(m, n, static_cast<double>(q) / (m * n), CountedSmirnov(m, n, q));
          }};
}

// D in units of the limiting distribution; with `off` 1 the sizes differ, and the limit itself is meant.
Region ReflectedSmirnovRegion(double low, double high, i32 off, double worst, const std::string& name) {
  return AtMost(100, {"KSP2", name, worst, 0, [=](Random& random) -> std::optional<Point> {
                        const i32 n = static_cast<i32>(LogUniform(random, low, high));
                        const double gap = Uniform(random, 0.4, 3) * std::sqrt(2.0 * n);
                        const i32 k = std::min(n, std::max(1, static_cast<i32>(gap)));
                        return SmirnovPoint(n, n - off, static_cast<double>(k) / n, ReflectedSmirnov(n, k));
                      }});
}

// --- rank sum ---

struct Pool {
  std::vector<i32> ranks;  // doubled, rising
  i64 total = 0;
};

Pool Tied(const std::vector<i32>& runs) {
  Pool pool;
  i32 before = 0;
  for (const i32 run : runs) {
    pool.ranks.insert(pool.ranks.end(), static_cast<std::size_t>(run), 2 * before + run + 1);
    before += run;
  }
  pool.total = std::accumulate(pool.ranks.begin(), pool.ranks.end(), i64{0});
  return pool;
}

Pool DrawnPool(Random& random, i32 size, i32 longestRun) {
  std::vector<i32> runs;
  for (i32 left = size; left > 0; left -= runs.back())
    runs.push_back(std::min(left, 1 + static_cast<i32>(random() % static_cast<unsigned>(longestRun))));
  return Tied(runs);
}

// The number of ways to draw n1 of the ranks with each sum, in integers.
std::vector<Integer> DrawnSums(const Pool& pool, i32 n1) {
  const auto sums = static_cast<std::size_t>(pool.total) + 1;
  std::vector<std::vector<Integer>> ways(static_cast<std::size_t>(n1) + 1, std::vector<Integer>(sums));
  ways[0][0] = 1;
  for (const i32 rank : pool.ranks) {
    const auto step = static_cast<std::size_t>(rank);
    for (std::size_t j = ways.size() - 1; j > 0; --j) {
      for (std::size_t s = sums; s-- > step;) {
        if (!ways[j - 1][s - step].is_zero()) ways[j][s] += ways[j - 1][s - step];
      }
    }
  }
  return ways.back();
}

Point RankSumPoint(const Pool& pool, i32 n1, const std::vector<Integer>& ways, i32 twiceU) {
  const i32 n2 = static_cast<i32>(pool.ranks.size()) - n1;
  Integer low = 0;
  Integer high = 0;
  Integer all = 0;
  for (i64 s = 0; s <= pool.total; ++s) {
    const Integer& count = ways[static_cast<std::size_t>(s)];
    const i64 u = 2 * i64{n1} * n2 + i64{n1} * (n1 + 1) - s;
    if (u <= twiceU) low += count;
    if (u >= twiceU) high += count;
    all += count;
  }
  i32 ifault = 0;
  double upper = -1;
  const double lower = WMWPX(n1, n2, pool.ranks[0], twiceU, upper, ifault);
  const double error = std::max(RelativeError(lower, Ratio(low, all)), RelativeError(upper, Ratio(high, all)));
  return {{static_cast<double>(n1), static_cast<double>(n2), static_cast<double>(twiceU)},
          ifault == 0 ? error : INFINITY};
}

Region RankSumRegion(i32 longestRun, const std::string& name) {
  return {"WMWPX", name, 1e-13, 0, [=](Random& random) -> std::optional<Point> {
            const i32 size = 2 + static_cast<i32>(random() % 20);
            const i32 n1 = 1 + static_cast<i32>(random() % static_cast<unsigned>(size - 1));
            const Pool pool = DrawnPool(random, size, longestRun);
            const i32 twiceU = static_cast<i32>(random() % static_cast<unsigned>(2 * n1 * (size - n1) + 1));
            return RankSumPoint(pool, n1, DrawnSums(pool, n1), twiceU);
          }};
}

// 30 and 80, the largest with ties that callers pass.
Region LargestRankSumRegion(i32 n1, const std::string& name) {
  Random random(11);
  const auto pool = std::make_shared<Pool>(DrawnPool(random, 110, 5));
  const auto ways = std::make_shared<std::vector<Integer>>(DrawnSums(*pool, n1));
  std::vector<i32> cases;
  for (i32 twiceU = 0; twiceU <= 4800; twiceU += 437) cases.push_back(twiceU);
  return Listed("WMWPX", name, 1e-13, cases, [=](i32 twiceU) { return RankSumPoint(*pool, n1, *ways, twiceU); });
}

std::vector<Region> RankRegions() {
  return {
      EnumeratedHotellingRegion(),
      HotellingMomentRegion(),
      HotellingSeriesRegion(),
      KendallRegion(2, 50, false, 3e-15, "n 2 to 50, exact integers"),
      KendallRegion(51, 60, true, 3e-6, "n 51 to 60, exact integers, absolute"),
      CountedSmirnovRegion(1, 12, 1e-13, "sizes 1 to 12, count of all orders"),
      AtMost(20, CountedSmirnovRegion(50, 220, 1e-12, "sizes 50 to 220, count of all orders")),
      ReflectedSmirnovRegion(10, 1e6, 0, 1e-12, "two of 10 to 1e6, reflection in 50 digits"),
      ReflectedSmirnovRegion(1e7, 4e7, 1, 3e-3, "1e7 to 4e7, by its limit, reflection in 50 digits"),
      RankSumRegion(1, "2 to 21 ranks, exact count of all draws"),
      RankSumRegion(6, "2 to 21 ranks with ties, exact count of all draws"),
      LargestRankSumRegion(30, "30 and 80 with ties, exact count of all draws"),
      LargestRankSumRegion(80, "80 and 30 with ties, exact count of all draws"),
  };
}

const bool added = AddRegions(&RankRegions);

}  // namespace

}  // namespace tellurix::accuracy
