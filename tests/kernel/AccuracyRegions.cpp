#include "tests/kernel/AccuracyRegions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

// A local static, for the lists are added before main() in no certain order.
std::vector<std::vector<Region> (*)()>& Lists() {
  static std::vector<std::vector<Region> (*)()> lists;
  return lists;
}

RegionResult Measure(const Region& region, int points) {
  points = std::min(points, region.mostPoints);
  Random random(20240607);
  std::vector<double> errors;
  RegionResult result{.function = region.function,
                      .region = region.name,
                      .wanted = points,
                      .worstBound = region.worstBound,
                      .medianBound = region.medianBound};
  for (int tries = 0; tries < 200 * points && static_cast<int>(errors.size()) < points; ++tries) {
    const auto point = region.draw(random);
    if (!point) continue;
    const double error = std::isnan(point->error) ? INFINITY : point->error;
    errors.push_back(error);
    if (error < result.worst) continue;
    result.worst = error;
    result.worstPoint.clear();
    for (const double argument : point->arguments) {
      std::array<char, 40> text{};
      std::snprintf(text.data(), text.size(), "%s%.17g", result.worstPoint.empty() ? "" : ", ", argument);
      result.worstPoint += text.data();
    }
  }
  result.points = static_cast<int>(errors.size());
  if (!errors.empty()) {
    const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
    std::nth_element(errors.begin(), middle, errors.end());
    result.median = *middle;
  }
  return result;
}

}  // namespace

bool AddRegions(std::vector<Region> (*regions)()) {
  Lists().push_back(regions);
  return true;
}

std::vector<RegionResult> MeasureRegions(int points) {
  std::vector<RegionResult> results;
  for (const auto& list : Lists()) {
    for (const Region& region : list()) results.push_back(Measure(region, points));
  }
  std::stable_sort(results.begin(), results.end(),
                   [](const RegionResult& a, const RegionResult& b) { return a.function < b.function; });
  return results;
}

double ReferenceDisagreement() {
  double worst = 0;
  const auto compare = [&](const Real& got, const Real& wanted) {
    worst = std::max(worst, static_cast<double>(abs((got - wanted) / wanted)));
  };
  for (const double x : {1e-3, 0.7, 3.0, 25.0, 300.0}) {
    // Q(3, x), I_x(2, 3) and I_x(1/2, 1/2) in closed form.
    compare(Gamma(3, x).upper, exp(-Real(x)) * (1 + Real(x) + Real(x) * x / 2));
    const Real u = Real(x) / 301;
    compare(Beta(u, 1 - u, 2, 3).lower, u * u * (6 - 8 * u + 3 * u * u));
    compare(Beta(u, 1 - u, Real(0.5), Real(0.5)).lower, 2 * asin(sqrt(u)) / boost::math::constants::pi<Real>());
  }
  for (const double a : {0.75, 12.0, 433.25}) {
    for (const double b : {0.5, 30.0, 1000.5}) {
      const Real x = Real(a) / (a + b) * Real(0.93);
      const Real y = 1 - x;
      Real sum = 1;
      Real term = 1;
      for (int n = 0; term > sum * Tiny; ++n) sum += term *= (Real(a) + b + n) * x / (Real(a) + 1 + n);
      compare(Beta(x, y, a, b).lower, BetaPower(x, y, a, b) * sum / a);
    }
    // The recurrence P(a, x) - P(a + 1, x) = x^a e^-x / Gamma(a + 1) across both methods.
    const Real x = Real(a) + Real(1.5);
    compare(Gamma(a, x).lower - Gamma(Real(a) + 1, x).lower, exp(a * log(x) - x - LogGamma(Real(a) + 1)));
  }
  return worst;
}

}  // namespace tellurix::accuracy
