#include "numeric/Scores.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "kernel/Kernel.h"
#include "kernel/NormalScores.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

constexpr std::size_t ScoresBetweenPolls = 2000;

// Of a rank in the lower half.
double LowerScore(NormalScore score, double rank, double n) {
  std::int32_t ifault = 0;
  switch (score) {
    case NormalScore::VanDerWaerden:
      return GAUINV(rank / (n + 1), ifault);
    case NormalScore::Blom:
      return GAUINV((rank - 0.375) / (n + 0.25), ifault);
    default:
      return kernel::ExpectedNormalScore(n, rank);
  }
}

}  // namespace

RankedColumn RankColumn(std::span<const double> values, std::int32_t tieMethod) {
  std::vector<double> present;
  present.reserve(values.size());
  std::ranges::copy_if(values, std::back_inserter(present), [](double x) { return x != MissingValue; });
  RankedColumn ranked{.n = static_cast<std::int32_t>(present.size())};
  std::vector<double> ranks(present.size());
  RANK(present.data(), ranks.data(), ranked.n, tieMethod, ranked.tieTerm);
  if (ranks.size() == values.size()) {
    ranked.ranks = std::move(ranks);
    return ranked;
  }
  ranked.ranks.reserve(values.size());
  auto next = ranks.begin();
  for (const double x : values) ranked.ranks.push_back(x == MissingValue ? MissingValue : *next++);
  return ranked;
}

bool ScoreRanks(RankedColumn& column, NormalScore score, const std::function<bool(double share)>& goOn) {
  // Ranks are whole or half numbers, and those at the same distance from either end have opposite scores: each score is
  // worked out once.
  const double n = column.n;
  const double middle = (n + 1) / 2;
  std::vector<double> known(static_cast<std::size_t>(column.n) + 2, MissingValue);  // by twice the rank
  std::size_t worked = 0;
  for (double& rank : column.ranks) {
    if (rank == MissingValue) continue;
    const bool isUpper = rank > middle;
    const double mirrored = isUpper ? n + 1 - rank : rank;
    double& lower = known[static_cast<std::size_t>(2 * mirrored)];
    if (lower == MissingValue) {
      lower = mirrored == middle ? 0 : LowerScore(score, mirrored, n);
      if (++worked % ScoresBetweenPolls == 0 && !goOn(2 * static_cast<double>(worked) / n)) return false;
    }
    rank = isUpper ? -lower : lower;
  }
  return true;
}

}  // namespace tellurix
