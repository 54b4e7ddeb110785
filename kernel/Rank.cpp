// Average ranks and their tie terms.
#include <algorithm>
#include <new>
#include <span>

#include "kernel/Inner.h"
#include "kernel/Sort.h"

namespace tellurix::kernel {

namespace {

f64 TieTerm(f64 t, i32 method) {
  switch (method) {
    case 1:
      return (t * t * t - t) / 12;
    case 2:
      return t * (t - 1) / 2;
    case 3:
      return t * (t - 1) * (2 * t + 5);
    case 4:
      return t * (t - 1) * (t - 2);
    default:
      return 0;
  }
}

f64 RankAll(std::span<const f64> data, f64* ranks, i32 method) {
  const auto order = StableOrder(data);
  f64 correction = 0;
  for (std::size_t first = 0; first < order.size();) {
    const auto key = SortKey(data[order[first]]);
    std::size_t end = first + 1;
    while (end < order.size() && SortKey(data[order[end]]) == key) ++end;
    const f64 ties = static_cast<f64>(end - first);
    for (std::size_t i = first; i < end; ++i) ranks[order[i]] = static_cast<f64>(first + 1) + (ties - 1) / 2;
    correction += TieTerm(ties, method);
    first = end;
  }
  return correction;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void RANK(const f64* data, f64* ranks, const i32& n, const i32& method, f64& correction) {
  correction = 0;
  if (n <= 0 || data == nullptr || ranks == nullptr) return;
  try {
    correction = RankAll({data, static_cast<std::size_t>(n)}, ranks, method);
  } catch (const std::bad_alloc&) {
    std::fill_n(ranks, n, NaN);
    correction = NaN;
  }
}
