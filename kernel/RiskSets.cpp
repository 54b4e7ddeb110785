// The order of cases in which the risk sets of survival models are walked.
#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/Sort.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, NotFinite, NoMemory };

void SortCases(std::size_t n, const f64* time, const i32* stratum, i32* order) {
  auto byTime = StableOrder(std::span<const f64>(time, n));
  if (stratum != nullptr) {
    std::vector<std::uint64_t> strata(n);
    for (std::size_t i = 0; i < n; ++i) strata[i] = static_cast<std::uint32_t>(stratum[byTime[i]]) ^ 0x80000000u;
    auto byStratum = StableOrder(std::span<const std::uint64_t>(strata));
    for (auto& place : byStratum) place = byTime[place];
    byTime.swap(byStratum);
  }
  std::copy(byTime.begin(), byTime.end(), order);
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void MXSRT(const i32& n, const f64* time, const i32* stratum, i32* order, i32& strata, i32* first, i32& status) {
  status = BadSizes;
  if (n < 1 || time == nullptr || order == nullptr || first == nullptr) return;
  status = NotFinite;
  if (!std::all_of(time, time + n, [](f64 t) { return std::isfinite(t); })) return;
  try {
    SortCases(static_cast<std::size_t>(n), time, stratum, order);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
    return;
  }
  strata = 0;
  for (i32 i = 0; i < n; ++i) {
    if (i == 0 || (stratum != nullptr && stratum[order[i]] != stratum[order[i - 1]])) first[strata++] = i;
  }
  first[strata] = n;
  status = Done;
}
