// Inverses of information matrices.
#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/Square.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, NotFinite, NotDefinite, NoMemory, OutOfRange };

// Of a row's diagonal, what the rows before must leave.
constexpr f64 LeastPivot = 1e-12;

// The upper Cholesky factor of a symmetric matrix whose diagonal is 1; the first row that fails, counted from 1, or 0.
i32 Factorise(Square<f64>& a) {
  for (int j = 0; j < a.size(); ++j) {
    for (int i = 0; i < j; ++i) {
      for (int k = 0; k < i; ++k) a(i, j) -= a(k, i) * a(k, j);
      a(i, j) /= a(i, i);
    }
    for (int k = 0; k < j; ++k) a(j, j) -= a(k, j) * a(k, j);
    if (!(a(j, j) > LeastPivot)) return j + 1;
    a(j, j) = std::sqrt(a(j, j));
  }
  return 0;
}

bool UpperIsFinite(i32 n, const f64* a, i32 leading) {
  for (i32 j = 0; j < n; ++j) {
    if (!std::all_of(a + Place(0, j, leading), a + Place(j, j, leading) + 1, [](f64 x) { return std::isfinite(x); }))
      return false;
  }
  return true;
}

Status InvertDefinite(i32 n, const f64* a, i32 leading, f64* inverse, i32 inverseLeading, f64& logDeterminant,
                      i32& failed) {
  std::vector<f64> lengths(static_cast<std::size_t>(n));
  for (i32 j = 0; j < n; ++j) {
    const f64 diagonal = a[Place(j, j, leading)];
    if (!(diagonal > 0)) return failed = j + 1, NotDefinite;
    lengths[static_cast<std::size_t>(j)] = std::sqrt(diagonal);
  }
  Square<f64> factor(n);
  for (i32 j = 0; j < n; ++j) {
    for (i32 i = 0; i < j; ++i)
      factor(i, j) =
          a[Place(i, j, leading)] / lengths[static_cast<std::size_t>(i)] / lengths[static_cast<std::size_t>(j)];
    factor(j, j) = 1;
  }
  failed = Factorise(factor);
  if (failed != 0) return NotDefinite;

  const auto half = InverseTriangle(factor);
  bool finite = true;
  logDeterminant = 0;
  for (i32 j = 0; j < n; ++j) {
    logDeterminant += 2 * (std::log(factor(j, j)) + std::log(lengths[static_cast<std::size_t>(j)]));
    for (i32 i = 0; i <= j; ++i) {
      f64 sum = 0;
      for (i32 k = j; k < n; ++k) sum += half(i, k) * half(j, k);
      sum = sum / lengths[static_cast<std::size_t>(i)] / lengths[static_cast<std::size_t>(j)];
      finite = finite && std::isfinite(sum);
      inverse[Place(i, j, inverseLeading)] = inverse[Place(j, i, inverseLeading)] = sum;
    }
  }
  return finite ? Done : OutOfRange;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void MXINV(const i32& n, const f64* a, const i32& leading, f64* inverse, const i32& inverseLeading, f64& logDeterminant,
           i32& failed, i32& status) {
  failed = 0;
  status = BadSizes;
  if (n < 1 || leading < n || inverseLeading < n || a == nullptr || inverse == nullptr) return;
  status = NotFinite;
  if (!UpperIsFinite(n, a, leading)) return;
  try {
    status = InvertDefinite(n, a, leading, inverse, inverseLeading, logDeterminant, failed);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
