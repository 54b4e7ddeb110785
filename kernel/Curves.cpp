// Polynomials, interpolation, the trapezoidal rule.
#include <cmath>
#include <new>
#include <vector>

#include "kernel/DoubleDouble.h"
#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// Neville's scheme on finite points; false where two abscissae are equal.
bool Interpolate(const f64* xa, const f64* ya, i32 n, f64 x, f64& y, f64& dy) {
  std::vector<f64> p(ya, ya + n);
  dy = p[0];
  for (i32 m = 1; m < n; ++m) {
    if (m == n - 1) dy = std::fabs(x - xa[0]) >= std::fabs(x - xa[n - 1]) ? p[1] : p[0];
    for (i32 i = 0; i + m < n; ++i) {
      const f64 width = xa[i + m] - xa[i];
      if (width == 0) return false;
      const auto at = static_cast<std::size_t>(i);
      p[at] += (x - xa[i]) / width * (p[at + 1] - p[at]);
    }
  }
  y = p[0];
  if (n > 1) dy = y - dy;
  return true;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 POLYFUNC(const f64& x, const f64* coefficients, const i32& degree) {
  if (degree < 0 || coefficients == nullptr) return NaN;
  f64 sum = coefficients[degree];
  f64 error = 0;
  for (i32 k = degree - 1; k >= 0; --k) {
    const DoubleDouble product = TwoProduct(sum, x);
    const DoubleDouble next = TwoSum(product.high, coefficients[k]);
    sum = next.high;
    error = error * x + (product.low + next.low);
  }
  if (std::isfinite(error)) return sum + error;
  // Too large for products without error: plainly.
  sum = coefficients[degree];
  for (i32 k = degree - 1; k >= 0; --k) sum = sum * x + coefficients[k];
  return sum;
}

void POLINT(const f64* xa, const f64* ya, const i32& n, const f64& x, f64& y, f64& dy, i32& status) {
  y = dy = 0;
  status = 1;
  if (n < 1 || xa == nullptr || ya == nullptr) return;
  f64 value = 0;
  f64 change = 0;
  try {
    if (!Interpolate(xa, ya, n, x, value, change) || !std::isfinite(value) || !std::isfinite(change)) return;
  } catch (const std::bad_alloc&) {
    status = 2;
    return;
  }
  y = value;
  dy = change;
  status = 0;
}

void TRAPZD(const f64& lower, const f64& upper, const f64* values, const i32& stage, f64& result, const i32& count) {
  const bool legal =
      stage >= 1 && stage <= 32 && values != nullptr && count == (stage == 1 ? 2 : i32{1} << (stage - 2));
  if (!legal) {
    result = NaN;
    return;
  }
  DoubleDouble sum = 0;
  for (i32 i = 0; i < count; ++i) sum += values[i];
  const f64 mean = sum.high / count;
  if (stage == 1) {
    result = (upper - lower) * mean;
  } else {
    result = (result + (upper - lower) * mean) / 2;
  }
}
