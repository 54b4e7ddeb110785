// Inversion of distribution functions; internal to the library.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

// A distribution function P at v > 0, looked at as a function of u = ln v.
struct Slopes {
  Tails tails;
  f64 power;                 // dP/du
  std::array<f64, 5> bends;  // d ln power / du and its derivatives
};

// Of the beta distribution where v is the odds x/y to the power 1/scale.
inline Slopes LogisticSlopes(const BetaParts& parts, f64 x, f64 y, f64 a, f64 b, f64 scale) {
  // x' = scale x y, so that all derivatives are polynomials in q = x y and d = y - x.
  const f64 q = x * y;
  const f64 d = y - x;
  const f64 first = -scale * scale * (a + b) * q;
  const f64 second = first * scale;
  const f64 third = second * scale;
  return {parts.tails,
          scale * parts.power,
          {scale * (a * y - b * x), first, second * d, third * (d * d - 2 * q), third * scale * d * (d * d - 8 * q)}};
}

// How far u has to move for P to grow by step * power, relative to step: the series of the inverse function to the
// sixth order, from its differential equation u'' = -bend(u) u'^2.
inline f64 InverseSeries(f64 step, const std::array<f64, 5>& bends) {
  constexpr f64 Third = 1.0 / 3;
  constexpr f64 Sixth = 1.0 / 6;
  const f64 g0 = bends[0] * step;
  const f64 g1 = bends[1] * step * step;
  const f64 g2 = bends[2] * step * step * step * 0.5;
  const f64 g3 = bends[3] * (step * step) * (step * step) * Sixth;
  const f64 g4 = bends[4] * (step * step) * (step * step) * step * (Sixth / 4);
  // v: coefficients of u'; c: of u; G: of the bend along u; S: of u'^2.
  const f64 v1 = -g0;
  const f64 c2 = v1 * 0.5;
  const f64 S1 = 2 * v1;
  const f64 v2 = (g1 + S1 * g0) * -0.5;
  const f64 c3 = v2 * Third;
  const f64 S2 = 2 * v2 + v1 * v1;
  const f64 G2 = g1 * c2 + g2;
  const f64 v3 = (G2 + S1 * g1 + S2 * g0) * -Third;
  const f64 c4 = v3 * 0.25;
  const f64 S3 = 2 * (v3 + v1 * v2);
  const f64 G3 = g1 * c3 + 2 * g2 * c2 + g3;
  const f64 v4 = (G3 + S1 * G2 + S2 * g1 + S3 * g0) * -0.25;
  const f64 c5 = v4 * 0.2;
  const f64 S4 = 2 * (v4 + v1 * v3) + v2 * v2;
  const f64 G4 = g1 * c4 + g2 * (2 * c3 + c2 * c2) + 3 * g3 * c2 + g4;
  const f64 v5 = (G4 + S1 * G3 + S2 * G2 + S3 * g1 + S4 * g0) * -0.2;
  return 1 + (c2 + (c3 + (c4 + (c5 + v5 * Sixth))));
}

// The v > 0 whose tails are the wanted ones, from a first value, by the series above; far from it by Newton's steps
// between the logarithms of the smaller tail, which are nearly in proportion at both ends; by bisection where those
// leave what is known to hold the answer. 0 or infinity beyond the range of doubles.
template <typename At>
f64 Inverse(f64 v, const Tails& wanted, At at) {
  const bool byLower = wanted.lower <= wanted.upper;
  const f64 target = byLower ? wanted.lower : wanted.upper;
  const f64 away = byLower ? 1 : -1;
  f64 low = 0;
  f64 high = Infinity;
  if (!(v > 0)) v = std::numeric_limits<f64>::min();
  if (!(v < Infinity)) v = std::numeric_limits<f64>::max();
  for (int round = 0; round < 3000; ++round) {
    const Slopes here = at(v);
    const f64 reached = byLower ? here.tails.lower : here.tails.upper;
    const f64 excess = away * (reached - target);
    if (excess == 0) return v;
    (excess > 0 ? high : low) = v;
    const f64 step = -excess / here.power;
    const f64 size = std::fabs(step) * (std::fabs(here.bends[0]) + std::sqrt(std::fabs(here.bends[1])));
    const bool near = size < 0.2;
    const f64 move =
        near ? step * InverseSeries(step, here.bends) : away * std::log(target / reached) * (reached / here.power);
    f64 next = std::fabs(move) < 1e-3
                   ? v + v * (move * (1 + move * (0.5 + move * (1.0 / 6 + move * (1.0 / 24 + move * (1.0 / 120))))))
                   : v * std::exp(move);
    if (!(next > low && next < high)) {
      // The series may step over a bound by a rounding error only: then v is the answer.
      if (size < 1e-14) return v;
      if (low == 0) {
        next = high * 1e-9;
      } else {
        next = high == Infinity ? low * 1e9 : std::sqrt(low) * std::sqrt(high);
      }
      if (next == 0 || next == Infinity || !(next > low && next < high)) return next;
    } else if (near && std::fabs(step) * (size * size) * (size * size) * (size * size) < 1e-15) {
      return next;
    }
    v = next;
  }
  return v;
}

}  // namespace tellurix::kernel
