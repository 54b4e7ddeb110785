// The Poisson and binomial distributions.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// The probabilities of a count, each precise where it is small: all three are sums of positive parts.
struct CountTails {
  f64 exactly;
  f64 orFewer;
  f64 orMore;
};

CountTails PoissonAt(f64 mean, i32 n) {
  if (n == 0) return {std::exp(-mean), std::exp(-mean), 1};
  const GammaParts parts = GammaAt(n, mean);
  const f64 exactly = parts.power / n;
  return {exactly, std::min(parts.tails.upper + exactly, 1.0), parts.tails.lower};
}

// p^n for a pair p.
f64 WholePower(const Pair& p, f64 n) {
  const f64 power = PowerProduct(p, n, {1, 0}, 0, {0, 0});
  return std::isnan(power) ? std::exp(n * std::log(p.high)) : power;
}

CountTails BinomialAt(i32 n, f64 p, i32 k) {
  const f64 q = 1 - p;
  if (k == 0) {
    const f64 none = n == 0 ? 1 : p > 0.1 ? WholePower(Sum(1, -p), n) : std::exp(n * std::log1p(-p));
    return {none, none, 1};
  }
  if (p == 0) return {0, 1, 0};
  if (q == 0) return k == n ? CountTails{1, 1, 1} : CountTails{0, 0, 1};
  if (k == n) {
    const f64 all = std::pow(p, n);
    return {all, 1, all};
  }
  const f64 rest = static_cast<f64>(n) - k;
  const BetaParts parts = BetaAt(p, q, k, rest + 1);
  const f64 exactly = std::min(parts.power / (k * q), 1.0);
  return {exactly, std::min(parts.tails.upper + exactly, 1.0), parts.tails.lower};
}

bool IsBinomial(i32 n, f64 p, i32 k) { return n >= 0 && k >= 0 && k <= n && p >= 0 && p <= 1; }

// How many of the counts from, from + step, ... are likelier than `limit`, where their probabilities fall; `count` is
// how many there are.
std::int64_t HowManyLikelier(i32 n, f64 p, i32 from, i32 step, std::int64_t count, f64 limit) {
  std::int64_t least = 0;
  while (least < count) {
    const std::int64_t middle = least + (count - least) / 2;
    if (BinomialAt(n, p, static_cast<i32>(from + step * middle)).exactly <= limit) {
      count = middle;
    } else {
      least = middle + 1;
    }
  }
  return least;
}

// P of all the outcomes that are no likelier than r; equal likelihoods are told apart to a relative 1e-7, as the
// rounding of p spoils their equality.
f64 TwoSided(i32 n, f64 p, i32 r, const CountTails& at) {
  const f64 mean = n * p;
  const f64 limit = at.exactly * (1 + 1e-7);
  if (r == mean) return 1;
  if (r < mean) {
    const i32 from = std::min(static_cast<i32>(std::ceil(mean)), n);
    const std::int64_t other = from + HowManyLikelier(n, p, from, 1, std::int64_t{n} - from + 1, limit);
    return other > n ? at.orFewer : std::min(at.orFewer + BinomialAt(n, p, static_cast<i32>(other)).orMore, 1.0);
  }
  const i32 from = static_cast<i32>(std::floor(mean));
  const std::int64_t other = from - HowManyLikelier(n, p, from, -1, std::int64_t{from} + 1, limit);
  return other < 0 ? at.orMore : std::min(at.orMore + BinomialAt(n, p, static_cast<i32>(other)).orFewer, 1.0);
}

// The mean m >= n at which exactly n events have probability p; NaN when they are nowhere as likely.
f64 PoissonMeanAbove(i32 n, f64 p) {
  if (n == 0) return -std::log(p);
  // With m = n (1 + e), ln p = ln P(n at mean n) - n (e - ln(1 + e)).
  const f64 level = std::log(PoissonAt(n, n).exactly / p) / n;
  if (!(level >= 0)) return NaN;
  // From this upper bound (I. Chatzigeorgiou 2013, IEEE Communications Letters 17:1505-1508) Newton's steps fall to the
  // root.
  f64 e = std::sqrt(2 * level) + level;
  for (int round = 0; round < 60 && e > 0; ++round) {
    const f64 step = (LogDeficit(e) - level) * (1 + e) / e;
    e -= step;
    if (!(step > e * 1e-15)) break;
  }
  return n * (1 + e);
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void POISSON(const f64& mean, const i32& n, f64& orMore, f64& orFewer, f64& exactly, i32& ifault) {
  ifault = mean >= 0 && std::isfinite(mean) && n >= 0 ? 0 : 1;
  const CountTails at = ifault == 0 ? PoissonAt(mean, n) : CountTails{0, 0, 0};
  orMore = at.orMore;
  orFewer = at.orFewer;
  exactly = at.exactly;
}

void POISSONI(const f64& p, const i32& n, const i32& which, f64& mean, f64& orMore, f64& orFewer, f64& exactly,
              i32& ifault) {
  const auto solved = [&] {
    if (!(p > 0 && p < 1) || n < 0) return NaN;
    if (which == 1) return n == 0 ? NaN : GammaInverse(n, {p, 1 - p});
    if (which == 2) return GammaInverse(n + 1.0, {1 - p, p});
    return which == 3 ? PoissonMeanAbove(n, p) : NaN;
  };
  mean = solved();
  if (!std::isfinite(mean)) mean = -1;
  POISSON(mean, n, orMore, orFewer, exactly, ifault);
  if (ifault != 0) mean = 0;
}

void BINO(const i32& n, const f64& p, const i32& k, f64& exactly, f64& orFewer, f64& orMore, i32& ifault) {
  ifault = IsBinomial(n, p, k) ? 0 : 1;
  const CountTails at = ifault == 0 ? BinomialAt(n, p, k) : CountTails{0, 0, 0};
  exactly = at.exactly;
  orFewer = at.orFewer;
  orMore = at.orMore;
}

void BINO2(const i32& n, const f64& p, const i32& r, f64& oneSided, f64& twoSided, i32& ifault) {
  ifault = IsBinomial(n, p, r) ? 0 : 1;
  oneSided = twoSided = 0;
  if (ifault != 0) return;
  const CountTails at = BinomialAt(n, p, r);
  oneSided = std::min(at.orFewer, at.orMore);
  twoSided = TwoSided(n, p, r, at);
}

void BINOMID(const i32& n, const f64& p, const i32& r, f64& oneSided, f64& twoSided, i32& ifault) {
  ifault = IsBinomial(n, p, r) ? 0 : 1;
  oneSided = twoSided = 0;
  if (ifault != 0) return;
  const CountTails at = BinomialAt(n, p, r);
  oneSided = std::min(at.orFewer, at.orMore) - at.exactly / 2;
  twoSided = std::min(2 * oneSided, 1.0);
}
