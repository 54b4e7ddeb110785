// What a table with given margins can add to the length of a path through the network of an exact test.
#pragma once

#include <span>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// ln k! for the counts that cells can take.
class LogFactorials {
 public:
  explicit LogFactorials(i32 most);
  f64 operator[](i32 k) const { return values_[static_cast<std::size_t>(k)]; }

 private:
  std::vector<f64> values_;
};

// Bounds of the sum of ln x! over the cells of all tables with these margins, whose totals agree.
struct Lengths {
  f64 least;  // a lower bound, near the least sum
  f64 most;   // an upper bound of the largest
};
Lengths BoundLengths(std::span<const i32> rows, std::span<const i32> columns, const LogFactorials& logFactorials);

}  // namespace tellurix::kernel
