// The rank sum of two samples with ties.
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <numeric>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

// Room for the table, 1 GB, and time to go through it once for each rank, some seconds.
constexpr f64 MostCells = 1.25e8;
constexpr f64 MostSteps = 2e10;

// The ranks as whole numbers of the smallest step between them, from 0 on.
struct RankScale {
  i32 lowest;
  i32 step;
  i64 At(i32 rank) const { return (static_cast<i64>(rank) - lowest) / step; }
};

RankScale ScaleOf(const i32* ranks, i64 count) {
  i32 step = 0;
  for (i64 i = 1; i < count; ++i) step = std::gcd(step, ranks[i] - ranks[0]);
  return {ranks[0], std::max(step, 1)};
}

// The distribution of the sum of `size` of the `count` ranks drawn without replacement, rank by rank: cell[j][s] is the
// probability that j have been drawn so far with the sum s. Only probabilities are added, so nothing cancels or
// overflows. The table has size + 1 rows of sums + 1 cells, where `sums` is the largest sum.
void DrawRanks(const i32* ranks, const RankScale& scale, i64 count, i64 size, i64 sums, f64* cell) {
  std::fill(cell, cell + (size + 1) * (sums + 1), 0.0);
  cell[0] = 1;
  i64 reached = 0;  // the largest sum of the ranks so far, at most `size` of them
  for (i64 i = 0; i < count; ++i) {
    const i64 rank = scale.At(ranks[i]);
    const f64 left = static_cast<f64>(count - i);
    reached += rank;
    if (i >= size) reached -= scale.At(ranks[i - size]);
    for (i64 j = std::min(i + 1, size); j >= 0; --j) {
      // Out of `left` ranks, size - j are still to be drawn when j have been.
      const f64 passed = (left - static_cast<f64>(size - j)) / left;
      const f64 drawn = static_cast<f64>(size - j + 1) / left;
      f64* row = cell + j * (sums + 1);
      const f64* from = j == 0 ? row : row - (sums + 1);
      const i64 joined = j == 0 ? reached + 1 : std::min(rank, reached + 1);
      for (i64 s = 0; s < joined; ++s) row[s] *= passed;
      for (i64 s = joined; s <= reached; ++s) row[s] = row[s] * passed + from[s - rank] * drawn;
    }
  }
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

f64 WMWPX(const i32& n1, const i32& n2, const i32& ranks, const i32& twiceU, f64& upper, i32& ifault) {
  upper = 0;
  const i64 count = static_cast<i64>(n1) + n2;
  const i32* rank = &ranks;
  ifault = n1 < 1 || n2 < 1 || !std::is_sorted(rank, rank + count) || rank[0] < 0 ? 1 : 0;
  if (ifault != 0) return 0;
  const RankScale scale = ScaleOf(rank, count);
  // The smaller sample is drawn; its largest sum is that of the highest ranks.
  const i64 size = std::min(n1, n2);
  i64 sums = 0;
  for (i64 i = count - size; i < count; ++i) sums += scale.At(rank[i]);
  const f64 cells = static_cast<f64>(size + 1) * static_cast<f64>(sums + 1);
  const bool tooLarge = cells > MostCells || cells * static_cast<f64>(count) > MostSteps;
  const std::unique_ptr<f64[]> cell(tooLarge ? nullptr : new (std::nothrow) f64[static_cast<std::size_t>(cells)]);
  if (cell == nullptr) {
    ifault = 2;
    return 0;
  }
  DrawRanks(rank, scale, count, size, sums, cell.get());

  // Twice U is 2 n1 n2 + n1 (n1 + 1) less the sum of the doubled ranks of the first sample.
  i64 all = 0;
  for (i64 i = 0; i < count; ++i) all += rank[i];
  const f64* sumOf = cell.get() + size * (sums + 1);
  f64 lower = 0;
  const i64 most = static_cast<i64>(n1) * (2 * static_cast<i64>(n2) + n1 + 1);
  const auto twiceUAt = [&](i64 s) {
    const i64 drawn = s * scale.step + size * scale.lowest;
    return most - (n1 <= n2 ? drawn : all - drawn);
  };
  for (i64 s = 0; s <= sums; ++s) {
    const i64 u = twiceUAt(s);
    if (u <= twiceU) lower += sumOf[s];
    if (u >= twiceU) upper += sumOf[s];
  }
  lower = std::min(lower, 1.0);
  upper = std::min(upper, 1.0);
  return lower;
}
