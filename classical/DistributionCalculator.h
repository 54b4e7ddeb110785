// The calculations behind the distributions dialog: probabilities of a value, the value of a probability, and the
// limits of a proportion or a count, each with its line for the report.
#pragma once

#include <string>

#include "numeric/Missing.h"
#include "report/Value.h"

namespace tellurix {

enum class Distribution { Normal, StudentT, F, ChiSquare, Q, Binomial, Poisson, Kendall, Spearman, NoncentralT };
inline constexpr int DistributionCount = 10;

// What a distribution calls its boxes; null for a box that it does not have.
struct DistributionLabels {
  const char* name;
  const char* statistic;
  const char* first;   // parameter
  const char* second;  // parameter
  const char* lower;   // of a count: P of exactly so many
  const char* upper;   // of a count: P of at least so many
  const char* third;   // two tailed; of a count: P of at most so many
};
const DistributionLabels& LabelsOf(Distribution distribution);

enum class ProbabilityBox { Lower, Upper, Third };

// What stands in the boxes; MissingValue for what is not there, is no number, or has been refused.
struct DistributionFigures {
  double statistic = MissingValue;
  double first = MissingValue;
  double second = MissingValue;
  double lower = MissingValue;
  double upper = MissingValue;
  double third = MissingValue;
};

// Whether the value can be had from a probability: all but the binomial, whose limits serve instead.
bool HasInverse(Distribution distribution);

// The probabilities of the statistic, each tail by itself.
void FindProbabilities(Distribution distribution, DistributionFigures& figures);

// The statistic, and the other probabilities, from the one in the box `given`, which is held within 0 and 1. Of
// Kendall's S and the Hotelling-Pabst T the one with an upper tail of at least that probability, next to it.
void FindStatistic(Distribution distribution, ProbabilityBox given, DistributionFigures& figures);

// The exact lower or upper limit of a binomial proportion (C. J. Clopper & E. S. Pearson 1934, Biometrika 26:404-413)
// or a Poisson mean (F. Garwood 1936, Biometrika 28:437-442), that leaves out `tail`, with the probabilities at it.
void FindLimit(Distribution distribution, bool upperLimit, double tail, DistributionFigures& figures);

// The lines for the report, "error" for what is missing; numbers behind them are the figures found.
Value ProbabilityLine(Distribution distribution, const DistributionFigures& figures, const Formatter& format);
Value StatisticLine(Distribution distribution, const DistributionFigures& figures, const Formatter& format);

}  // namespace tellurix
