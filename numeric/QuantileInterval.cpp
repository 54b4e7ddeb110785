#include "numeric/QuantileInterval.h"

#include <algorithm>

#include "kernel/Kernel.h"

namespace tellurix {

namespace {

struct BinomialTails {
  double orFewer;
  double more;
};

// P(X <= k) and P(X > k), each precise relative to itself, for every k.
BinomialTails TailsAt(std::int32_t n, double p, std::int32_t k) {
  if (k < 0) return {0, 1};
  if (k >= n) return {1, 0};
  double exactly = 0, orFewer = 0, orMore = 0;
  i32 ifault = 0;
  BINO(n, p, k, exactly, orFewer, orMore, ifault);
  const double fewer = orFewer;
  BINO(n, p, k + 1, exactly, orFewer, orMore, ifault);
  return {fewer, orMore};
}

// The least k in -1 .. n for which `holds`, which stays true once it is.
template <typename Condition>
std::int32_t LeastCount(std::int32_t n, Condition holds) {
  std::int32_t low = -1, high = n;
  while (low < high) {
    const std::int32_t middle = low + (high - low) / 2;
    if (holds(middle)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

}  // namespace

QuantileRanks QuantileInterval(std::int32_t n, double p, double confidence, bool conservative) {
  const double tail = (1 - confidence) / 2;
  // Counts k of observations below the quantile: it lies between the ranks below + 1 and above + 1.
  std::int32_t below = LeastCount(n, [&](std::int32_t k) { return TailsAt(n, p, k).orFewer > tail; }) - 1;
  std::int32_t above = LeastCount(n, [&](std::int32_t k) { return TailsAt(n, p, k).more <= tail; });
  if (!conservative) {
    if (TailsAt(n, p, below + 1).orFewer - tail < tail - TailsAt(n, p, below).orFewer) ++below;
    if (TailsAt(n, p, above - 1).more - tail < tail - TailsAt(n, p, above).more) --above;
  }
  QuantileRanks ranks{.lowerIsCapped = below<0, .upperIsCapped = above> n - 1};
  below = std::max(below, 0);
  above = std::min(above, n - 1);
  const auto coverage = [&] { return 1 - TailsAt(n, p, below).orFewer - TailsAt(n, p, above).more; };
  if (conservative) {
    while (coverage() < confidence && ranks.lowerIsCapped && above < n - 1) ++above;
    while (coverage() < confidence && ranks.upperIsCapped && below > 0) --below;
    if (coverage() < confidence) return ranks;
  }
  if (below >= above) return ranks;
  ranks.isPossible = true;
  ranks.lower = below + 1;
  ranks.upper = above + 1;
  ranks.coverage = coverage();
  return ranks;
}

}  // namespace tellurix
