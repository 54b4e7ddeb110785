#include "numeric/ShapiroWilk.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "kernel/Kernel.h"
#include "kernel/Tails.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

constexpr std::int32_t FewestWithCensored = 20;

// A polynomial, its constant first.
template <std::size_t N>
double Polynomial(const double (&coefficients)[N], double x) {
  double value = 0;
  for (std::size_t i = N; i-- > 0;) value = value * x + coefficients[i];
  return value;
}

double NormalDeviate(double p) {
  i32 ifault = 0;
  return GAUINV(p, ifault);
}

// The weights of a sample of n: those of the upper half, the largest observation's first. The lower half has the same
// with the opposite sign, the middle one 0.
std::vector<double> UpperWeights(std::int32_t n) {
  constexpr double Last[] = {0, 0.221157, -0.147981, -2.07119, 4.434685, -2.706056};
  constexpr double NextToLast[] = {0, 0.042981, -0.293762, -1.752461, 5.682633, -3.582633};
  if (n == 3) return {std::numbers::sqrt2 / 2};

  std::vector<double> weights(static_cast<std::size_t>(n / 2));  // expected normal order statistics at first
  double squares = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    weights[i] = -NormalDeviate((static_cast<double>(i) + 0.625) / (n + 0.25));
    squares += 2 * weights[i] * weights[i];
  }
  const double rootN = 1 / std::sqrt(n);
  const std::size_t fitted = n > 5 ? 2 : 1;  // weights that have a polynomial of their own
  const double own[] = {weights[0] / std::sqrt(squares) + Polynomial(Last, rootN),
                        weights[1] / std::sqrt(squares) + Polynomial(NextToLast, rootN)};
  double restOfWeights = 1;
  for (std::size_t i = 0; i < fitted; ++i) {
    squares -= 2 * weights[i] * weights[i];
    restOfWeights -= 2 * own[i] * own[i];
  }
  const double scale = std::sqrt(restOfWeights / squares);
  for (std::size_t i = 0; i < weights.size(); ++i) weights[i] = i < fitted ? own[i] : scale * weights[i];
  return weights;
}

// 1 - W, as the correlation of values and weights leaves it, without cancellation for W near 1.
double OneMinusW(std::span<const double> sorted, std::int32_t n) {
  const std::vector<double> upper = UpperWeights(n);
  const auto weight = [&](std::size_t i) {
    const std::size_t mirrored = static_cast<std::size_t>(n) - 1 - i;
    if (i == mirrored) return 0.0;
    return i < mirrored ? -upper[i] : upper[mirrored];
  };
  const double count = static_cast<double>(sorted.size());
  const double range = sorted.back() - sorted.front();
  double meanWeight = 0, meanValue = 0;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    meanWeight += weight(i);
    meanValue += (sorted[i] - sorted.front()) / range;
  }
  meanWeight /= count;
  meanValue /= count;
  double weights = 0, values = 0, products = 0;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const double w = weight(i) - meanWeight;
    const double x = (sorted[i] - sorted.front()) / range - meanValue;
    weights += w * w;
    values += x * x;
    products += w * x;
  }
  const double root = std::sqrt(weights * values);
  return (root - products) * (root + products) / (weights * values);
}

// Mean and standard deviation of the transformed 1 - W of a normal sample.
struct NullDistribution {
  double mean;
  double sd;
};

// Moves them to where the upper tail points of censored samples are.
NullDistribution WithCensoring(NullDistribution complete, double logN, double shareCensored) {
  constexpr double At90[] = {0.164, 0.533}, At95[] = {0.1736, 0.315}, At99[] = {0.256, -0.00635};
  constexpr double Z90 = 1.2816, Z95 = 1.6449, Z99 = 2.3263, MeanZ = 1.7509, SquaresZ = 0.56268;
  const double logShare = -std::log(shareCensored);
  const double factor = 1 + logN * 0.8378;
  const double z90 = Z90 + factor * std::pow(Polynomial(At90, std::pow(0.556, logN)), logShare);
  const double z95 = Z95 + factor * std::pow(Polynomial(At95, std::pow(0.622, logN)), logShare);
  const double z99 = Z99 + factor * std::pow(Polynomial(At99, logN), logShare);
  const double mean = (z90 + z95 + z99) / 3;
  const double slope = (Z90 * (z90 - mean) + Z95 * (z95 - mean) + Z99 * (z99 - mean)) / SquaresZ;
  return {complete.mean + (mean - slope * MeanZ) * complete.sd, complete.sd * slope};
}

double UpperPOfW(double oneMinusW, std::int32_t n, std::int32_t censored) {
  if (n == 3) {
    // Exact: W is at least 3/4.
    const double p = 6 / std::numbers::pi * (std::asin(std::sqrt(1 - oneMinusW)) - std::asin(std::sqrt(0.75)));
    return std::clamp(p, 0.0, 1.0);
  }
  constexpr double SmallShift[] = {-2.273, 0.459};
  constexpr double SmallMean[] = {0.544, -0.39978, 0.025054, -0.0006714};
  constexpr double SmallLogSd[] = {1.3822, -0.77857, 0.062767, -0.0020322};
  constexpr double LargeMean[] = {-1.5861, -0.31082, -0.083751, 0.0038915};
  constexpr double LargeLogSd[] = {-0.4803, -0.082676, 0.0030302};
  const double logN = std::log(n);
  double y = std::log(oneMinusW);
  NullDistribution null{};
  if (n <= 11) {
    const double shift = Polynomial(SmallShift, n);
    if (y >= shift) return 0;
    y = -std::log(shift - y);
    null = {Polynomial(SmallMean, n), std::exp(Polynomial(SmallLogSd, n))};
  } else {
    null = {Polynomial(LargeMean, logN), std::exp(Polynomial(LargeLogSd, logN))};
  }
  if (censored > 0) null = WithCensoring(null, logN, static_cast<double>(censored) / n);
  return kernel::NormalTails((y - null.mean) / null.sd).upper;
}

}  // namespace

std::int32_t MostCensored(std::int32_t uncensored) {
  if (uncensored < 0 || uncensored > ShapiroWilkMost || 5 * uncensored < FewestWithCensored) return 0;
  return std::min(4 * uncensored, ShapiroWilkMost - uncensored);
}

ShapiroWilk TestShapiroWilk(std::span<const double> sorted, std::int32_t censored) {
  constexpr ShapiroWilk None{MissingValue, MissingValue};
  if (sorted.size() < ShapiroWilkFewest || sorted.size() > ShapiroWilkMost || censored < 0) return None;
  const auto uncensored = static_cast<std::int32_t>(sorted.size());
  if (censored > MostCensored(uncensored)) return None;
  const std::int32_t n = uncensored + censored;
  if (censored > 0 && n < FewestWithCensored) return None;
  const double range = sorted.back() - sorted.front();
  if (!(range > 0) || !std::isfinite(range)) return None;
  const double oneMinusW = OneMinusW(sorted, n);
  return {1 - oneMinusW, UpperPOfW(oneMinusW, n, censored)};
}

}  // namespace tellurix
