// Covariances of coefficients from the triangular factor.
#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/RowBlockQr.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, NotFinite, OutOfRange, NoMemory };

// What RCOVARB reads: the triangle with columns scaled by powers of two, so that no product leaves the range.
template <typename Real>
struct ScaledTriangle {
  Square<Real> r;
  std::vector<f64> scales;
};

DoubleDouble Pair(DoubleDouble, f64 high, f64 low) { return {high, low}; }
f64 Pair(f64, f64 high, f64) { return high; }

template <typename Real>
ScaledTriangle<Real> ReadTriangle(i32 p, const f64* r, i32 leading) {
  ScaledTriangle<Real> read{Square<Real>(p), std::vector<f64>(static_cast<std::size_t>(p), 1.0)};
  for (i32 j = 0; j < p; ++j) {
    f64 largest = 0;
    for (i32 i = 0; i <= j; ++i) largest = std::max(largest, std::fabs(r[Place(i, j, leading)]));
    f64& scale = read.scales[static_cast<std::size_t>(j)];
    if (largest > 0) scale = std::ldexp(1.0, std::clamp(-std::ilogb(largest), -1000, 1000));
    for (i32 i = 0; i <= j; ++i) {
      const f64 low = i < j ? r[Place(j, i, leading)] : 0;
      read.r(i, j) = Pair(Real(), r[Place(i, j, leading)] * scale, low * scale);
    }
  }
  return read;
}

// False where an element is not finite or a word below the diagonal is more than rounding.
bool WordsAreLegal(i32 p, const f64* r, i32 leading, bool& hasLowWords) {
  hasLowWords = false;
  for (i32 j = 0; j < p; ++j) {
    for (i32 i = 0; i <= j; ++i) {
      const f64 high = r[Place(i, j, leading)];
      if (!std::isfinite(high)) return false;
      if (i == j) continue;
      const f64 low = r[Place(j, i, leading)];
      if (!(std::fabs(low) <= Epsilon * std::fabs(high))) return false;
      hasLowWords = hasLowWords || low != 0;
    }
  }
  return true;
}

template <typename Real>
Status StoreCovariance(i32 p, const f64* r, i32 leading, f64 scale, f64* covariance, i32 covarianceLeading) {
  const auto triangle = ReadTriangle<Real>(p, r, leading);
  const auto inverse = InverseTriangle(triangle.r);
  bool finite = true;
  for (i32 j = 0; j < p; ++j) {
    for (i32 i = 0; i <= j; ++i) {
      Real sum = 0;
      for (i32 k = j; k < p; ++k) sum += inverse(i, k) * inverse(j, k);
      const f64 value = static_cast<f64>(sum) * scale * triangle.scales[static_cast<std::size_t>(i)] *
                        triangle.scales[static_cast<std::size_t>(j)];
      finite = finite && std::isfinite(value);
      covariance[Place(i, j, covarianceLeading)] = covariance[Place(j, i, covarianceLeading)] = value;
    }
  }
  return finite ? Done : OutOfRange;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void RCOVARB(const i32& p, const f64* r, const i32& rLeading, const f64& scale, f64* covariance,
             const i32& covarianceLeading, i32& status) {
  status = BadSizes;
  if (p < 1 || rLeading < p || covarianceLeading < p || r == nullptr || covariance == nullptr) return;
  bool hasLowWords = false;
  status = NotFinite;
  if (!std::isfinite(scale) || !WordsAreLegal(p, r, rLeading, hasLowWords)) return;
  try {
    status = hasLowWords ? StoreCovariance<DoubleDouble>(p, r, rLeading, scale, covariance, covarianceLeading)
                         : StoreCovariance<f64>(p, r, rLeading, scale, covariance, covarianceLeading);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
