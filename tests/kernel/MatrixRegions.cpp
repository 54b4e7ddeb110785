// Regions of least squares, on the certified sets and against 100 digits; of singular values, inverses and orders.

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/ExactSolve.h"
#include "tests/kernel/Reference.h"
#include "tests/kernel/StrdRegression.h"

namespace tellurix::accuracy {

namespace {

// --- least squares ---

double WorstOf(const std::vector<f64>& got, const std::vector<f64>& wanted) {
  double worst = got.size() == wanted.size() && !got.empty() ? 0 : INFINITY;
  for (std::size_t i = 0; i < std::min(got.size(), wanted.size()); ++i) {
    // A certified 0 is met by what is 0 to as many digits as are certified.
    worst = std::max(worst, wanted[i] == 0 ? std::fabs(got[i]) : RelativeError(got[i], wanted[i]));
  }
  return worst;
}

// Each set is a region of one point. What is missing of 15 digits was lost in reading the decimals.
void AddCertified(const std::string& name, std::vector<Region>& regions) {
  const auto set = strd::Read(name);
  const std::vector<i32> one{set.rows};
  const auto point = [](i32 rows, const strd::Fit& fit, double error) {
    return Point{{static_cast<double>(rows)}, fit.status == 0 ? error : INFINITY};
  };
  regions.push_back(Listed("GLSQR", "StRD " + name + ", certified coefficients and sums", 1e-13, one, [=](i32 rows) {
    const auto fit = strd::FitOf(set);
    return point(rows, fit,
                 std::max(WorstOf(fit.coefficients, set.coefficients),
                          WorstOf({fit.residualSS, fit.regressionSS}, {set.residualSS, set.regressionSS})));
  }));
  regions.push_back(Listed("RCOVARB", "StRD " + name + ", certified standard errors", 1e-13, one, [=](i32 rows) {
    const auto fit = strd::FitOf(set);
    return point(rows, fit, WorstOf(fit.errors, set.errors));
  }));
}

struct Given {
  std::string name;
  bool rounded;  // powers rounded to doubles
};

// Of the data as they stand in doubles; standard errors that ought to be 0 to 1e-20.
Region AsGivenRegion(bool errors) {
  std::vector<Given> cases;
  for (const auto& name : strd::Names()) {
    for (const bool rounded : {false, true}) cases.push_back({name, rounded});
  }
  return Listed(errors ? "RCOVARB" : "GLSQR", "StRD, all sets as they stand in doubles, 100 digits",
                errors ? 1e-14 : 1e-15, cases, [=](const Given& given) {
                  const auto set = strd::Read(given.name);
                  const auto fit = strd::FitOf(set, given.rounded);
                  const auto exact = strd::ExactFitOf(set, given.rounded);
                  double error = fit.status == 0 ? 0 : INFINITY;
                  if (!errors) error = std::max(error, WorstOf(fit.coefficients, exact.coefficients));
                  for (std::size_t j = 0; errors && j < fit.errors.size(); ++j) {
                    const double difference = std::fabs(fit.errors[j] - exact.errors[j]);
                    if (!(difference <= 1e-20)) error = std::max(error, difference / exact.errors[j]);
                  }
                  return Point{{static_cast<double>(set.rows), static_cast<double>(set.columns)}, error};
                });
}

// --- singular values ---

struct Matrix {
  i32 m;
  i32 n;
  std::vector<f64> a;  // by columns
};

template <typename Element>
Matrix Filled(i32 m, i32 n, Element element) {
  Matrix matrix{m, n, {}};
  for (i32 j = 0; j < n; ++j) {
    for (i32 i = 0; i < m; ++i) matrix.a.push_back(element(i, j));
  }
  return matrix;
}

// By one-sided rotations in 50 digits, M. R. Hestenes (1958), Journal of the Society for Industrial and Applied
// Mathematics 6:51-90; for m >= n. In falling order.
std::vector<Real> ExactSingularValues(const Matrix& matrix) {
  const auto m = static_cast<std::size_t>(matrix.m);
  const auto n = static_cast<std::size_t>(matrix.n);
  std::vector<Real> a(matrix.a.begin(), matrix.a.end());
  const auto dot = [&](std::size_t p, std::size_t q) {
    Real sum = 0;
    for (std::size_t i = 0; i < m; ++i) sum += a[p * m + i] * a[q * m + i];
    return sum;
  };
  bool rotated = true;
  for (int sweep = 0; rotated && sweep < 40; ++sweep) {
    rotated = false;
    for (std::size_t p = 0; p < n; ++p) {
      for (std::size_t q = p + 1; q < n; ++q) {
        const Real cross = dot(p, q);
        const Real first = dot(p, p);
        const Real second = dot(q, q);
        if (cross * cross <= first * second * Real("1e-80")) continue;
        rotated = true;
        const Real zeta = (second - first) / (2 * cross);
        const Real t = (zeta < 0 ? -1 : 1) / (abs(zeta) + sqrt(1 + zeta * zeta));
        const Real c = 1 / sqrt(1 + t * t);
        for (std::size_t i = 0; i < m; ++i) {
          const Real x = a[p * m + i];
          a[p * m + i] = c * (x - t * a[q * m + i]);
          a[q * m + i] = c * (t * x + a[q * m + i]);
        }
      }
    }
  }
  std::vector<Real> values;
  for (std::size_t p = 0; p < n; ++p) values.push_back(sqrt(dot(p, p)));
  std::sort(values.begin(), values.end(), std::greater<>());
  return values;
}

// The largest error of the singular values in units of the largest of them.
Point SvdPoint(const Matrix& matrix, const std::vector<Real>& wanted) {
  const auto k = static_cast<std::size_t>(std::min(matrix.m, matrix.n));
  std::vector<f64> s(k, NAN);
  std::vector<f64> u(static_cast<std::size_t>(matrix.m) * k);
  std::vector<f64> v(static_cast<std::size_t>(matrix.n) * k);
  i32 status = -1;
  SVD(matrix.m, matrix.n, matrix.a.data(), matrix.m, s.data(), u.data(), v.data(), status);
  double worst = status == 0 ? 0 : INFINITY;
  for (std::size_t i = 0; i < k; ++i) worst = std::max(worst, AbsoluteError(s[i] / s[0], wanted[i] / s[0]));
  return {{static_cast<double>(matrix.m), static_cast<double>(matrix.n)}, worst};
}

Region AwkwardSvdRegion() {
  const std::vector<Matrix> matrices{
      Filled(12, 8, [](i32 i, i32 j) { return 1.0 / (i + j + 1); }),
      Filled(7, 7, [](i32 i, i32 j) { return i == j || i == 0 ? 1.0 : 1e-9 * (i - j); }),
      Filled(9, 4, [](i32 i, i32 j) { return 0x1p700 * (j == 3 ? i + 0.5 : i * (j + 1)); }),
  };
  return Listed("SVD", "nearly singular ones, 50 digits, of the largest value", 1e-14, matrices,
                [](const Matrix& matrix) { return SvdPoint(matrix, ExactSingularValues(matrix)); });
}

Region DrawnSvdRegion() {
  return AtMost(50, {"SVD", "to 30 by 8, scales 1 to 1e12, 50 digits, of the largest", 1e-14, 0,
                     [](Random& random) -> std::optional<Point> {
                       std::normal_distribution<f64> normal;
                       const i32 n = 2 + static_cast<i32>(random() % 7);
                       const i32 m = n + static_cast<i32>(random() % 23);
                       const double steep = Uniform(random, 0, 12);
                       const Matrix matrix =
                           Filled(m, n, [&](i32, i32 j) { return normal(random) * std::pow(10, steep * j / (n - 1)); });
                       return SvdPoint(matrix, ExactSingularValues(matrix));
                     }});
}

// The bidiagonal matrix of 1 and -1: 2 sin((2k - 1) pi / (4n + 2)), from the eigenvalues of second differences.
Region LargeSvdRegion() {
  return Listed(
      "SVD", "bidiagonal of 5 to 200, closed form, of the largest", 1e-14, std::vector<i32>{5, 64, 65, 200}, [](i32 n) {
        const Matrix matrix = Filled(n, n, [](i32 i, i32 j) { return i == j ? 1.0 : j == i + 1 ? -1.0 : 0.0; });
        std::vector<Real> wanted;
        for (i32 k = n; k >= 1; --k)
          wanted.push_back(2 * sin((2 * k - 1) * boost::math::constants::pi<Real>() / (4 * n + 2)));
        return SvdPoint(matrix, wanted);
      });
}

// --- inverses and orders ---

// X'X of some rows of predictors that share a common part, of variance inflation factors to about `inflation`. The
// error of an element of the inverse in units of its diagonal, that of the determinant's logarithm in absolute terms.
Region InverseRegion(double inflation, double worst, const std::string& name) {
  return AtMost(100, {"MXINV", name, worst, 0, [=](Random& random) -> std::optional<Point> {
                        std::normal_distribution<f64> normal;
                        const std::size_t n = 1 + random() % 8;
                        const double common = std::sqrt(LogUniform(random, 0.1, inflation));
                        std::vector<f64> a(n * n, 0.0);
                        for (std::size_t row = 0; row < 3 * n; ++row) {
                          const f64 shared = common * normal(random);
                          std::vector<f64> x;
                          for (std::size_t j = 0; j < n; ++j)
                            x.push_back((shared + normal(random)) * std::pow(1000.0, static_cast<double>(j)));
                          for (std::size_t i = 0; i < n * n; ++i) a[i] += x[i % n] * x[i / n];
                        }
                        std::vector<f64> inverse(n * n, NAN);
                        f64 logDeterminant = NAN;
                        i32 failed = -1;
                        i32 status = -1;
                        const i32 size = static_cast<i32>(n);
                        MXINV(size, a.data(), size, inverse.data(), size, logDeterminant, failed, status);
                        Rows<Real> exact(n, std::vector<Real>(2 * n));
                        for (std::size_t i = 0; i < n; ++i) {
                          for (std::size_t j = 0; j < n; ++j) exact[i][j] = a[std::max(i, j) * n + std::min(i, j)];
                          exact[i][n + i] = 1;
                        }
                        double error = status == 0 ? AbsoluteError(logDeterminant, log(Eliminate(exact))) : INFINITY;
                        for (std::size_t i = 0; i < n * n && status == 0; ++i) {
                          const Real unit = sqrt(exact[i % n][n + i % n] * exact[i / n][n + i / n]);
                          error = std::max(
                              error, AbsoluteError(inverse[i], exact[i % n][n + i / n]) / static_cast<double>(unit));
                        }
                        return Point{{static_cast<double>(n), common * common}, error};
                      }});
}

Region RiskSetRegion() {
  return AtMost(300,
                {"MXSRT", "to 60 cases in strata, ties, exact", 0, 0, [](Random& random) -> std::optional<Point> {
                   const std::size_t n = 1 + random() % 60;
                   std::vector<f64> time(n);
                   std::vector<i32> stratum(n);
                   for (std::size_t i = 0; i < n; ++i) {
                     time[i] = std::round(Uniform(random, -9, 9));
                     stratum[i] = static_cast<i32>(random() % 4) * 1000 - 1500;
                   }
                   std::vector<i32> wanted(n);
                   std::iota(wanted.begin(), wanted.end(), 0);
                   const auto key = [&](i32 i) {
                     return std::pair(stratum[static_cast<std::size_t>(i)], time[static_cast<std::size_t>(i)]);
                   };
                   std::stable_sort(wanted.begin(), wanted.end(), [&](i32 a, i32 b) { return key(a) < key(b); });
                   std::vector<i32> ends;
                   for (std::size_t i = 0; i < n; ++i) {
                     if (i == 0 || key(wanted[i]).first != key(wanted[i - 1]).first)
                       ends.push_back(static_cast<i32>(i));
                   }
                   ends.push_back(static_cast<i32>(n));
                   std::vector<i32> order(n);
                   std::vector<i32> first(n + 1);
                   i32 strata = -1;
                   i32 status = -1;
                   MXSRT(static_cast<i32>(n), time.data(), stratum.data(), order.data(), strata, first.data(), status);
                   first.resize(std::min(first.size(), static_cast<std::size_t>(std::max(strata, 0)) + 1));
                   return Point{{static_cast<double>(n)}, Exactly(status == 0 && order == wanted && first == ends)};
                 }});
}

std::vector<Region> MatrixRegions() {
  std::vector<Region> regions;
  for (const auto& name : strd::Names()) AddCertified(name, regions);
  regions.push_back(AsGivenRegion(false));
  regions.push_back(AsGivenRegion(true));
  regions.push_back(AwkwardSvdRegion());
  regions.push_back(DrawnSvdRegion());
  regions.push_back(LargeSvdRegion());
  regions.push_back(InverseRegion(10, 1e-12, "1 to 8 rows, inflation to 1e2, 50 digits, of the diagonal"));
  regions.push_back(InverseRegion(1e6, 1e-8, "1 to 8 rows, inflation to 1e7, 50 digits, of the diagonal"));
  regions.push_back(RiskSetRegion());
  return regions;
}

const bool added = AddRegions(&MatrixRegions);

}  // namespace

}  // namespace tellurix::accuracy
