// The singular value decomposition.
#include <Eigen/SVD>
#include <algorithm>
#include <cmath>
#include <functional>
#include <new>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/RowBlockQr.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, NotFinite, NoConvergence, NoMemory };

// Up to so many singular values rotations are quick enough.
constexpr Eigen::Index MostByRotations = 64;

template <typename Decomposition>
Status Store(const Decomposition& svd, f64* s, f64* u, f64* v) {
  if (svd.info() != Eigen::Success) return NoConvergence;
  const auto copy = [](const auto& from, f64* to) { std::copy_n(from.data(), from.size(), to); };
  copy(svd.singularValues(), s);
  copy(svd.matrixU(), u);
  copy(svd.matrixV(), v);
  return Done;
}

Status Decompose(const Eigen::MatrixXd& a, f64* s, f64* u, f64* v) {
  constexpr unsigned Vectors = Eigen::ComputeThinU | Eigen::ComputeThinV;
  if (std::min(a.rows(), a.cols()) <= MostByRotations)
    return Store(Eigen::JacobiSVD<Eigen::MatrixXd>(a, Vectors), s, u, v);
  return Store(Eigen::BDCSVD<Eigen::MatrixXd>(a, Vectors), s, u, v);
}

// Computes the singular values anew from the vectors, in twice the precision: u'Av over |u||v|, in which the errors of
// the vectors count in the second order only (T. Ogita & K. Aishima 2020, Journal of Computational and Applied
// Mathematics 369:112512).
void RefineValues(const Eigen::MatrixXd& a, f64* s, const f64* u, const f64* v) {
  const int n = static_cast<int>(a.cols());
  const int count = static_cast<int>(std::min(a.rows(), a.cols()));
  const auto sizes = static_cast<std::size_t>(count);
  std::vector<DoubleDouble> products(sizes);
  std::vector<DoubleDouble> lengths(sizes);
  const int image = n;  // the columns of a block: those of A, then -Av, then u
  DoubleDoubleBlock block(n + 2);
  for (Eigen::Index first = 0; first < a.rows(); first += DoubleDoubleBlock::Rows) {
    const int rows = static_cast<int>(std::min<Eigen::Index>(DoubleDoubleBlock::Rows, a.rows() - first));
    for (int j = 0; j < n; ++j) std::copy_n(a.col(j).data() + first, rows, block.High(j));
    for (int k = 0; k < count; ++k) {
      std::fill_n(block.High(image), rows, 0.0);
      std::fill_n(block.Low(image), rows, 0.0);
      for (int j = 0; j < n; ++j) block.Subtract(image, v[static_cast<std::ptrdiff_t>(k) * n + j], j, rows);
      std::copy_n(u + k * a.rows() + first, rows, block.High(image + 1));
      products[static_cast<std::size_t>(k)] -= block.Dot(image, image + 1, rows);
      lengths[static_cast<std::size_t>(k)] += block.Dot(image + 1, image + 1, rows);
    }
  }
  for (int k = 0; k < count; ++k) {
    DoubleDouble length = 0;
    for (int j = 0; j < n; ++j) {
      const f64 element = v[static_cast<std::ptrdiff_t>(k) * n + j];
      length += TwoProduct(element, element);
    }
    const auto at = static_cast<std::size_t>(k);
    s[k] = std::fabs((products[at] / Root(lengths[at] * length)).high);
  }
  std::sort(s, s + count, std::greater<>());
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void SVD(const i32& m, const i32& n, const f64* a, const i32& leading, f64* s, f64* u, f64* v, i32& status) {
  status = BadSizes;
  if (m < 1 || n < 1 || leading < m || a == nullptr || s == nullptr || u == nullptr || v == nullptr) return;
  try {
    const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> given(a, m, n, Eigen::OuterStride<>(leading));
    status = NotFinite;
    if (!given.allFinite()) return;
    const f64 largest = given.cwiseAbs().maxCoeff();
    // A power of two that brings the largest element to about 1.
    const f64 scale = largest > 0 ? std::ldexp(1.0, std::clamp(-std::ilogb(largest), -1000, 1000)) : 1;
    const Eigen::MatrixXd scaled = given * scale;
    status = Decompose(scaled, s, u, v);
    if (status != Done) return;
    RefineValues(scaled, s, u, v);
    for (i32 k = 0; k < std::min(m, n); ++k) s[k] /= scale;
    if (!std::isfinite(s[0])) status = NoConvergence;
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  }
}
