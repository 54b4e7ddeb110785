#include "classical/DistributionCalculator.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "kernel/Kernel.h"
#include "kernel/Quantile.h"
#include "numeric/Probability.h"
#include "numeric/RankStatistics.h"

namespace tellurix {

namespace {

using Figures = DistributionFigures;

constexpr const char* LowerTail = "Lower tail P";
constexpr const char* UpperTail = "Upper tail P";
constexpr const char* TwoTailed = "Two tailed P";
constexpr const char* Freedom = "Degrees of freedom";

constexpr DistributionLabels Labels[DistributionCount] = {
    {"Normal", "Normal deviate (z)", nullptr, nullptr, LowerTail, UpperTail, TwoTailed},
    {"Student's t", "Student's t", Freedom, nullptr, LowerTail, UpperTail, TwoTailed},
    {"F (variance ratio)", "Variance ratio F", "Numerator degrees of freedom", "Denominator degrees of freedom",
     nullptr, UpperTail, nullptr},
    {"Chi-square", "Chi-square", Freedom, nullptr, nullptr, UpperTail, nullptr},
    {"Studentized range Q", "Studentized range Q", Freedom, "Number of samples", LowerTail, UpperTail, nullptr},
    {"Binomial", "Probability of success per trial", "Number of trials", "Number of successes",
     "P of exactly this number of successes", "P of at least this number of successes",
     "P of at most this number of successes"},
    {"Poisson", "Mean", "Number of random events", nullptr, "P of exactly this number of events",
     "P of at least this number of events", "P of at most this number of events"},
    {"Kendall's tau", "S (Nc - Nd)", "Sample size", nullptr, nullptr, UpperTail, nullptr},
    {"Spearman's rho", "Hotelling-Pabst T", "Sample size", nullptr, nullptr, UpperTail, nullptr},
    {"Non-central t", "Non-central t", Freedom, "Non-centrality", "P for t <= t", "P for t > t", nullptr},
};

// A whole number of 32 bits.
std::optional<std::int32_t> Whole(double x) {
  if (x == MissingValue || x != std::floor(x) || std::fabs(x) > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(x);
}

// What the kernel answers, or MissingValue where it has no number.
double Checked(double result, std::int32_t ifault = 0) {
  return ifault == 0 && std::isfinite(result) && std::fabs(result) < MissingValue ? result : MissingValue;
}

// The deviate with this upper tail.
double NormalFromUpperP(double p) {
  std::int32_t ifault = 0;
  const double z = GAUINV(p, ifault);
  return Checked(-z, ifault);
}

double NoncentralUpperP(double t, double df, double delta) {
  std::int32_t ifault = 0;
  return Checked(PNCT(-t, df, -delta, ifault), ifault);
}

// Whether every parameter that the distribution has is there.
bool HasParameters(Distribution distribution, const Figures& figures) {
  const DistributionLabels& labels = LabelsOf(distribution);
  return (!labels.first || figures.first != MissingValue) && (!labels.second || figures.second != MissingValue);
}

void SetTails(double lower, double upper, Figures& figures) {
  figures.lower = Checked(lower);
  figures.upper = Checked(upper);
  if (figures.lower != MissingValue && figures.upper != MissingValue) {
    figures.third = 2 * std::min(figures.lower, figures.upper);
  }
}

void FindBinomial(Figures& figures) {
  const auto trials = Whole(figures.first), successes = Whole(figures.second);
  const double p = figures.statistic;
  if (!trials || !successes || *trials < 1 || *successes < 0 || *successes > *trials || !(p >= 0 && p <= 1)) return;
  std::int32_t ifault = 0;
  BINO(*trials, p, *successes, figures.lower, figures.third, figures.upper, ifault);
  if (ifault != 0) figures.lower = figures.upper = figures.third = MissingValue;
}

void FindPoisson(Figures& figures) {
  const auto events = Whole(figures.first);
  if (!events || *events < 0 || !(figures.statistic >= 0)) return;
  std::int32_t ifault = 0;
  POISSON(figures.statistic, *events, figures.upper, figures.third, figures.lower, ifault);
  if (ifault != 0) figures.lower = figures.upper = figures.third = MissingValue;
}

// `which` as in POISSONI.
void FindPoissonMean(double p, std::int32_t which, Figures& figures) {
  const auto events = Whole(figures.first);
  figures.lower = figures.upper = figures.third = MissingValue;
  if (!events) return;
  std::int32_t ifault = 0;
  double mean = 0, orMore = 0, orFewer = 0, exactly = 0;
  POISSONI(p, *events, which, mean, orMore, orFewer, exactly, ifault);
  if (ifault != 0) return;
  figures.statistic = mean;
  figures.lower = exactly;
  figures.upper = orMore;
  figures.third = orFewer;
}

void FindRankStatistic(Distribution distribution, Figures& figures) {
  const auto n = Whole(figures.first);
  if (!n) return;
  std::int32_t ifault = 0, found = 0;
  double besides = 0;
  if (distribution == Distribution::Kendall) {
    KendallFromP(figures.upper, besides, found, *n, ifault);
  } else {
    // It is given the tail below T, so that T has the upper tail of the box.
    HotellingFromP(1 - figures.upper, besides, found, *n, ifault);
  }
  if (ifault == 0) figures.statistic = found;
}

double BinomialLimit(bool upperLimit, double tail, std::int32_t n, std::int32_t x) {
  if (upperLimit) {
    if (x == n) return 1;
    const double ratio = (x + 1) * FFROMP(2.0 * (n - x), 2.0 * (x + 1), tail);
    return ratio / (n - x + ratio);
  }
  if (x == 0) return 0;
  return x / (x + (n - x + 1) * FFROMP(2.0 * x, 2.0 * (n - x + 1), tail));
}

}  // namespace

const DistributionLabels& LabelsOf(Distribution distribution) { return Labels[static_cast<int>(distribution)]; }

bool HasInverse(Distribution distribution) { return distribution != Distribution::Binomial; }

// ---------------------------------------------------------------------------------------------------------------------
// The calculations
// ---------------------------------------------------------------------------------------------------------------------

void FindProbabilities(Distribution distribution, Figures& figures) {
  figures.lower = figures.upper = figures.third = MissingValue;
  const double x = figures.statistic;
  if (x == MissingValue || !HasParameters(distribution, figures)) return;
  std::int32_t ifault = 0;
  switch (distribution) {
    case Distribution::Normal:
      return SetTails(ALNORM(x), ALNORM(-x), figures);
    case Distribution::StudentT:
      return SetTails(UpperPFromT(-x, figures.first), UpperPFromT(x, figures.first), figures);
    case Distribution::F:
      figures.upper = UpperPFromF(x, figures.first, figures.second);
      return;
    case Distribution::ChiSquare:
      figures.upper = UpperPFromChi(x, figures.first);
      return;
    case Distribution::Q:
      figures.upper = Checked(PROBSR(x, figures.second, figures.first));
      if (figures.upper != MissingValue) figures.lower = 1 - figures.upper;
      return;
    case Distribution::Binomial:
      return FindBinomial(figures);
    case Distribution::Poisson:
      return FindPoisson(figures);
    case Distribution::Kendall:
    case Distribution::Spearman: {
      const auto s = Whole(x), n = Whole(figures.first);
      if (!s || !n) return;
      const double p = distribution == Distribution::Kendall ? KendallUpperP(*s, *n, ifault) : PRHO(*n, *s, ifault);
      figures.upper = Checked(p, ifault);
      return;
    }
    case Distribution::NoncentralT:
      figures.lower = Checked(PNCT(x, figures.first, figures.second, ifault), ifault);
      figures.upper = NoncentralUpperP(x, figures.first, figures.second);
      return;
  }
}

void FindStatistic(Distribution distribution, ProbabilityBox given, Figures& figures) {
  figures.statistic = MissingValue;
  double& box = given == ProbabilityBox::Lower   ? figures.lower
                : given == ProbabilityBox::Upper ? figures.upper
                                                 : figures.third;
  if (box == MissingValue || !HasInverse(distribution)) return;
  box = std::clamp(box, 0.0, 1.0);
  if (distribution == Distribution::Poisson) {
    const std::int32_t which = given == ProbabilityBox::Upper ? 1 : given == ProbabilityBox::Third ? 2 : 3;
    return FindPoissonMean(box, which, figures);
  }
  if (given == ProbabilityBox::Lower) {
    figures.upper = 1 - box;
  } else {
    if (given == ProbabilityBox::Third) figures.upper = FoldP(box / 2);
    figures.lower = 1 - figures.upper;
  }
  figures.third = 2 * std::min(figures.lower, figures.upper);
  if (!HasParameters(distribution, figures)) return;

  // A small lower tail is as good as a small upper one.
  const bool fromLower = given == ProbabilityBox::Lower;
  std::int32_t ifault = 0;
  switch (distribution) {
    case Distribution::Normal:
      figures.statistic = fromLower ? NormalFromUpperP(figures.lower) : NormalFromUpperP(figures.upper);
      if (fromLower && figures.statistic != MissingValue) figures.statistic = -figures.statistic;
      return;
    case Distribution::StudentT:
      figures.statistic =
          Checked(fromLower ? -TFROMP(figures.lower, figures.first) : TFROMP(figures.upper, figures.first));
      return;
    case Distribution::F:
      figures.statistic = Checked(FFROMP(figures.second, figures.first, figures.upper));
      return;
    case Distribution::ChiSquare:
      figures.statistic = Checked(kernel::ChiSquareFromUpperP(figures.upper, figures.first));
      return;
    case Distribution::Q:
      figures.statistic = Checked(QUANTSR(figures.upper, figures.second, figures.first));
      return;
    case Distribution::Kendall:
    case Distribution::Spearman:
      return FindRankStatistic(distribution, figures);
    case Distribution::NoncentralT:
      figures.statistic = fromLower ? TNCT(figures.lower, figures.first, figures.second, ifault)
                                    : -TNCT(figures.upper, figures.first, -figures.second, ifault);
      figures.statistic = Checked(figures.statistic, ifault);
      return;
    default:
      return;
  }
}

void FindLimit(Distribution distribution, bool upperLimit, double tail, Figures& figures) {
  figures.statistic = figures.lower = figures.upper = figures.third = MissingValue;
  if (distribution == Distribution::Poisson) {
    if (upperLimit || figures.first != 0) return FindPoissonMean(tail, upperLimit ? 2 : 1, figures);
    figures.statistic = 0;  // no mean is too small for no event
  } else {
    const auto n = Whole(figures.first), x = Whole(figures.second);
    if (!n || !x || *n < 1 || *x < 0 || *x > *n) return;
    figures.statistic = Checked(BinomialLimit(upperLimit, tail, *n, *x));
  }
  FindProbabilities(distribution, figures);
}

// ---------------------------------------------------------------------------------------------------------------------
// The lines
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// The texts of the figures in a line: what was typed in with all its digits, what was found with those of reports.
struct Texts {
  Texts(const Figures& figures, const Formatter& format, bool statisticFound)
      : statistic(Text(figures.statistic, format, statisticFound)),
        first(Text(figures.first, format, false)),
        second(Text(figures.second, format, false)),
        lower(Text(figures.lower, format, true)),
        upper(Text(figures.upper, format, true)),
        third(Text(figures.third, format, true)) {}

  static std::string Text(double x, const Formatter& format, bool found) {
    if (x == MissingValue) return "error";
    return found ? format.FormatStatistic(x).text : format.FormatPlaces(x, std::numeric_limits<double>::digits10).text;
  }

  std::string statistic, first, second, lower, upper, third;
};

}  // namespace

Value ProbabilityLine(Distribution distribution, const Figures& figures, const Formatter& format) {
  const Texts t(figures, format, false);
  std::string line;
  switch (distribution) {
    case Distribution::Normal:
      line = fmt::format("P(z {}) = {} upper,  {} lower,  {} two sided", t.statistic, t.upper, t.lower, t.third);
      break;
    case Distribution::StudentT:
      line = fmt::format("P(t {}, df {}) = {} upper,  {} lower,  {} two sided", t.statistic, t.first, t.upper, t.lower,
                         t.third);
      break;
    case Distribution::F:
      line = fmt::format("P(F {}, dfn {}, dfd {}) = {} upper", t.statistic, t.first, t.second, t.upper);
      break;
    case Distribution::ChiSquare:
      line = fmt::format("P(chi-sq {}, df {}) = {} upper tail", t.statistic, t.first, t.upper);
      break;
    case Distribution::Q:
      line = fmt::format("P(Q {}, df {}, samples {}) = {} upper,  {} lower", t.statistic, t.first, t.second, t.upper,
                         t.lower);
      break;
    case Distribution::Binomial:
      line = fmt::format("P(binomial p {}, {} trials) = {} [{} successes], {} [>={} successes], {} [<={} successes]",
                         t.statistic, t.first, t.lower, t.second, t.upper, t.second, t.third, t.second);
      break;
    case Distribution::Poisson:
      line = fmt::format("P(Poisson n {}, µ {}) = {} for n events,  {} for n or more events,  {} for n or fewer events",
                         t.first, t.statistic, t.lower, t.upper, t.third);
      break;
    case Distribution::Kendall:
      line = fmt::format("P(Kendall's T {}, n {}) = {} upper tail", t.statistic, t.first, t.upper);
      break;
    case Distribution::Spearman:
      line = fmt::format("P(Hotelling T {}, n {}) = {} upper tail", t.statistic, t.first, t.upper);
      break;
    case Distribution::NoncentralT:
      line = fmt::format("P(non-central t < {}, df {}, delta {}) = {} upper,  {} lower", t.statistic, t.first, t.second,
                         t.upper, t.lower);
      break;
  }
  Value value(std::move(line));
  value.numbers = {figures.lower, figures.upper, figures.third};
  return value;
}

Value StatisticLine(Distribution distribution, const Figures& figures, const Formatter& format) {
  const Texts t(figures, format, true);
  std::string line;
  switch (distribution) {
    case Distribution::Normal:
      line = fmt::format("z(upper P {}) = {}", t.upper, t.statistic);
      break;
    case Distribution::StudentT:
      line = fmt::format("t(upper P {}, df {}) = {}", t.upper, t.first, t.statistic);
      break;
    case Distribution::F:
      line = fmt::format("F(upper P {}, dfn {}, dfd {}) = {}", t.upper, t.first, t.second, t.statistic);
      break;
    case Distribution::ChiSquare:
      line = fmt::format("chi-sq(upper P {}, df {}) = {}", t.upper, t.first, t.statistic);
      break;
    case Distribution::Q:
      line = fmt::format("Q(upper P {}, df {}, samples {}) = {}", t.upper, t.first, t.second, t.statistic);
      break;
    case Distribution::Poisson:
      line = fmt::format("Poisson mean(P of {} events {}, fewer {}, more {}) = {}", t.first, t.lower, t.third, t.upper,
                         t.statistic);
      break;
    case Distribution::Kendall:
      line = fmt::format("Kendall's T (upper tail P {}, n {}) = {}", t.upper, t.first, t.statistic);
      break;
    case Distribution::Spearman:
      line = fmt::format("Hotelling T (upper tail P {}, n {}) = {}", t.upper, t.first, t.statistic);
      break;
    case Distribution::NoncentralT:
      line = fmt::format("non-central t(P {}, df {}, delta {}) = {}", t.lower, t.first, t.second, t.statistic);
      break;
    case Distribution::Binomial:
      break;
  }
  Value value(std::move(line));
  value.numbers = {figures.statistic};
  return value;
}

}  // namespace tellurix
