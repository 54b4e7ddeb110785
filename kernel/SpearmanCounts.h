// How many permutations of 1..n have each sum of squared rank differences; internal to the library.
#pragma once

#include <cstdint>

namespace tellurix::kernel {

inline constexpr int SpearmanMost = 22;  // the largest n whose counts all fit into 64 bits

// For n = 2, 3, ..., SpearmanMost one after the other: the counts of the sums 0, 2, 4, ... up to the middle of the
// range, (n^3 - n)/6, the middle itself included when it is even. The distribution is symmetric about it.
extern const std::uint64_t SpearmanCounts[];

}  // namespace tellurix::kernel
