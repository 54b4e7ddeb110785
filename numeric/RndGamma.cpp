#include <cmath>

#include "numeric/Rnd.h"

namespace tellurix {

namespace {

constexpr double ExpOfMinusOne = 0.367879441171442;
constexpr double SqrtOf32 = 5.656854249492380195206755;

// The coefficients of GD, as they were published: q0 in powers of 1/shape, and those of the series of q(t).
double Q0(double shape) {
  constexpr double q1 = 0.04166669, q2 = 0.02083148, q3 = 0.00801191, q4 = 0.00144121, q5 = -7.388e-5, q6 = 2.4511e-4,
                   q7 = 2.424e-4;
  const double r = 1 / shape;
  return ((((((q7 * r + q6) * r + q5) * r + q4) * r + q3) * r + q2) * r + q1) * r;
}

double SeriesOfA(double v) {
  constexpr double a1 = 0.3333333, a2 = -0.250003, a3 = 0.2000062, a4 = -0.1662921, a5 = 0.1423657, a6 = -0.1367177,
                   a7 = 0.1233795;
  return ((((((a7 * v + a6) * v + a5) * v + a4) * v + a3) * v + a2) * v + a1) * v;
}

// Below this a deviate of the double exponential hat lies under no gamma density.
constexpr double LeastT = -0.71874483771719;

}  // namespace

double RndGamma::GenGamma(double shape, double scale) {
  if (!IsPositiveParameter(shape) || !(scale == 0 || IsPositiveParameter(scale))) return MissingValue;
  const double x = shape < 1 ? FromSmallShape(shape) : FromLargeShape(shape);
  return x == MissingValue ? MissingValue : x * scale;
}

double RndGamma::GenChiSq(double df) { return GenGamma(df / 2, 2); }

double RndGamma::GenF(double dfn, double dfd) {
  const double g1 = GenGamma(dfn / 2, 2);
  const double g2 = GenGamma(dfd / 2, 2);
  if (g1 == MissingValue || g2 == MissingValue) return MissingValue;
  const double f = g1 * dfd / (g2 * dfn);
  return std::isfinite(f) ? f : MissingValue;
}

double RndGamma::GenT(double df) {
  const double z = normal_.GenNorm(0, 1);
  const double c = GenGamma(df / 2, 2);
  if (z == MissingValue || c == MissingValue) return MissingValue;
  const double t = z * std::sqrt(df / c);
  return std::isfinite(t) ? t : MissingValue;
}

double RndGamma::FromSmallShape(double shape) {
  const double b = 1 + ExpOfMinusOne * shape;
  for (;;) {
    const double p = b * uniform_.GenUni();
    if (p >= 1) {
      const double x = -std::log((b - p) / shape);
      if (exponential_.GenExp() >= (1 - shape) * std::log(x)) return x;
    } else {
      const double x = std::exp(std::log(p) / shape);
      if (exponential_.GenExp() >= x) return x;
    }
  }
}

void RndGamma::Prepare(double shape) {
  large_.shape = shape;
  large_.s2 = shape - 0.5;
  large_.s = std::sqrt(large_.s2);
  large_.d = SqrtOf32 - 12 * large_.s;
  large_.q0 = Q0(shape);
  const double s = large_.s;
  if (shape <= 3.686) {
    large_.b = 0.463 + s - 0.178 * large_.s2;
    large_.sigma = 1.235;
    large_.c = 0.195 / s - 0.079 + 0.016 * s;
  } else if (shape <= 13.022) {
    large_.b = 1.654 + 0.0076 * large_.s2;
    large_.sigma = 1.68 / s + 0.275;
    large_.c = 0.062 / s + 0.024;
  } else {
    large_.b = 1.77;
    large_.sigma = 0.75;
    large_.c = 0.1515 / s;
  }
}

double RndGamma::LargeShape::Quotient(double t) const {
  const double v = t / (s + s);
  if (std::fabs(v) <= 0.25) return q0 + 0.5 * t * t * SeriesOfA(v);
  return q0 - s * t + 0.25 * t * t + (s2 + s2) * std::log1p(v);
}

double RndGamma::FromLargeShape(double shape) {
  if (shape != large_.shape) Prepare(shape);
  const auto square = [](double x) { return x * x; };

  // Steps 2 and 3: a normal deviate, accepted at once to the right of the middle, or by a cubic squeeze.
  double t = normal_.GenNorm(0, 1);
  if (t == MissingValue) return MissingValue;
  const double x = large_.s + 0.5 * t;
  if (t >= 0) return square(x);
  const double u = uniform_.GenUni();
  if (large_.d * u <= t * t * t) return square(x);

  // Steps 5 to 7: the quotient of the densities decides.
  if (x > 0 && std::log1p(-u) <= large_.Quotient(t)) return square(x);

  // Steps 8 to 12: rejection from a double exponential for what the normal density leaves over.
  for (;;) {
    const double e = exponential_.GenExp();
    const double side = 2 * uniform_.GenUni() - 1;
    t = large_.b + std::copysign(large_.sigma * e, side);
    if (t < LeastT) continue;
    const double q = large_.Quotient(t);
    if (q <= 0) continue;
    if (large_.c * std::fabs(side) <= std::expm1(q) * std::exp(e - 0.5 * t * t)) return square(large_.s + 0.5 * t);
  }
}

}  // namespace tellurix
