#include "numeric/Transformations.h"

#include <cmath>

#include "kernel/Kernel.h"
#include "numeric/CompensatedSum.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

double WithinRange(double x) { return std::isfinite(x) ? x : MissingValue; }

// Of two parts of a total. The logit takes their difference too: near 0 all depends on it. The probit goes by the
// smaller part, which a proportion near 1 holds no more.
double LogitOfParts(double part, double rest, double difference) {
  const double ratio = difference / rest;
  return std::fabs(ratio) < 0.5 ? std::log1p(ratio) : std::log(part / rest);
}

double ProbitOfParts(double part, double rest) {
  std::int32_t ifault = 0;
  const double total = part + rest;
  return part <= rest ? GAUINV(part / total, ifault) : -GAUINV(rest / total, ifault);
}

double AngleOfParts(double part, double rest) { return std::atan2(std::sqrt(part), std::sqrt(rest)); }

bool IsProportion(double p) { return p >= 0 && p <= 1; }
bool IsInner(double p) { return p > 0 && p < 1; }

bool IsCount(double r, double n) {
  return r >= 0 && r <= n && n >= 1 && n != MissingValue && r == std::floor(r) && n == std::floor(n);
}

}  // namespace

double NaturalLog(double x) { return x > 0 && x != MissingValue ? std::log(x) : MissingValue; }
double Log10(double x) { return x > 0 && x != MissingValue ? std::log10(x) : MissingValue; }

double PowerOf(double x, double exponent) {
  return x == MissingValue ? MissingValue : WithinRange(std::pow(x, exponent));
}

double Logit(double p) { return IsInner(p) ? LogitOfParts(p, 1 - p, 2 * p - 1) : MissingValue; }
double Probit(double p) { return IsInner(p) ? ProbitOfParts(p, 1 - p) : MissingValue; }
double Angle(double p) { return IsProportion(p) ? AngleOfParts(p, 1 - p) : MissingValue; }

double EmpiricalLogit(double r, double n) {
  return IsCount(r, n) ? LogitOfParts(r + 0.5, n - r + 0.5, 2 * r - n) : MissingValue;
}

double EmpiricalProbit(double r, double n) {
  return IsCount(r, n) ? ProbitOfParts(r + 0.5, n - r + 0.5) : MissingValue;
}

double AngleOfCount(double r, double n) {
  return IsCount(r, n) ? AngleOfParts(r + 0.375, n - r + 0.375) : MissingValue;
}

std::vector<double> RunningSums(std::span<const double> values) {
  std::vector<double> sums;
  sums.reserve(values.size());
  CompensatedSum sum;
  for (const double x : values) {
    if (x != MissingValue) sum.Add(x);
    sums.push_back(x == MissingValue ? MissingValue : WithinRange(sum.Value()));
  }
  return sums;
}

}  // namespace tellurix
