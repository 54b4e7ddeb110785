// Regions of the studentized range, against values of an integration in many digits, and of Dunnett's distribution,
// against another way of integrating.

#include <algorithm>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <cmath>
#include <iterator>

#include "kernel/Kernel.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

// --- studentized range ---

struct Row {
  double q;
  double k;
  double df;
  i32 ranges;
  double p;
};

const Row Rows[] = {
#include "tests/kernel/StudentizedRangeValues.inc"
};

template <typename Condition>
std::vector<Row> RowsWith(Condition condition) {
  std::vector<Row> rows;
  std::copy_if(std::begin(Rows), std::end(Rows), std::back_inserter(rows), condition);
  return rows;
}

Point RowPoint(const Row& row, double error) {
  return {{row.q, row.k, row.df, static_cast<double>(row.ranges), row.p}, error};
}

Region ProbsrRegion() {
  return Listed("PROBSR", "k 2 to 200, df 2 to infinity, tabulated to 17 figures", 1e-11,
                RowsWith([](const Row& row) { return row.ranges == 1; }),
                [](const Row& row) { return RowPoint(row, RelativeError(PROBSR(row.q, row.k, row.df), row.p)); });
}

Region QuantsrRegion() {
  return Listed("QUANTSR", "p to 0.9999, tabulated to 17 figures", 1e-9,
                RowsWith([](const Row& row) { return row.ranges == 1 && row.p < 0.9999; }),
                [](const Row& row) { return RowPoint(row, RelativeError(QUANTSR(row.p, row.k, row.df), row.q)); });
}

Region DmcaRegion() {
  return Listed("DMCA", "one range and more, tabulated to 17 figures", 1e-11,
                RowsWith([](const Row& row) { return row.k == std::floor(row.k); }), [](const Row& row) {
                  i32 ifault = 0;
                  double p = -1;
                  DMCA(row.q, static_cast<i32>(row.k), row.df, row.ranges, p, ifault);
                  return RowPoint(row, ifault == 0 ? RelativeError(p, row.p) : INFINITY);
                });
}

Region Ppq2Region() {
  return Listed("PPQ2", "one range and more, p to 0.9999, tabulated to 17 figures", 1e-9,
                RowsWith([](const Row& row) { return row.k == std::floor(row.k) && row.p < 0.9999; }),
                [](const Row& row) {
                  i32 ifault = 0;
                  double q = -1;
                  PPQ2(row.p, static_cast<i32>(row.k), row.df, row.ranges, q, ifault);
                  return RowPoint(row, ifault == 0 ? RelativeError(q, row.q) : INFINITY);
                });
}

// --- Dunnett ---

// P(D > d) by Gauss-Kronrod rules over S and the control's deviate, 1 less the probability of none beyond.
double IntegratedDunnett(double d, double df, const std::vector<i32>& sizes) {
  using Rule = boost::math::quadrature::gauss_kronrod<double, 31>;
  const double logConstant = std::log(2.0) + df / 2 * std::log(df / 2) - std::lgamma(df / 2);
  const auto normal = [](double x) { return std::erfc(-x / std::sqrt(2.0)) / 2; };
  const auto none = [&](double s) {
    const auto atControl = [&](double z) {
      double product = std::exp(-z * z / 2) / std::sqrt(2 * std::acos(-1.0));
      for (std::size_t i = 1; i < sizes.size(); ++i) {
        const double lambda = std::sqrt(sizes[i] / static_cast<double>(sizes[i] + sizes[0]));
        const double rest = std::sqrt(1 - lambda * lambda);
        product *= normal((d * s - lambda * z) / rest) - normal((-d * s - lambda * z) / rest);
      }
      return product;
    };
    return std::exp(logConstant + (df - 1) * std::log(s) - df * s * s / 2) *
           Rule::integrate(atControl, -9.0, 9.0, 8, 1e-11);
  };
  const double width = 9 / std::sqrt(2 * df);
  return 1 - Rule::integrate(none, std::max(1e-9, 1 - width), 1 + 1.5 * width, 6, 1e-10);
}

struct Comparison {
  double df;
  std::vector<i32> sizes;
};

Comparison Drawn(Random& random) {
  Comparison drawn{std::round(LogUniform(random, 5, 400)), {}};
  drawn.sizes.resize(2 + random() % 7);
  for (auto& size : drawn.sizes) size = static_cast<i32>(LogUniform(random, 1, 100));
  return drawn;
}

Region DmccRegion() {
  return AtMost(20, {"DMCC", "1 to 7 comparisons, df 5 to 400, other integration, absolute", 1e-9, 0,
                     [](Random& random) -> std::optional<Point> {
                       const auto [df, sizes] = Drawn(random);
                       const double d = Uniform(random, 0.5, 4);
                       i32 ifault = 0;
                       double p = -1;
                       DMCC(d, static_cast<i32>(sizes.size()), df, sizes[0], p, ifault);
                       const double error = AbsoluteError(p, IntegratedDunnett(d, df, sizes));
                       return Point{{d, df, static_cast<double>(sizes.size())}, ifault == 0 ? error : INFINITY};
                     }});
}

// The error in d from that in p and the slope.
Region Ppd2Region() {
  return AtMost(20, {"PPD2", "1 to 7 comparisons, p 0.01 to 0.5, other integration", 1e-9, 0,
                     [](Random& random) -> std::optional<Point> {
                       const auto [df, sizes] = Drawn(random);
                       const double p = LogUniform(random, 0.01, 0.5);
                       i32 ifault = 0;
                       double d = -1;
                       PPD2(p, static_cast<i32>(sizes.size()), df, sizes[0], d, ifault);
                       const double reached = IntegratedDunnett(d, df, sizes);
                       const double slope = (IntegratedDunnett(d * 1.001, df, sizes) - reached) / (d * 0.001);
                       return Point{{p, df, static_cast<double>(sizes.size())},
                                    ifault == 0 ? std::fabs((reached - p) / slope / d) : INFINITY};
                     }});
}

std::vector<Region> MultipleComparisonsRegions() {
  return {ProbsrRegion(), QuantsrRegion(), DmcaRegion(), Ppq2Region(), DmccRegion(), Ppd2Region()};
}

const bool added = AddRegions(&MultipleComparisonsRegions);

}  // namespace

}  // namespace tellurix::accuracy
