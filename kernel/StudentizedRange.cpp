// The studentized range, and the largest of several.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "kernel/Inner.h"
#include "kernel/ScaleMixture.h"

namespace tellurix::kernel {

namespace {

// The trapezoidal rule over the largest of the k values stands on multiples of GridStep. So does a table of the normal
// distribution with its derivatives, from which Taylor's series gives P(Z <= z - w) for a whole row of z at once. The
// work is done on a few neighbouring points at a time, in the registers of vectors.
constexpr f64 GridStep = 0.2;
constexpr int GridReach = 72;  // the grid runs from -GridReach to GridReach steps
constexpr int Block = 4;
constexpr int GridSize = 2 * GridReach + 1 + Block;
constexpr int TaylorTerms = 14;
constexpr int MostPhases = 4;  // large k asks for points in between
constexpr f64 FastReach = 14;  // ranges up to here stay within the table

using Lanes [[gnu::vector_size(Block * sizeof(f64)), gnu::aligned(sizeof(f64)), gnu::may_alias]] = f64;

Lanes& LanesAt(f64& first) { return reinterpret_cast<Lanes&>(first); }
const Lanes& LanesAt(const f64& first) { return reinterpret_cast<const Lanes&>(first); }

// Row n holds, by point, the nth derivative of P(Z <= x) over n!.
struct NormalGrid {
  std::array<f64, TaylorTerms * GridSize> terms;

  f64& Term(int n, int i) { return terms[n * GridSize + i]; }
  const f64* Row(int n, int first) const { return terms.data() + n * GridSize + first + GridReach; }

  NormalGrid() {
    for (int i = 0; i < GridSize; ++i) {
      const f64 x = (i - GridReach) * GridStep;
      Term(0, i) = NormalTails(x).lower;
      Term(1, i) = InverseSqrtTwoPi * std::exp(-x * x / 2);
      Term(2, i) = -x * Term(1, i) / 2;
      // The derivatives of the density: f(n + 1) = -x f(n) - n f(n - 1).
      for (int n = 2; n + 1 < TaylorTerms; ++n)
        Term(n + 1, i) = (-x * Term(n, i) - (n - 1) * Term(n - 1, i) / n) / (n + 1);
    }
  }
};

const NormalGrid& Grid() {
  static const NormalGrid grid;
  return grid;
}

// P(Z <= (i + first) GridStep + shift) for i below Block; |shift| is at most half a step. Even and odd terms by
// themselves, as two chains that do not wait for each other.
void NormalBlock(const NormalGrid& grid, int first, f64 shift, f64& row) {
  const f64* at = grid.Row(TaylorTerms - 2, first);
  const f64 square = shift * shift;
  Lanes even = LanesAt(at[0]);
  Lanes odd = LanesAt(at[GridSize]);
  for (int n = TaylorTerms - 4; n >= 0; n -= 2) {
    at -= 2 * GridSize;
    even = even * square + LanesAt(at[0]);
    odd = odd * square + LanesAt(at[GridSize]);
  }
  LanesAt(row) = even + shift * odd;
}

// Adds weight (a^m - (a - c)^m) of a block to the sum, by squaring: with b = a - c and d(m) = a^m - b^m, d(2 m) =
// d(m) (a^m + b^m) and d(m + 1) = a d(m) + c b^m. `highest` is the highest power of 2 in m.
void AddPowerDifferences(const f64& firstA, const f64& firstC, const f64& firstWeight, int m, int highest, f64& sum) {
  const Lanes a = LanesAt(firstA);
  const Lanes c = LanesAt(firstC);
  const Lanes b = a - c;
  Lanes powerA = a;
  Lanes powerB = b;
  Lanes difference = c;
  for (int bit = highest / 2; bit > 0; bit /= 2) {
    difference *= powerA + powerB;
    powerA *= powerA;
    powerB *= powerB;
    if ((m & bit) == 0) continue;
    difference = a * difference + c * powerB;
    powerA *= a;
    powerB *= b;
  }
  LanesAt(sum) += LanesAt(firstWeight) * difference;
}

// Where the largest of k values matters: below, a^(k - 1) has vanished.
f64 LowestMaximum(f64 k) {
  i32 ifault = 0;
  return std::max(GAUINV(std::exp(-33 / (k - 1)), ifault), -9.0);
}

// Below this range nothing lies: P(range < w) < k (w / sqrt(2 pi))^(k - 1).
f64 CertainRange(f64 k) { return std::pow(Epsilon / 4 / k, 1 / (k - 1)) / InverseSqrtTwoPi; }

// The range of k independent standard normal values: P(range > w) is the integral over z, the largest value, of
//   k phi(z) (a^(k - 1) - b^(k - 1)),  a = P(Z <= z), b = P(z - w <= Z <= z),
// in which the difference is formed from c = a - b without cancellation.
class NormalRange {
 public:
  explicit NormalRange(f64 k)
      : k_(k), lowest_(LowestMaximum(k)), certain_(CertainRange(k)), reach_(std::sqrt(28.5 + std::log(k))) {
    phases_ = k <= 50 ? 1 : k <= 3000 ? 2 : MostPhases;
    step_ = GridStep / phases_;
    if (k != std::floor(k)) return;
    power_ = static_cast<int>(k) - 1;
    highest_ = static_cast<int>(std::bit_floor(static_cast<unsigned>(power_)));
    first_ = static_cast<int>(std::floor(lowest_ / GridStep));
    const NormalGrid& grid = Grid();
    below_[0] = grid.Row(0, first_);
    density_[0] = grid.Row(1, first_);
    for (int phase = 1; phase < phases_; ++phase) FillBetween(phase);
  }

  // The distance over which P falls for the largest of `ranges` ranges.
  f64 Width(f64 ranges) const { return std::clamp(0.55 - 0.09 * std::log(k_ * ranges / 12), 0.15, 0.55); }

  // P(range > w) exp(w^2 / 4).
  f64 ScaledTail(f64 w) const {
    if (w < certain_) return std::exp(w * w / 4);
    const f64 low = std::max(lowest_, w / 2 - reach_);
    const f64 high = w > 2 * reach_ ? w / 2 + reach_ : std::sqrt(2 * reach_ * reach_ + w * w / 2);
    return power_ > 0 && w <= FastReach ? FastTail(w, low, high) : SlowTail(w, low, high);
  }

 private:
  f64 FastTail(f64 w, f64 low, f64 high) const {
    const NormalGrid& grid = Grid();
    const int begin = std::max(static_cast<int>(std::floor(low / GridStep)), first_);
    const int end = std::min(static_cast<int>(std::ceil(high / GridStep)), GridReach);
    std::array<f64, Block> sums{};
    for (int phase = 0; phase < phases_; ++phase) {
      const f64 distance = phase * step_ - w;
      const int steps = static_cast<int>(std::floor(distance / GridStep + 0.5));
      const f64 shift = distance - steps * GridStep;
      for (int i = begin; i < end; i += Block) {
        std::array<f64, Block> c;
        NormalBlock(grid, i + steps, shift, c[0]);
        const int at = i - first_;
        AddPowerDifferences(below_[phase][at], c[0], density_[phase][at], power_, highest_, sums[0]);
      }
    }
    return k_ * step_ * ((sums[0] + sums[1]) + (sums[2] + sums[3])) * std::exp(w * w / 4);
  }

  // The distribution and the density at the points `phase` steps above those of the grid.
  void FillBetween(int phase) {
    auto& below = belowBetween_[phase - 1];
    auto& density = densityBetween_[phase - 1];
    const int up = 2 * phase > phases_ ? 1 : 0;
    const f64 shift = phase * step_ - up * GridStep;
    for (int i = 0; i < GridReach - first_; i += Block) NormalBlock(Grid(), first_ + up + i, shift, below[i]);
    for (int i = 0; i < GridReach - first_ + Block; ++i) {
      const f64 z = (first_ + i) * GridStep + phase * step_;
      density[i] = InverseSqrtTwoPi * std::exp(-z * z / 2);
    }
    below_[phase] = below.data();
    density_[phase] = density.data();
  }

  // For fractional k, and beyond the table.
  f64 SlowTail(f64 w, f64 low, f64 high) const {
    const f64 m = k_ - 1;
    f64 sum = 0;
    for (f64 i = std::floor(low / step_); i * step_ < high; i += 1) {
      const f64 z = i * step_;
      const f64 a = NormalTails(z).lower;
      const f64 x = z - w;
      if (x > -2) {
        const f64 c = NormalTails(x).lower;
        sum -= std::exp(w * w / 4 - z * z / 2) * std::pow(a, m) * std::expm1(m * std::log1p(-std::min(c / a, 1.0)));
        continue;
      }
      // phi(z) c exp(w^2 / 4) by its exponent as a whole, for c may underflow.
      const f64 mills = ScaledNormalTail(-x);
      const f64 share = std::min(mills * std::exp(-x * x / 2) / a, 1.0);
      const f64 bend = m * share < 1e-17 ? 1 : -std::expm1(m * std::log1p(-share)) / (m * share);
      sum += m * std::pow(a, m - 1) * bend * mills * std::exp(-(z - w / 2) * (z - w / 2));
    }
    return k_ * step_ * InverseSqrtTwoPi * sum;
  }

  f64 k_;
  f64 lowest_;
  f64 certain_;
  f64 reach_;  // with both ends w apart, the density of the largest value falls off as k exp(-(z - w/2)^2)
  int phases_;
  f64 step_;
  int power_ = 0;  // k - 1 when k is an integer, else 0
  int highest_ = 0;
  // By phase and point from `first_` on: P(Z <= z) and phi(z).
  int first_ = 0;
  std::array<const f64*, MostPhases> below_;
  std::array<const f64*, MostPhases> density_;
  std::array<std::array<f64, GridSize>, MostPhases - 1> belowBetween_;
  std::array<std::array<f64, GridSize>, MostPhases - 1> densityBetween_;
};

bool LegalRange(f64 k, f64 df, f64 ranges) { return k >= 2 && k <= 1e6 && df >= 0.1 && ranges >= 1; }

// P(Q > q) for the largest of `ranges` ranges over one S; legal arguments, q > 0.
f64 RangeUpper(f64 q, const NormalRange& range, f64 df, f64 ranges) {
  if (std::isinf(q)) return 0;
  const f64 upper = ScaleMixture(q, df, 0.25, range.Width(ranges), [&](f64 w) {
    const f64 one = range.ScaledTail(w);
    if (ranges == 1) return one;
    const f64 scale = w > 50 ? 0 : std::exp(-w * w / 4);
    const f64 tail = std::min(one * scale, 1.0);
    return ranges * tail < 1e-17 ? ranges * one : -std::expm1(ranges * std::log1p(-tail)) / scale;
  });
  return std::min(upper, 1.0);
}

f64 RangeQuantile(f64 p, f64 k, f64 df, f64 ranges) {
  if (p == 1) return 0;
  // Bonferroni's bound from the pairs.
  const f64 pairs = ranges * k * (k - 1) / 2;
  const f64 start = std::sqrt(2.0) * TFROMP(p / (2 * pairs), df);
  if (pairs == 1) return start < NoValue ? start : NoValue;
  const NormalRange range(k);
  return InverseTail(p, start, [&](f64 q) { return RangeUpper(q, range, df, ranges); });
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 PROBSR(const f64& q, const f64& k, const f64& df) {
  if (std::isnan(q) || !LegalRange(k, df, 1)) return NoValue;
  if (q <= 0) return 1;
  if (k == 2) return 2 * StudentTails(q / std::sqrt(2.0), df).upper;
  return RangeUpper(q, NormalRange(k), df, 1);
}

f64 QUANTSR(const f64& p, const f64& k, const f64& df) {
  if (!(p > 0 && p <= 1) || !LegalRange(k, df, 1)) return NoValue;
  return RangeQuantile(p, k, df, 1);
}

f64 DMCA(const f64& q, const i32& k, const f64& df, const i32& ranges, f64& p, i32& ifault) {
  const bool legal = !std::isnan(q) && LegalRange(k, df, ranges);
  ifault = legal ? 0 : 1;
  p = !legal ? NoValue : q <= 0 ? 1 : RangeUpper(q, NormalRange(k), df, ranges);
  return p;
}

f64 PPQ2(const f64& p, const i32& k, const f64& df, const i32& ranges, f64& q, i32& ifault) {
  const bool legal = p > 0 && p <= 1 && LegalRange(k, df, ranges);
  q = legal ? RangeQuantile(p, k, df, ranges) : NoValue;
  ifault = q == NoValue ? 1 : 0;
  return q;
}
