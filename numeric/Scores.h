// Ranks of a column, and the normal scores that go by them.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tellurix {

struct RankedColumn {
  std::int32_t n = 0;         // values that are not missing
  std::vector<double> ranks;  // 1 to n in rising order, equal values sharing their mean rank; MissingValue stays
  double tieTerm = 0;
};

// Ranks the values that are not missing. `tieMethod` is that of the kernel's RANK; 0 has no tie term.
RankedColumn RankColumn(std::span<const double> values, std::int32_t tieMethod = 0);

// In the order in which they are offered.
//   VanDerWaerden: the normal deviate of r / (n + 1).
//   Blom: that of (r - 3/8) / (n + 1/4). G. Blom (1958) Statistical Estimates and Transformed Beta-Variables.
//   ExpectedOrder: the expected value of the r-th smallest of n normal deviates.
enum class NormalScore { VanDerWaerden, Blom, ExpectedOrder };

// The scores of ranks, in place, MissingValue staying; a mean rank that lies between two whole ones has the score of
// the formula there. `goOn` is told the share done now and then; once it answers false the function does so too, the
// scores then being of no use.
bool ScoreRanks(RankedColumn& column, NormalScore score, const std::function<bool(double share)>& goOn);

}  // namespace tellurix
