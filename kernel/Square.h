// Small square matrices, by columns.
#pragma once

#include <cstddef>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// Where an element stands in an array by columns with a leading dimension.
inline std::size_t Place(i32 row, i32 column, i32 leading) {
  return static_cast<std::size_t>(column) * static_cast<std::size_t>(leading) + static_cast<std::size_t>(row);
}

// A square matrix by columns; only as much as the factorisations need.
template <typename Real>
class Square {
 public:
  explicit Square(int size) : size_(size), values_(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)) {}
  int size() const { return size_; }
  Real& operator()(int row, int column) { return values_[At(row, column)]; }
  const Real& operator()(int row, int column) const { return values_[At(row, column)]; }

 private:
  std::size_t At(int row, int column) const {
    return static_cast<std::size_t>(column) * static_cast<std::size_t>(size_) + static_cast<std::size_t>(row);
  }
  int size_;
  std::vector<Real> values_;
};

// The inverse of a triangle, rows and columns with a diagonal of 0 left out of it.
template <typename Real>
Square<Real> InverseTriangle(const Square<Real>& r) {
  const int p = r.size();
  Square<Real> inverse(p);
  const auto kept = [&](int j) { return static_cast<f64>(r(j, j)) != 0; };
  for (int j = 0; j < p; ++j) {
    if (!kept(j)) continue;
    inverse(j, j) = Real(1) / r(j, j);
    for (int i = j - 1; i >= 0; --i) {
      if (!kept(i)) continue;
      Real sum = 0;
      for (int k = i + 1; k <= j; ++k) sum += r(i, k) * inverse(k, j);
      inverse(i, j) = Real(0) - sum / r(i, i);
    }
  }
  return inverse;
}

}  // namespace tellurix::kernel
