#include <algorithm>
#include <cmath>

#include "numeric/Rnd.h"

namespace tellurix {

namespace {

constexpr double Ln4 = 1.3862944;
constexpr double OneAndLn5 = 2.609438;

double LogOdds(double u) { return std::log(u / (1 - u)); }

}  // namespace

double RndBeta::GenBeta(double a, double b) {
  if (!IsPositiveParameter(a) || !IsPositiveParameter(b)) return MissingValue;
  if (a != setup_.first || b != setup_.second) Prepare(a, b);
  return std::min(a, b) > 1 ? FromBB() : FromBC();
}

void RndBeta::Prepare(double first, double second) {
  const double smaller = std::min(first, second);
  const double larger = std::max(first, second);
  setup_ = {.first = first, .second = second, .alpha = first + second};
  if (smaller > 1) {
    setup_.a = smaller;
    setup_.b = larger;
    // sqrt((alpha - 2) / (2 a b - alpha)), free of cancellation near 1 and of overflow.
    const double e = smaller - 1;
    const double f = larger - 1;
    setup_.beta = 1 / std::sqrt(1 + 2 * e / (1 + e / f));
    setup_.gamma = smaller + 1 / setup_.beta;
  } else {
    setup_.a = larger;
    setup_.b = smaller;
    setup_.beta = 1 / smaller;
    const double delta = 1 + larger - smaller;
    setup_.k1 = delta * (0.0138889 + 0.0416667 * smaller) / (larger * setup_.beta - 0.777778);
    setup_.k2 = 0.25 + (0.5 + 0.25 / delta) * smaller;
  }
}

double RndBeta::FromBB() {
  const auto& [first, second, a, b, alpha, beta, gamma, k1, k2] = setup_;
  for (;;) {
    const double u1 = uniform_.GenUni();
    const double u2 = uniform_.GenUni();
    const double v = beta * LogOdds(u1);
    const double z = u1 * u1 * u2;
    const double r = gamma * v - Ln4;
    // W of the paper is a (1 + growth); what depends on W - a stays precise for large parameters.
    const bool isNear = std::fabs(v) < 0.25;
    const double power = isNear ? 0 : std::exp(v);
    const double growth = isNear ? std::expm1(v) : power - 1;
    const double s = r - a * growth;
    bool accepted = s + OneAndLn5 >= 5 * z;
    if (!accepted) {
      const double t = std::log(z);
      accepted = s > t || r - alpha * std::log1p(a * growth / alpha) >= t;
    }
    if (!accepted) continue;
    const double w = isNear ? a + a * growth : a * power;
    return first == a ? w / (b + w) : b / (b + w);
  }
}

double RndBeta::FromBC() {
  const auto& [first, second, a, b, alpha, beta, gamma, k1, k2] = setup_;
  for (;;) {
    const double u1 = uniform_.GenUni();
    const double u2 = uniform_.GenUni();
    const double y = u1 * u2;
    const double z = u1 * y;
    bool accepted = false;
    if (u1 < 0.5) {
      if (0.25 * u2 + z - y >= k1) continue;
    } else {
      accepted = z <= 0.25;
      if (!accepted && z >= k2) continue;
    }
    // With W = a exp(v): ln(alpha / (b + W)) + v is -ln((a + b exp(-v)) / alpha), which is precise for a large a and
    // does not overflow for v above 0.
    constexpr double FarBelow = -700;
    const double v = beta * LogOdds(u1);
    const bool isFarBelow = v < FarBelow;
    const double inverse = isFarBelow ? 0 : std::exp(-v);
    if (!accepted) {
      const double logarithm =
          isFarBelow ? std::log(alpha / (b + a * std::exp(v))) + v : -std::log1p(b * (inverse - 1) / alpha);
      if (alpha * logarithm - Ln4 < std::log(z)) continue;
    }
    const double w = isFarBelow ? a * std::exp(v) : a;  // both parts of the ratio over exp(v), where that is not 0
    const double rest = isFarBelow ? b : b * inverse;
    return first == a ? w / (rest + w) : rest / (rest + w);
  }
}

}  // namespace tellurix
