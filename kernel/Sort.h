// Stable sorting of doubles by position; the ranks, the risk sets and the sorts of the commands stand on it.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// The place of x in the order of doubles, as a number that grows with x. Both zeros share one place; every NaN stands
// at the end, after infinity.
inline std::uint64_t SortKey(f64 x) {
  if (std::isnan(x)) return ~std::uint64_t{0};
  constexpr std::uint64_t Sign = std::uint64_t{1} << 63;
  const auto bits = std::bit_cast<std::uint64_t>(x == 0 ? 0.0 : x);
  return (bits & Sign) != 0 ? ~bits : bits | Sign;
}

// The number with this place; the one zero of both is positive.
inline f64 FromSortKey(std::uint64_t key) {
  constexpr std::uint64_t Sign = std::uint64_t{1} << 63;
  return std::bit_cast<f64>((key & Sign) != 0 ? key & ~Sign : ~key);
}

// The positions 0 .. keys.size() - 1 in rising order of their keys; equal keys keep their order. A radix sort of eleven
// bits a pass (D. E. Knuth 1998, The Art of Computer Programming 3, 5.2.5) that skips the passes in which all keys
// agree, a merge sort where there are few: time in proportion to the number, 32 bytes of work memory a key.
// At most 2^32 - 1 keys; throws std::bad_alloc.
TELLURIX_KERNEL std::vector<std::uint32_t> StableOrder(std::span<const std::uint64_t> keys);

// The same by the values themselves.
TELLURIX_KERNEL std::vector<std::uint32_t> StableOrder(std::span<const f64> values);

// Keys in rising order, by the same radix sort without the positions.
TELLURIX_KERNEL void SortKeys(std::vector<std::uint64_t>& keys);

}  // namespace tellurix::kernel
