#include <cmath>

#include "numeric/Rnd.h"

namespace tellurix {

namespace {

constexpr double InversionBelow = 30;  // n min(p, 1 - p)
constexpr int InversionEnd = 110;      // beyond reach for a mean below 30

// ln Gamma(x) less Stirling's formula, the first five terms.
double StirlingCorrection(double x) {
  const double square = x * x;
  return (13860 - (462 - (132 - (99 - 140 / square) / square) / square) / square) / x / 166320;
}

}  // namespace

double RndBinomial::GenBinom(std::int32_t n, double p) {
  if (n < 0 || !(p >= 0 && p <= 1)) return MissingValue;
  if (n != setup_.trials || p != setup_.probability) Prepare(n, p);
  const double x = setup_.np < InversionBelow ? FromInversion() : FromBTPE();
  return p > 0.5 ? setup_.n - x : x;
}

void RndBinomial::Prepare(std::int32_t n, double p) {
  setup_ = {.trials = n, .probability = p, .n = static_cast<double>(n)};
  setup_.p = std::fmin(p, 1 - p);
  setup_.q = 1 - setup_.p;
  setup_.np = setup_.n * setup_.p;
  if (setup_.np < InversionBelow) {
    setup_.start = std::exp(setup_.n * std::log1p(-setup_.p));
  } else {
    PrepareBTPE();
  }
}

double RndBinomial::FromInversion() {
  const double odds = setup_.p / setup_.q;
  const double g = odds * (setup_.n + 1);
  for (;;) {
    double u = uniform_.GenUni();
    double mass = setup_.start;
    for (int x = 0; x <= InversionEnd; ++x) {
      if (x > 0) mass *= g / x - odds;
      if (u < mass) return x;
      u -= mass;
    }
  }
}

// Step 0: a triangle over the middle, parallelograms beside it, exponential tails.
void RndBinomial::PrepareBTPE() {
  auto& s = setup_;
  s.npq = s.np * s.q;
  s.mean = s.np + s.p;
  s.mode = std::floor(s.mean);
  s.p1 = std::floor(2.195 * std::sqrt(s.npq) - 4.6 * s.q) + 0.5;
  s.xm = s.mode + 0.5;
  s.xl = s.xm - s.p1;
  s.xr = s.xm + s.p1;
  s.c = 0.134 + 20.5 / (15.3 + s.mode);
  const double left = (s.mean - s.xl) / (s.mean - s.xl * s.p);
  s.lambdaL = left * (1 + 0.5 * left);
  const double right = (s.xr - s.mean) / (s.xr * s.q);
  s.lambdaR = right * (1 + 0.5 * right);
  s.p2 = s.p1 * (1 + 2 * s.c);
  s.p3 = s.p2 + s.c / s.lambdaL;
  s.p4 = s.p3 + s.c / s.lambdaR;
}

double RndBinomial::FromBTPE() {
  const auto& s = setup_;
  for (;;) {
    const double u = s.p4 * uniform_.GenUni();
    double v = uniform_.GenUni();
    if (u <= s.p1) return std::floor(s.xm - s.p1 * v + u);  // step 1: the triangle lies under the function
    double x = 0;
    if (u <= s.p2) {  // step 2: parallelograms
      const double at = s.xl + (u - s.p1) / s.c;
      v = v * s.c + 1 - std::fabs(s.xm - at) / s.p1;
      if (v > 1 || v <= 0) continue;
      x = std::floor(at);
    } else if (u <= s.p3) {  // step 3: the left tail
      x = std::floor(s.xl + std::log(v) / s.lambdaL);
      if (x < 0) continue;
      v *= (u - s.p2) * s.lambdaL;
    } else {  // step 4: the right tail
      x = std::floor(s.xr - std::log(v) / s.lambdaR);
      if (x > s.n) continue;
      v *= (u - s.p3) * s.lambdaR;
    }
    if (Accepts(x, v)) return x;
  }
}

bool RndBinomial::Accepts(double x, double v) const {
  const auto& s = setup_;
  const double k = std::fabs(x - s.mode);
  if (k <= 20 || k >= s.npq / 2 - 1) {  // step 5.1: by the recurrence from the mode
    const double odds = s.p / s.q;
    const double g = (s.n + 1) * odds;
    double f = 1;
    for (double i = s.mode + 1; i <= x; ++i) f *= g / i - odds;
    for (double i = x + 1; i <= s.mode; ++i) f /= g / i - odds;
    return v <= f;
  }
  // Step 5.2: squeezes.
  const double rho = (k / s.npq) * ((k * (k / 3 + 0.625) + 1.0 / 6) / s.npq + 0.5);
  const double t = -k * k / (2 * s.npq);
  const double logV = std::log(v);
  if (logV < t - rho) return true;
  if (logV > t + rho) return false;
  // Step 5.3: by Stirling's formula. The corrections at x1 and w are subtracted, as the logarithm of
  // mode! (n - mode)! / (x! (n - x)!) wants it; the paper prints them with the other sign.
  const double x1 = x + 1;
  const double f1 = s.mode + 1;
  const double z = s.n + 1 - s.mode;
  const double w = s.n - x + 1;
  return logV <= s.xm * std::log(f1 / x1) + (s.n - s.mode + 0.5) * std::log(z / w) +
                     (x - s.mode) * std::log(w * s.p / (x1 * s.q)) + StirlingCorrection(f1) + StirlingCorrection(z) -
                     StirlingCorrection(x1) - StirlingCorrection(w);
}

}  // namespace tellurix
