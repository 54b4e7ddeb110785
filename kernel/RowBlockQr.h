// The triangular factor of a matrix that comes in blocks of rows.
#pragma once

#include <cstddef>
#include <vector>

#include "kernel/DoubleDouble.h"
#include "kernel/Square.h"

namespace tellurix::kernel {

// A block of rows held by columns, in doubles.
class PlainBlock {
 public:
  using Real = double;
  static constexpr int Rows = 512;  // 21 columns fill 86 kilobytes

  explicit PlainBlock(int columns) : values_(static_cast<std::size_t>(columns) * Rows) {}
  double* Column(int j) { return values_.data() + static_cast<std::size_t>(j) * Rows; }

  // The inner product of two columns, in a fixed order of summation.
  double Dot(int j, int k, int rows) { return Dot(Column(j), Column(k), rows); }
  // column k -= factor * column j
  void Subtract(int k, double factor, int j, int rows) { Subtract(Column(k), factor, Column(j), rows); }

 private:
  static double Dot(const double* a, const double* b, int rows);
  static void Subtract(double* to, double factor, const double* from, int rows);
  std::vector<double> values_;
};

// The same in twice the precision.
class DoubleDoubleBlock {
 public:
  using Real = DoubleDouble;
  static constexpr int Rows = 256;

  explicit DoubleDoubleBlock(int columns)
      : high_(static_cast<std::size_t>(columns) * Rows), low_(static_cast<std::size_t>(columns) * Rows) {}
  double* High(int j) { return high_.data() + static_cast<std::size_t>(j) * Rows; }
  double* Low(int j) { return low_.data() + static_cast<std::size_t>(j) * Rows; }

  DoubleDouble Dot(int j, int k, int rows) { return Dot(High(j), Low(j), High(k), Low(k), rows); }
  void Subtract(int k, DoubleDouble factor, int j, int rows) {
    Subtract(High(k), Low(k), factor, High(j), Low(j), rows);
  }

 private:
  static DoubleDouble Dot(const double* ah, const double* al, const double* bh, const double* bl, int rows);
  static void Subtract(double* toHigh, double* toLow, DoubleDouble factor, const double* high, const double* low,
                       int rows);
  std::vector<double> high_;
  std::vector<double> low_;
};

// Reduces the rows of `block` into the triangle R, so that R'R afterwards is R'R + block' block. Householder's
// reflections, each of one row of R and the block (G. H. Golub & C. F. Van Loan 2013, Matrix Computations, 4th edition,
// 5.2 and 6.5; sequential form of J. Demmel, L. Grigori, M. Hoemmen & J. Langou 2012, SIAM Journal on Scientific
// Computing 34:A206-A239). The diagonal of R stays at least 0; the block is destroyed.
template <typename Block>
void ReduceInto(Square<typename Block::Real>& r, Block& block, int rows) {
  using Real = typename Block::Real;
  for (int j = 0; j < r.size(); ++j) {
    const Real below = block.Dot(j, j, rows);
    if (!(static_cast<double>(below) > 0)) continue;
    // The reflection that takes (r, b) to (norm, 0) has the vector (r - norm, b); r - norm without cancellation.
    const Real norm = Root(r(j, j) * r(j, j) + below);
    const Real head = Real(0) - below / (r(j, j) + norm);
    const Real scale = Real(1) / (Real(0) - head * norm);  // 2 over the square of the vector's length
    for (int k = j + 1; k < r.size(); ++k) {
      const Real factor = (head * r(j, k) + block.Dot(j, k, rows)) * scale;
      r(j, k) -= head * factor;
      block.Subtract(k, factor, j, rows);
    }
    r(j, j) = norm;
  }
}

}  // namespace tellurix::kernel
