// Regions of the tests on counts and of what must be right to the bit: machine constants, the uniform stream.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "kernel/Kernel.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

struct Sides {
  Real oneSided;
  Real twoSided;
};

// The smaller tail, and all the outcomes that are no likelier; what is equal but for a relative 1e-7 counts as equal.
Sides ExactTest(const std::vector<Real>& exactly, int r) {
  const Real limit = exactly[r] * (1 + Real("1e-7"));
  Sides sides{0, 0};
  const Real orFewer = std::accumulate(exactly.begin(), exactly.begin() + r + 1, Real(0));
  const Real orMore = std::accumulate(exactly.begin() + r, exactly.end(), Real(0));
  sides.oneSided = orFewer < orMore ? orFewer : orMore;
  for (const Real& one : exactly) {
    if (one <= limit) sides.twoSided += one;
  }
  return sides;
}

Sides MidTest(const std::vector<Real>& exactly, int r) {
  const Real oneSided = ExactTest(exactly, r).oneSided - exactly[r] / 2;
  return {oneSided, oneSided > Real(0.5) ? Real(1) : Real(2 * oneSided)};
}

Region BinomialTestRegion(const std::string& function, decltype(BINO2)* test,
                          Sides (*wanted)(const std::vector<Real>&, int)) {
  const auto draw = [=](Random& random) -> std::optional<Point> {
    const i32 n = static_cast<i32>(LogUniform(random, 1, 200));
    const double p = random() % 4 == 0 ? 0.5 : Uniform(random, 0, 1);
    const i32 r = static_cast<i32>(random() % static_cast<unsigned>(n + 1));
    double oneSided = 0;
    double twoSided = 0;
    i32 ifault = 0;
    test(n, p, r, oneSided, twoSided, ifault);
    const Sides sides = wanted(Binomials(n, p), r);
    const double error = std::max(RelativeError(oneSided, sides.oneSided), RelativeError(twoSided, sides.twoSided));
    return Point{{static_cast<double>(n), p, static_cast<double>(r)}, ifault == 0 ? error : INFINITY};
  };
  return AtMost(500, {function, "n to 200, sums of 50-digit terms", 1e-13, 1e-15, draw});
}

// By Newton's method on the tails of the gamma distribution.
Region PoissonMeanRegion(i32 which, const std::string& name) {
  return AtMost(
      500, {"POISSONI", name, 1e-12, 1e-15, [=](Random& random) -> std::optional<Point> {
              const i32 n = static_cast<i32>(LogUniform(random, 1, 1e4));
              // No mean makes exactly n likelier than the mean n does.
              const double most = std::exp(n * std::log(n) - n - std::lgamma(n + 1.0));
              double p = LogUniform(random, 1e-12, 0.5);
              if (which == 3) p *= most;
              if (which != 3 && random() % 2 == 0) p = 1 - p;
              double mean = 0;
              double orMore = 0;
              double orFewer = 0;
              double exactly = 0;
              i32 ifault = 0;
              POISSONI(p, n, which, mean, orMore, orFewer, exactly, ifault);
              const auto root = Refined(mean, [&](const Real& at) {
                const Real density = exp(n * log(at) - at - LogGamma(Real(n) + 1));
                if (which == 3) return Real((density - p) / (density * (n / at - 1)));
                if (which == 1) return Real((Gamma(n, at).lower - p) * at / (density * n));
                return Real((p - Gamma(Real(n) + 1, at).upper) / density);
              });
              return Point{{p, static_cast<double>(n)}, root && ifault == 0 ? RelativeError(mean, *root) : INFINITY};
            }});
}

Region MachineRegion() {
  const Real two = 2;
  const std::vector<std::pair<i32, Real>> constants{
      {1, pow(two, -52)}, {2, pow(two, -1022)}, {3, pow(two, 1024) - pow(two, 971)}, {0, 0}, {4, 0}};
  return Listed("DPMACH", "jobs 0 to 4, exact", 0, constants, [](const auto& constant) {
    return Point{{static_cast<double>(constant.first)}, Exactly(Real(DPMACH(constant.first)) == constant.second)};
  });
}

Region StreamRegion() {
  return AtMost(100, {"INITMTRND, MTRND", "the first 2000 after a seed, exact", 0, 0, [](Random& random) {
                        const i32 seed = static_cast<i32>(random());
                        std::mt19937 standard(static_cast<std::uint32_t>(seed));
                        INITMTRND(seed);
                        bool right = true;
                        for (int i = 0; i < 2000; ++i) right &= MTRND() == (standard() + 0.5) / 4294967296.0;
                        return std::optional(Point{{static_cast<double>(seed)}, Exactly(right)});
                      }});
}

std::vector<Region> CountRegions() {
  return {
      BinomialTestRegion("BINO2", &BINO2, &ExactTest),
      BinomialTestRegion("BINOMID", &BINOMID, &MidTest),
      PoissonMeanRegion(1, "from P of n or more, n to 1e4, p 1e-12 to 1 - 1e-12"),
      PoissonMeanRegion(2, "from P of n or fewer, n to 1e4, p 1e-12 to 1 - 1e-12"),
      PoissonMeanRegion(3, "from P of exactly n, n to 1e4, to half the largest"),
      MachineRegion(),
      StreamRegion(),
  };
}

const bool added = AddRegions(&CountRegions);

}  // namespace

}  // namespace tellurix::accuracy
