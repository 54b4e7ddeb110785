// Comparisons of several means with a control.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"
#include "kernel/ScaleMixture.h"

namespace tellurix::kernel {

namespace {

constexpr f64 MostRatio = 1e6;

// The largest |X_i| of the differences from a control, X_i = lambda_i Z + sqrt(1 - lambda_i^2) Z_i with lambda_i^2 =
// n_i / (n_i + n_c): given the control's Z they are independent. P(max > w) is the integral over z of phi(z) times 1
// less the product of 1 - c_i(z), where c_i = P(|X_i| > w given z).
class ControlMaximum {
 public:
  ControlMaximum(const i32* sizes, i32 k) : sizes_(sizes), k_(k) {
    // The steepest factor rises within sqrt(1 - lambda^2).
    const f64 ratio = static_cast<f64>(*std::max_element(sizes + 1, sizes + k)) / sizes[0];
    step_ = std::min(0.25, 0.6 / std::sqrt(1 + ratio));
  }

  // P(max > w) exp(w^2 / 2).
  f64 ScaledTail(f64 w) const {
    if (w > MostTail) return ScaledUnion(w);
    // The integrand is even in z and follows exp(-(z - lambda w)^2 / 2) where it is small.
    f64 sum = 0;
    for (f64 i = 0; i * step_ < w + 8.5; i += 1) {
      const f64 z = i * step_;
      const f64 logDensity = (w * w - z * z) / 2;
      sum += (i == 0 ? 0.5 : 1) * std::exp(logDensity) * AnyBeyond(z, w);
    }
    return 2 * step_ * InverseSqrtTwoPi * sum;
  }

 private:
  // Above, the chance of two being beyond is left out: P is below 1e-100 k there.
  static constexpr f64 MostTail = 22;

  f64 ScaledUnion(f64 w) const { return 2 * (k_ - 1) * ScaledNormalTail(w); }

  f64 AnyBeyond(f64 z, f64 w) const {
    f64 logNone = 0;
    f64 term = 0;
    for (i32 i = 1; i < k_; ++i) {
      if (i == 1 || sizes_[i] != sizes_[i - 1]) {
        const f64 ratio = static_cast<f64>(sizes_[i]) / sizes_[0];
        // (w -+ lambda z) / sqrt(1 - lambda^2)
        const f64 scale = std::sqrt(1 + ratio);
        const f64 lean = std::sqrt(ratio) * z;
        const f64 beyond = NormalTails(w * scale - lean).upper + NormalTails(w * scale + lean).upper;
        term = std::log1p(-std::min(beyond, 1.0));
      }
      logNone += term;
    }
    return -std::expm1(logNone);
  }

  const i32* sizes_;
  i32 k_;
  f64 step_;
};

bool LegalControl(i32 k, f64 df, const i32* sizes) {
  if (!(k >= 2 && k <= 1000 && df >= 0.1)) return false;
  for (i32 i = 0; i < k; ++i) {
    if (sizes[i] < 1 || sizes[i] > MostRatio * sizes[0]) return false;
  }
  return true;
}

// P(D > d) for legal arguments.
f64 ControlUpper(f64 d, i32 k, f64 df, const i32* sizes) {
  if (d <= 0) return 1;
  if (std::isinf(d)) return 0;
  if (k == 2) return 2 * StudentTails(d, df).upper;
  const ControlMaximum maximum(sizes, k);
  constexpr f64 Width = 0.4;
  return std::min(ScaleMixture(d, df, 0.5, Width, [&](f64 w) { return maximum.ScaledTail(w); }), 1.0);
}

f64 ControlQuantile(f64 p, i32 k, f64 df, const i32* sizes) {
  if (p == 1) return 0;
  const f64 start = TFROMP(p / (2.0 * (k - 1)), df);  // Bonferroni's bound
  if (k == 2) return start < NoValue ? start : NoValue;
  return InverseTail(p, start, [&](f64 d) { return ControlUpper(d, k, df, sizes); });
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 DMCC(const f64& d, const i32& k, const f64& df, const i32& sizes, f64& p, i32& ifault) {
  const bool legal = !std::isnan(d) && LegalControl(k, df, &sizes);
  p = legal ? ControlUpper(d, k, df, &sizes) : NoValue;
  ifault = legal ? 0 : 1;
  return p;
}

f64 PPD2(const f64& p, const i32& k, const f64& df, const i32& sizes, f64& d, i32& ifault) {
  const bool legal = p > 0 && p <= 1 && LegalControl(k, df, &sizes);
  d = legal ? ControlQuantile(p, k, df, &sizes) : NoValue;
  ifault = d == NoValue ? 1 : 0;
  return d;
}
