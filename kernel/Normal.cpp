// The normal distribution.
#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// P(0 < Z < x) for |x| <= CentralEnd (Cody 1969).
constexpr f64 CentralEnd = 0.67448975;

f64 Central(f64 x) {
  const f64 s = x * x;
  const f64 above = (((0.065682337918207449113 * s + 2.2352520354606839287) * s + 161.02823106855587881) * s +
                     1067.6894854603709582) *
                        s +
                    18154.981253343561249;
  const f64 below = (((s + 47.20258190468824187) * s + 976.09855173777669322) * s + 10260.932208618978205) * s +
                    45507.789335026729956;
  return x * above / below;
}

// exp(x*x/2) * P(Z > x) for x > CentralEnd (Cody 1969).
f64 ScaledTail(f64 x) {
  constexpr f64 SqrtOf32 = 5.656854249492380195206754896838;
  if (x <= SqrtOf32) {
    static constexpr std::array<f64, 9> Above{0.39894151208813466764, 8.8831497943883759412, 93.506656132177855979,
                                              597.27027639480026226,  2494.5375852903726711, 6848.1904505362823326,
                                              11602.651437647350124,  9842.7148383839780218, 1.0765576773720192317e-8};
    static constexpr std::array<f64, 8> Below{22.266688044328115691, 235.38790178262499861, 1519.377599407554805,
                                              6485.558298266760755,  18615.571640885098091, 34900.952721145977266,
                                              38912.003286093271411, 19685.429676859990727};
    f64 above = Above[8] * x;
    f64 below = x;
    for (int i = 0; i < 7; ++i) {
      above = (above + Above[i]) * x;
      below = (below + Below[i]) * x;
    }
    return (above + Above[7]) / (below + Below[7]);
  }
  const f64 s = 1 / (x * x);
  const f64 above =
      ((((0.02307344176494017303 * s + 0.21589853405795699) * s + 0.1274011611602473639) * s + 0.022235277870649807) *
           s +
       0.001421619193227893466) *
          s +
      2.9112874951168792e-5;
  const f64 below = ((((s + 1.28426009614491121) * s + 0.468238212480865118) * s + 0.0659881378689285515) * s +
                     0.00378239633202758244) *
                        s +
                    7.29751555083966205e-5;
  return (InverseSqrtTwoPi - s * above / below) / x;
}

// exp(-x*x/2), the square split so that its rounding is not magnified.
f64 ExpOfHalfSquare(f64 x) {
  const f64 head = std::trunc(x * 16) / 16;
  const f64 rest = (x - head) * (x + head);
  return std::exp(-head * head / 2) * std::exp(-rest / 2);
}

}  // namespace

Tails NormalTails(f64 x) {
  const f64 size = std::fabs(x);
  if (size <= CentralEnd) {
    const f64 central = Central(x);
    return {0.5 + central, 0.5 - central};
  }
  if (std::isnan(x)) return {NaN, NaN};
  const f64 tail = size > 40 ? 0 : ExpOfHalfSquare(size) * ScaledTail(size);
  return x < 0 ? Tails{tail, 1 - tail} : Tails{1 - tail, tail};
}

f64 ScaledNormalTail(f64 x) { return x <= CentralEnd ? (0.5 - Central(x)) * std::exp(x * x / 2) : ScaledTail(x); }

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 ALNORM(const f64& x) { return NormalTails(x).lower; }

// M. J. Wichura (1988), Algorithm AS 241, PPND16, Applied Statistics 37:477-484.
f64 GAUINV(const f64& p, i32& ifault) {
  ifault = p > 0 && p < 1 ? 0 : 1;
  if (ifault != 0) return 0;

  const f64 q = p - 0.5;
  if (std::fabs(q) <= 0.425) {
    const f64 r = 0.180625 - q * q;
    return q *
           (((((((2.5090809287301226727e3 * r + 3.3430575583588128105e4) * r + 6.7265770927008700853e4) * r +
                4.5921953931549871457e4) *
                   r +
               1.3731693765509461125e4) *
                  r +
              1.9715909503065514427e3) *
                 r +
             1.3314166789178437745e2) *
                r +
            3.3871328727963666080e0) /
           (((((((5.2264952788528545610e3 * r + 2.8729085735721942674e4) * r + 3.9307895800092710610e4) * r +
                2.1213794301586595867e4) *
                   r +
               5.3941960214247511077e3) *
                  r +
              6.8718700749205790830e2) *
                 r +
             4.2313330701600911252e1) *
                r +
            1);
  }
  f64 r = std::sqrt(-std::log(q < 0 ? p : 1 - p));
  f64 z = 0;
  if (r <= 5) {
    r -= 1.6;
    z = (((((((7.74545014278341407640e-4 * r + 2.27238449892691845833e-2) * r + 2.41780725177450611770e-1) * r +
             1.27045825245236838258e0) *
                r +
            3.64784832476320460504e0) *
               r +
           5.76949722146069140550e0) *
              r +
          4.63033784615654529590e0) *
             r +
         1.42343711074968357734e0) /
        (((((((1.05075007164441684324e-9 * r + 5.47593808499534494600e-4) * r + 1.51986665636164571966e-2) * r +
             1.48103976427480074590e-1) *
                r +
            6.89767334985100004550e-1) *
               r +
           1.67638483018380384940e0) *
              r +
          2.05319162663775882187e0) *
             r +
         1);
  } else {
    r -= 5;
    z = (((((((2.01033439929228813265e-7 * r + 2.71155556874348757815e-5) * r + 1.24266094738807843860e-3) * r +
             2.65321895265761230930e-2) *
                r +
            2.96560571828504891230e-1) *
               r +
           1.78482653991729133580e0) *
              r +
          5.46378491116411436990e0) *
             r +
         6.65790464350110377720e0) /
        (((((((2.04426310338993978564e-15 * r + 1.42151175831644588870e-7) * r + 1.84631831751005468180e-5) * r +
             7.86869131145613259100e-4) *
                r +
            1.48753612908506148525e-2) *
               r +
           1.36929880922735805310e-1) *
              r +
          5.99832206555887937690e-1) *
             r +
         1);
  }
  return q < 0 ? -z : z;
}
