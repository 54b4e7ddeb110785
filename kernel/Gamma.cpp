// The gamma function and the gamma distribution.
#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// 1/Gamma(1 + x) - 1 for |x| <= 1/2: Taylor series, coefficients of DLMF 5.7.1 (J. W. Wrench 1968, Mathematics of
// Computation 22:617-626).
f64 InverseGammaOnePlusMinus1(f64 x) {
  static constexpr std::array<f64, 20> C{
      0.57721566490153286061,     -0.65587807152025388108,   -0.042002635034095235529,    0.1665386113822914895,
      -0.042197734555544336748,   -0.0096219715278769735621, 0.0072189432466630995424,    -0.0011651675918590651121,
      -0.00021524167411495097282, 0.00012805028238811618615, -0.000020134854780788238656, -1.2504934821426706573e-6,
      1.1330272319816958824e-6,   -2.0563384169776071035e-7, 6.1160951044814158179e-9,    5.0020076444692229301e-9,
      -1.1812745704870201446e-9,  1.0434267116911005105e-10, 7.782263439905071254e-12,    -3.6968056186422057082e-12};
  const f64 s = x * x;
  f64 even = C[18];
  f64 odd = C[19];
  for (int i = 16; i >= 0; i -= 2) {
    even = even * s + C[i];
    odd = odd * s + C[i + 1];
  }
  return x * (even + x * odd);
}

// Coefficients of zeta/(lambda - 1) in powers of zeta, where zeta^2/2 = lambda - 1 - ln lambda; worked out by the
// recurrence of UniformCoefficients (Beta.cpp) in rational arithmetic.
constexpr std::array<f64, MostTerms> GammaCoefficients{1.0,
                                                       -0.33333333333333333333,
                                                       0.083333333333333333333,
                                                       -0.014814814814814814815,
                                                       0.0011574074074074074074,
                                                       0.00035273368606701940035,
                                                       -0.0001787551440329218107,
                                                       0.000039192631785224377817,
                                                       -2.1854485106799921615e-6,
                                                       -1.8540622107151599607e-6,
                                                       8.296711340953086005e-7,
                                                       -1.7665952736826079304e-7,
                                                       6.7078535434014985804e-9,
                                                       1.0261809784240308043e-8,
                                                       -4.3820360184533531866e-9,
                                                       9.1476995822367902342e-10,
                                                       -2.5514193994946249767e-11,
                                                       -5.8307721325504250675e-11,
                                                       2.4361948020667416244e-11,
                                                       -5.0276692801141755891e-12,
                                                       1.1004392031956134771e-13,
                                                       3.3717632624009853788e-13,
                                                       -1.3923887224181620659e-13,
                                                       2.8534893807047443204e-14,
                                                       -5.139111834242572619e-16,
                                                       -1.9752288294349442835e-15,
                                                       8.0995211567045613341e-16,
                                                       -1.6522531216398161819e-16,
                                                       2.5305430097478884233e-18,
                                                       1.1686939738559576589e-17,
                                                       -4.7700370498204847582e-18};

// 1 + x/(a+1) + x^2/((a+1)(a+2)) + ..., the lower tail over x^a e^-x / Gamma(a + 1).
f64 LowerSeries(f64 a, f64 x) {
  f64 sum = 1;
  f64 term = 1;
  for (f64 n = a + 1; term > sum * (Epsilon / 8); n += 1) {
    term *= x / n;
    sum += term;
  }
  return sum;
}

// The upper tail over x^a e^-x / Gamma(a + 1), for x > a - 1 (Gautschi 1979).
f64 UpperFraction(f64 a, f64 x) {
  f64 p = 0;
  f64 q = (x - 1 - a) * (x + 1 - a);
  f64 r = 4 * (x + 1 - a);
  f64 s = 1 - a;
  f64 rho = 0;
  f64 term = 1;
  f64 sum = 1;
  for (int n = 0; n < 2000 && std::fabs(term) > sum * (Epsilon / 8); ++n) {
    p += s;
    q += r;
    r += 8;
    s += 2;
    const f64 tau = p * (1 + rho);
    rho = tau / (q - tau);
    term *= rho;
    sum += term;
  }
  return a / (x + 1 - a) * sum;
}

// The upper tail for 0 < a < 1, x < 1.5 (Gautschi 1979): 1 - x^a/Gamma(1 + a), then the rest of the lower tail's
// series.
f64 UpperTaylor(f64 a, f64 x) {
  const f64 logHead = a * std::log(x) - LogGammaOnePlus(a);
  f64 power = -1;
  f64 sum = 0;
  for (int n = 1; n < 40; ++n) {
    power *= -x / n;
    sum += power / (a + n);
    if (std::fabs(power) < Epsilon / 8) break;
  }
  return -std::expm1(logHead) + a * std::exp(logHead) * sum;
}

Tails FromLower(f64 lower) { return {std::min(lower, 1.0), std::max(1 - lower, 0.0)}; }
Tails FromUpper(f64 upper) { return {std::max(1 - upper, 0.0), std::min(upper, 1.0)}; }

// x^a e^-x / Gamma(a + 1)
f64 SmallPower(f64 a, f64 x) {
  const f64 half = std::exp(-x / 2);
  return half * std::pow(x, a) * InverseGammaOnePlus(a) * half;
}

GammaParts SmallShape(f64 a, f64 x) {
  if (x > 2 * UnderflowExponent) return {{1, 0}, 0};
  const f64 power = SmallPower(a, x);
  const auto tails = [&] {
    if (a < 1 && x < 1.5 && a * std::log(x) > -0.7) return FromUpper(std::max(UpperTaylor(a, x), 0.0));
    const bool lower = a < 1 ? x < 1.5 : x < a + 1;
    return lower ? FromLower(power * LowerSeries(a, x)) : FromUpper(power * UpperFraction(a, x));
  };
  return {tails(), power * a};
}

// exp(-exponent), which is (x/a)^a e^(a - x).
f64 Decay(f64 a, f64 x, f64 exponent) {
  if (exponent > DeepExponent && exponent < UnderflowExponent) {
    const f64 decay = PowerProduct(Quotient({x, 0}, a), a, {1, 0}, 0, Sum(a, -x));
    if (!std::isnan(decay)) return decay;
  }
  return std::exp(-exponent);
}

// x^a e^-x / Gamma(a)
f64 LargePower(f64 a, f64 decay) { return decay * std::exp(-StirlingSeries(a)) * InverseSqrtTwoPi * std::sqrt(a); }

GammaParts LargeShape(f64 a, f64 x) {
  const f64 e = (x - a) / a;
  const f64 deficit = LogDeficit(e, x / a);
  const f64 exponent = a * deficit;
  if (exponent > UnderflowExponent) return {x < a ? Tails{0, 1} : Tails{1, 0}, 0};
  const f64 decay = Decay(a, x, exponent);
  const f64 power = LargePower(a, decay);
  if (deficit <= 0.5) {
    const f64 zeta = std::copysign(std::sqrt(2 * deficit), e);
    const int terms = UniformTerms(a, zeta);
    return {UniformTails(a, zeta, exponent, decay, GammaCoefficients.data(), terms), power};
  }
  return {x < a ? FromLower(power / a * LowerSeries(a, x)) : FromUpper(power / a * UpperFraction(a, x)), power};
}

// ln Gamma(2 + u) for |u| <= 1/2: (1 - gamma) u plus the sum of (zeta(k) - 1) (-u)^k / k (DLMF 5.7.3).
f64 LogGammaTwoPlus(f64 u) {
  static constexpr std::array<f64, 28> C{
      4.227843350984671393935e-1,  3.224670334241132182362e-1,  -6.735230105319809513325e-2,
      2.058080842778454787900e-2,  -7.385551028673985266273e-3, 2.890510330741523285753e-3,
      -1.192753911703260977114e-3, 5.096695247430424223357e-4,  -2.231547584535793797614e-4,
      9.945751278180853371460e-5,  -4.492623673813314170021e-5, 2.050721277567069155317e-5,
      -9.439488275268395903987e-6, 4.374866789907487804182e-6,  -2.039215753801366236782e-6,
      9.551412130407419832857e-7,  -4.492469198764566043294e-7, 2.120718480555466586923e-7,
      -1.004322482396809960872e-7, 4.769810169363980565760e-8,  -2.271109460894316491032e-8,
      1.083865921489695409107e-8,  -5.183475041970046655121e-9, 2.483674543802478317185e-9,
      -1.192140140586091207443e-9, 5.731367241678862013330e-10, -2.759522885124233145178e-10,
      1.330476437424448948150e-10};
  const f64 s = u * u;
  f64 even = C[26];
  f64 odd = C[27];
  for (int i = 24; i >= 0; i -= 2) {
    even = even * s + C[i];
    odd = odd * s + C[i + 1];
  }
  return u * (even + u * odd);
}

}  // namespace

f64 InverseGammaOnePlus(f64 x) {
  if (x == 0.5) return 1.12837916709551257390;  // 2/sqrt(pi), asked for by every value of Student's distribution
  f64 product = 1;
  while (x > 0.5) {
    product *= x;
    x -= 1;
  }
  return (1 + InverseGammaOnePlusMinus1(x)) / product;
}

f64 LogDeficit(f64 e, f64 onePlus) {
  if (e < -0.46 || e > 0.85) return e - std::log(onePlus);
  // ln(1 + e) = 2 artanh(v) with v = e/(2 + e), and e - 2 v = e v.
  const f64 v = e / (2 + e);
  const f64 s = v * v;
  const f64 s2 = s * s;
  static constexpr std::array<f64, 16> C{1.0 / 3,  1.0 / 5,  1.0 / 7,  1.0 / 9,  1.0 / 11, 1.0 / 13,
                                         1.0 / 15, 1.0 / 17, 1.0 / 19, 1.0 / 21, 1.0 / 23, 1.0 / 25,
                                         1.0 / 27, 1.0 / 29, 1.0 / 31, 1.0 / 33};
  f64 even = C[14];
  f64 odd = C[15];
  for (int i = 12; i >= 0; i -= 2) {
    even = even * s2 + C[i];
    odd = odd * s2 + C[i + 1];
  }
  return v * (e - 2 * s * (even + s * odd));
}

f64 LogDeficit(f64 e) { return LogDeficit(e, 1 + e); }

f64 LogGammaOnePlus(f64 a) {
  if (a >= StirlingFrom) return LogGamma(a + 1);
  if (a > 0.5) {
    f64 product = 1;
    for (; a > 1.5; a -= 1) product *= a;
    return product == 1 ? LogGammaTwoPlus(a - 1) : std::log(product) + LogGammaTwoPlus(a - 1);
  }
  if (a >= -0.5) return -std::log1p(InverseGammaOnePlusMinus1(a));
  if (!(a > -1)) return NaN;
  return -std::log1p(InverseGammaOnePlusMinus1(a + 1)) - std::log(1 + a);
}

f64 LogGamma(f64 a) {
  if (!(a > 0)) return NaN;
  if (a < 0.5) return LogGammaOnePlus(a) - std::log(a);
  if (a <= StirlingFrom) return LogGammaOnePlus(a - 1);
  return (a - 0.5) * (std::log(a) - 1) - 0.5 + HalfLogTwoPi + StirlingSeries(a);
}

f64 StirlingRemainder(f64 a) {
  if (!(a > 0)) return NaN;
  if (a < 0.5) return LogGammaOnePlus(a) - (a + 0.5) * std::log(a) + a - HalfLogTwoPi;
  // The remainder at n less that at n + 1 is (n + 1/2) ln(1 + 1/n) - 1 = v^2/3 + v^4/5 + ... with v = 1/(2 n + 1).
  f64 sum = 0;
  for (; a < StirlingFrom; a += 1) {
    const f64 s = 1 / ((2 * a + 1) * (2 * a + 1));
    f64 power = s;
    for (int k = 3; power > Epsilon / 16; k += 2) {
      sum += power / k;
      power *= s;
    }
  }
  return sum + StirlingSeries(a);
}

int UniformTerms(f64 a, f64 zeta) {
  // The coefficients fall as 3.54^-n (the nearest singularity lies at |zeta| = 2 sqrt(pi)); in the recurrence that
  // divides by a, a power of zeta stands for one of sqrt(n/a).
  const f64 size = std::max(std::fabs(zeta), 3 / std::sqrt(a));
  if (size < 0.05) return 11;
  if (size < 0.15) return 14;
  if (size < 0.35) return 19;
  if (size < 0.6) return 25;
  return MostTerms;
}

f64 PowerProduct(const Pair& u, f64 p, const Pair& v, f64 q, const Pair& s) {
  constexpr f64 SafeLog = 230;
  constexpr int MostHalvings = 5;
  const f64 most = std::max({std::fabs(p * std::log(u.high)), std::fabs(q * std::log(v.high)), std::fabs(s.high)});
  f64 share = 1;
  int halvings = 0;
  for (; !(most * share < SafeLog); share /= 2) {
    if (++halvings > MostHalvings) return NaN;
  }
  f64 product = std::pow(u.high, p * share) * std::pow(v.high, q * share) * std::exp(s.high * share);
  for (; halvings > 0; --halvings) product *= product;
  return product * std::exp(p * (u.low / u.high) + q * (v.low / v.high) + s.low);
}

Tails UniformTails(f64 a, f64 zeta, f64 exponent, f64 decay, const f64* coefficients, int terms) {
  f64 next = coefficients[terms - 1];     // beta(n + 1)
  f64 current = coefficients[terms - 2];  // beta(n)
  f64 sum = next * zeta + current;
  // beta(n - 1) = d(n) + (n + 1)/a beta(n + 1); the sum is that of beta(n) zeta^n.
  const f64 perA = 1 / a;
  for (int n = terms - 3; n >= 1; --n) {
    const f64 previous = coefficients[n] + (n + 1) * perA * next;
    next = current;
    current = previous;
    sum = sum * zeta + previous;
  }
  const f64 normalizer = 1 + next * perA;
  const f64 rest = InverseSqrtTwoPi / std::sqrt(a) * sum / normalizer;
  const f64 scaled = ScaledNormalTail(std::sqrt(2 * exponent));
  return zeta < 0 ? FromLower(decay * (scaled - rest)) : FromUpper(decay * (scaled + rest));
}

GammaParts GammaAt(f64 a, f64 x) {
  if (!(a > 0 && x >= 0) || std::isinf(a)) return {{NaN, NaN}, NaN};
  if (x == 0) return {{0, 1}, 0};
  if (std::isinf(x)) return {{1, 0}, 0};
  return a < StirlingFrom ? SmallShape(a, x) : LargeShape(a, x);
}

f64 GammaPower(f64 a, f64 x) {
  if (a < StirlingFrom) return x > 2 * UnderflowExponent ? 0 : a * SmallPower(a, x);
  return LargePower(a, Decay(a, x, a * LogDeficit((x - a) / a, x / a)));
}

Tails GammaTails(f64 a, f64 x) { return GammaAt(a, x).tails; }

}  // namespace tellurix::kernel

f64 GAMMAD(const f64& x, const f64& p, i32& ifault) {
  const f64 lower = tellurix::kernel::GammaTails(p, x).lower;
  ifault = std::isnan(lower) ? 1 : 0;
  return ifault != 0 ? 0 : lower;
}

f64 ALOGAM(const f64& x) { return tellurix::kernel::LogGamma(x); }
