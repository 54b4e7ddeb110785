#include "kernel/RowBlockQr.h"

namespace tellurix::kernel {

namespace {

// Sums run in this many lanes, whatever the machine, so that results are alike everywhere.
constexpr int Lanes = 8;

// The loops below gain from wide registers; every clone computes the same figures.
#if defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)
#define TELLURIX_WIDE __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define TELLURIX_WIDE
#endif

TELLURIX_WIDE double PlainDot(const double* a, const double* b, int rows) {
  double lanes[Lanes] = {};
  int i = 0;
  for (; i + Lanes <= rows; i += Lanes) {
    for (int lane = 0; lane < Lanes; ++lane) lanes[lane] += a[i + lane] * b[i + lane];
  }
  double sum = 0;
  for (; i < rows; ++i) sum += a[i] * b[i];
  for (const double lane : lanes) sum += lane;
  return sum;
}

TELLURIX_WIDE void PlainSubtract(double* __restrict__ to, double factor, const double* __restrict__ from, int rows) {
  for (int i = 0; i < rows; ++i) to[i] -= factor * from[i];
}

struct LaneSums {
  double high[Lanes] = {};
  double low[Lanes] = {};
};

// Adds a product to one lane, both parts of it.
inline __attribute__((always_inline)) void AddProduct(LaneSums& sums, int lane, double ah, double al, double bh,
                                                      double bl) {
  const DoubleDouble product = TwoProduct(ah, bh);
  const DoubleDouble sum = TwoSum(sums.high[lane], product.high);
  sums.high[lane] = sum.high;
  sums.low[lane] += sum.low + (product.low + (ah * bl + al * bh));
}

TELLURIX_WIDE void PairDot(const double* ah, const double* al, const double* bh, const double* bl, int rows,
                           LaneSums& sums) {
  int i = 0;
  for (; i + Lanes <= rows; i += Lanes) {
    for (int lane = 0; lane < Lanes; ++lane)
      AddProduct(sums, lane, ah[i + lane], al[i + lane], bh[i + lane], bl[i + lane]);
  }
  for (; i < rows; ++i) AddProduct(sums, i % Lanes, ah[i], al[i], bh[i], bl[i]);
}

TELLURIX_WIDE void PairSubtract(double* __restrict__ toHigh, double* __restrict__ toLow, DoubleDouble factor,
                                const double* __restrict__ high, const double* __restrict__ low, int rows) {
  const double upper = UpperHalf(factor.high);
  const double lower = factor.high - upper;
  for (int i = 0; i < rows; ++i) {
    const DoubleDouble product = TwoProduct(factor.high, upper, lower, high[i]);
    const double productLow = product.low + (factor.high * low[i] + factor.low * high[i]);
    const DoubleDouble sum = TwoSum(toHigh[i], -product.high);
    const DoubleDouble result = QuickTwoSum(sum.high, sum.low + (toLow[i] - productLow));
    toHigh[i] = result.high;
    toLow[i] = result.low;
  }
}

}  // namespace

double PlainBlock::Dot(const double* a, const double* b, int rows) { return PlainDot(a, b, rows); }

void PlainBlock::Subtract(double* to, double factor, const double* from, int rows) {
  PlainSubtract(to, factor, from, rows);
}

DoubleDouble DoubleDoubleBlock::Dot(const double* ah, const double* al, const double* bh, const double* bl, int rows) {
  LaneSums sums;
  PairDot(ah, al, bh, bl, rows, sums);
  DoubleDouble sum = 0;
  for (int lane = 0; lane < Lanes; ++lane) sum += QuickTwoSum(sums.high[lane], sums.low[lane]);
  return sum;
}

void DoubleDoubleBlock::Subtract(double* toHigh, double* toLow, DoubleDouble factor, const double* high,
                                 const double* low, int rows) {
  PairSubtract(toHigh, toLow, factor, high, low, rows);
}

}  // namespace tellurix::kernel
