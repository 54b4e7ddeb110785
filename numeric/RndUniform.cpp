// The deviates that are a function of one or two uniforms, and the exponential.
#include <algorithm>
#include <chrono>
#include <cmath>

#include "numeric/Rnd.h"

namespace tellurix {

namespace {

constexpr double Pi = 3.14159265358979;
constexpr double TwoTo27 = 134217728.0;

// Algorithm SA: the sums of ln(2)^i / i! over i = 1 to k + 1.
constexpr std::array<double, 15> MakePartialSums() {
  constexpr double Ln2 = 0.693147180559945309417232;
  std::array<double, 15> sums{};
  double term = 1, sum = 0;
  for (std::size_t k = 0; k < sums.size(); ++k) {
    term *= Ln2 / static_cast<double>(k + 1);
    sums[k] = sum += term;
  }
  return sums;
}
constexpr std::array<double, 15> PartialSums = MakePartialSums();

double OrMissing(double x) { return std::isfinite(x) ? x : MissingValue; }

}  // namespace

std::int32_t ClockSeed() {
  // The bits of the time are spread (the finalizer of MurmurHash3, A. Appleby), so that seeds of one morning differ
  // widely.
  auto x = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
  x = (x ^ (x >> 33)) * 0xff51afd7ed558ccdULL;
  x = (x ^ (x >> 33)) * 0xc4ceb9fe1a85ec53ULL;
  x ^= x >> 33;
  return static_cast<std::int32_t>(x % 2147483647U) + 1;
}

void RndUniform::Seed(std::int32_t seed) {
  ready_ = true;
  INITMTRND(seed);
}

double RndUniform::GenUniAB(double a, double b) {
  if (!std::isfinite(a) || !std::isfinite(b)) return MissingValue;
  const double low = std::min(a, b);
  const double high = std::max(a, b);
  const double u = GenUni();
  return std::clamp((1 - u) * low + high * u, low, high);
}

double RndUniform::GenCauchy(double location, double scale) {
  if (!IsPositiveParameter(scale)) return MissingValue;
  return OrMissing(std::tan(Pi * GenUni()) * scale + location);
}

double RndUniform::GenLogistic(double location, double scale) {
  if (!IsPositiveParameter(scale)) return MissingValue;
  const double u = GenUni();
  return OrMissing(std::log(u / (1 - u)) * scale + location);
}

double RndUniform::GenWeibull(double shape, double scale) {
  if (!IsPositiveParameter(shape) || !IsPositiveParameter(scale)) return MissingValue;
  return OrMissing(std::pow(-std::log(GenUni()), 1 / shape) * scale);
}

double RndNormal::GenNorm(double mean, double sd) {
  const double u1 = uniform_.GenUni();
  const double u2 = uniform_.GenUni();
  i32 ifault = 0;
  const double z = GAUINV((std::trunc(TwoTo27 * u1) + u2) / TwoTo27, ifault);
  return ifault == 0 ? OrMissing(z * sd + mean) : MissingValue;
}

double RndNormal::GenLnNorm(double mean, double sd) {
  if (!(mean > 0 && std::isfinite(mean) && sd > 0 && std::isfinite(sd))) return MissingValue;
  if (mean != mean_ || sd != sd_) {
    mean_ = mean;
    sd_ = sd;
    logMean_ = std::log(mean);
    logSd_ = std::log(sd);
  }
  const double z = GenNorm(logMean_, logSd_);
  return z == MissingValue ? MissingValue : OrMissing(std::exp(z));
}

double RndExponential::GenExp() {
  // The binary places of a uniform that are 0 before the first 1: each is worth ln 2.
  double a = 0;
  double u = uniform_.GenUni();
  for (u += u; u <= 1; u += u) a += PartialSums[0];
  u -= 1;
  if (u <= PartialSums[0]) return a + u;

  double least = uniform_.GenUni();
  for (std::size_t i = 1;; ++i) {
    least = std::min(least, uniform_.GenUni());
    if (i + 1 == PartialSums.size() || u <= PartialSums[i]) return a + least * PartialSums[0];
  }
}

}  // namespace tellurix
