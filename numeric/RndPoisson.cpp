#include <algorithm>
#include <cmath>

#include "numeric/Rnd.h"

namespace tellurix {

namespace {

constexpr double TableBelow = 10;
constexpr double InverseSqrtTwoPi = 0.398942280401432677939946;

// The coefficients of PD, as they were published, for the series of (ln(1 + v) - v) / v^2.
double SeriesOfA(double v) {
  constexpr double a0 = -0.5, a1 = 0.3333333, a2 = -0.2500068, a3 = 0.2000118, a4 = -0.1661269, a5 = 0.1421878,
                   a6 = -0.1384794, a7 = 0.1250060;
  return ((((((a7 * v + a6) * v + a5) * v + a4) * v + a3) * v + a2) * v + a1) * v + a0;
}

constexpr std::array<double, 10> Factorials{1, 1, 2, 6, 24, 120, 720, 5040, 40320, 362880};

}  // namespace

double RndPoisson::GenPoisson(double mean) {
  if (!(mean >= 0 && mean <= LargestMean)) return MissingValue;
  return mean < TableBelow ? FromSmallMean(mean) : FromLargeMean(mean);
}

double RndPoisson::GenNegbin(double size, double p) {
  if (!IsPositiveParameter(size) || !(p <= 1) || !IsPositiveParameter(p)) return MissingValue;
  return GenPoisson(gamma_.GenGamma(size, (1 - p) / p));
}

double RndPoisson::GenGeom(double p) {
  if (!(p <= 1) || !IsPositiveParameter(p)) return MissingValue;
  return GenPoisson((1 - p) / p * exponential_.GenExp());
}

// ---------------------------------------------------------------------------------------------------------------------
// Below 10
// ---------------------------------------------------------------------------------------------------------------------

void RndPoisson::PrepareSmall(double mean) {
  small_.mean = mean;
  small_.atZero = small_.term = small_.cumulative[0] = std::exp(-mean);
  small_.filled = 0;
}

double RndPoisson::FromSmallMean(double mean) {
  if (mean != small_.mean) PrepareSmall(mean);
  for (;;) {
    const double u = uniform_.GenUni();
    if (u <= small_.atZero) return 0;
    // What is filled is searched first; above 0.458 (the least P(X < mean) there is) from the mean on.
    const int middle = std::max(1, static_cast<int>(mean));
    for (int k = u > 0.458 ? std::max(1, std::min(small_.filled, middle)) : 1; k <= small_.filled; ++k) {
      if (u <= small_.cumulative[k]) return k;
    }
    while (small_.filled < TableSize) {
      const int k = ++small_.filled;
      small_.term *= mean / k;
      small_.cumulative[k] = small_.cumulative[k - 1] + small_.term;
      if (u <= small_.cumulative[k]) return k;
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// From 10 on
// ---------------------------------------------------------------------------------------------------------------------

void RndPoisson::PrepareLarge(double mean) {
  large_.mean = mean;
  large_.s = std::sqrt(mean);
  large_.d = 6 * mean * mean;
  large_.l = std::floor(mean - 1.1484);
  const double b1 = 1 / (24 * mean);
  const double b2 = 0.3 * b1 * b1;
  large_.omega = InverseSqrtTwoPi / large_.s;
  large_.c3 = b1 * b2 / 7;
  large_.c2 = b2 - 15 * large_.c3;
  large_.c1 = b1 - 6 * b2 + 45 * large_.c3;
  large_.c0 = 1 - b1 + 3 * b2 - 15 * large_.c3;
  large_.c = 0.1069 / mean;
}

double RndPoisson::FromLargeMean(double mean) {
  if (mean != large_.mean) PrepareLarge(mean);

  // Steps N, I and S: a normal deviate, accepted at once where it is large, or by a cubic squeeze.
  const double z = normal_.GenNorm(0, 1);
  if (z == MissingValue) return MissingValue;
  const double g = mean + large_.s * z;
  if (g >= 0) {
    const double k = std::floor(g);
    if (k >= large_.l) return k;
    const double distance = mean - k;
    const double u = uniform_.GenUni();
    if (large_.d * u >= distance * distance * distance) return k;
    // Step Q: the quotient of the mass functions decides.
    const Densities at = At(k);
    if (at.fy - u * at.fy <= at.py * std::exp(at.px - at.fx)) return k;
  }

  // Steps E and H: rejection from a double exponential for what the discrete normal leaves over.
  for (;;) {
    const double e = exponential_.GenExp();
    const double side = 2 * uniform_.GenUni() - 1;
    const double t = 1.8 + std::copysign(e, side);
    if (t <= -0.6744) continue;
    const double k = std::floor(mean + large_.s * t);
    const Densities at = At(k);
    if (large_.c * std::fabs(side) <= at.py * std::exp(at.px + e) - at.fy * std::exp(at.fx + e)) return k;
  }
}

RndPoisson::Densities RndPoisson::At(double k) const {
  Densities at{};
  const double mean = large_.mean;
  const double distance = mean - k;
  if (k < 10) {
    at.px = -mean;
    at.py = std::pow(mean, k) / Factorials[static_cast<std::size_t>(k)];
  } else {
    const double tenth = 1 / (12 * k);
    const double delta = tenth * (1 - 4.8 * tenth * tenth);
    const double v = distance / k;
    at.px = std::fabs(v) <= 0.25 ? k * v * v * SeriesOfA(v) - delta : k * std::log1p(v) - distance - delta;
    at.py = InverseSqrtTwoPi / std::sqrt(k);
  }
  const double x = (0.5 - distance) / large_.s;
  const double square = x * x;
  at.fx = -0.5 * square;
  at.fy = large_.omega * (((large_.c3 * square + large_.c2) * square + large_.c1) * square + large_.c0);
  return at;
}

}  // namespace tellurix
