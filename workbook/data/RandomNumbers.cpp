#include "workbook/data/RandomNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "numeric/Regional.h"
#include "numeric/Rnd.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr int MaxColumns = 50;
constexpr int MaxRows = 65000;
constexpr double LargestSpread = 1e300;

struct Parameter {
  const char* label = nullptr;  // null: there is none
  const char* preset = nullptr;
};

// At most two parameters, a and b.
struct LawRow {
  RandomLaw law;
  const char* caption;
  const char* title;  // of a column: {0} the seed, {1} and {2} the parameters
  std::array<Parameter, 2> parameters;
  bool (*accepts)(double a, double b);
  double (*draw)(RndFamily& rnd, double a, double b);
};

// ---------------------------------------------------------------------------------------------------------------------
// Ranges of parameters
// ---------------------------------------------------------------------------------------------------------------------

bool Any(double, double) { return true; }
bool FirstPositive(double a, double) { return IsPositiveParameter(a); }
bool SecondPositive(double, double b) { return IsPositiveParameter(b); }
bool BothPositive(double a, double b) { return IsPositiveParameter(a) && IsPositiveParameter(b); }
bool Interval(double a, double b) { return a != b && std::fabs(a) <= LargestSpread && std::fabs(b) <= LargestSpread; }
bool Chance(double p, double) { return IsPositiveParameter(p) && p <= 1; }
bool PositiveAndChance(double a, double p) { return IsPositiveParameter(a) && Chance(p, 0); }
bool PoissonMean(double mean, double) { return mean > 0 && mean <= RndPoisson::LargestMean; }

bool Trials(double n, double p) {
  return n >= 1 && n <= std::numeric_limits<std::int32_t>::max() && n == std::floor(n) && p >= 0 && p <= 1;
}

// Deviates up to ten standard deviations off stay within the range of numbers.
bool LogParameters(double mean, double sd) { return sd > 0 && std::fabs(mean) + 10 * sd <= 700; }

// ---------------------------------------------------------------------------------------------------------------------
// The laws
// ---------------------------------------------------------------------------------------------------------------------

constexpr LawRow Laws[] = {
    {RandomLaw::UniformZeroToOne,
     "Uniform",
     "Uniform 0 to 1 (seed {0})",
     {},
     Any,
     [](RndFamily& rnd, double, double) { return rnd.uniform.GenUni(); }},
    {RandomLaw::UniformAToB,
     "Uniform",
     "Uniform {1} to {2} (seed {0})",
     {{{"a", "0"}, {"b", "100"}}},
     Interval,
     [](RndFamily& rnd, double a, double b) { return rnd.uniform.GenUniAB(a, b); }},
    {RandomLaw::Normal,
     "Normal",
     "Normal (seed {0}, mean = {1}, sd = {2})",
     {{{"Mean", "0"}, {"Standard deviation", "1"}}},
     SecondPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.normal.GenNorm(a, b); }},
    {RandomLaw::Lognormal,
     "Lognormal deviates",
     "Lognormal (seed {0}, log mean = {1}, log sd = {2})",
     {{{"Mean of the natural logs (log mean)", "0"}, {"Standard deviation of the natural logs (log sd)", "1"}}},
     LogParameters,
     [](RndFamily& rnd, double a, double b) { return rnd.normal.GenLnNorm(std::exp(a), std::exp(b)); }},
    {RandomLaw::Binomial,
     "Binomial",
     "Binomial (seed {0}, n = {1}, p = {2})",
     {{{"Number of trials (n)", "10"}, {"Probability of success (p)", "0.5"}}},
     Trials,
     [](RndFamily& rnd, double a, double b) { return rnd.binomial.GenBinom(static_cast<std::int32_t>(a), b); }},
    {RandomLaw::Poisson,
     "Poisson",
     "Poisson (seed {0}, mean {1})",
     {{{"Mean", "10"}}},
     PoissonMean,
     [](RndFamily& rnd, double a, double) { return rnd.poisson.GenPoisson(a); }},
    {RandomLaw::Gamma,
     "Gamma deviates",
     "Gamma (seed {0}, A = {1}, B = {2})",
     {{{"Shape (A)", "2"}, {"Scale (B)", "1"}}},
     BothPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.gamma.GenGamma(a, b); }},
    {RandomLaw::Exponential,
     "Exponential deviates",
     "Exponential (seed {0}, rate = {1})",
     {{{"Rate", "1"}}},
     FirstPositive,
     [](RndFamily& rnd, double a, double) { return rnd.exponential.GenExp() / a; }},
    {RandomLaw::ChiSquare,
     "Chi-square deviates",
     "Chi-square (seed {0}, df = {1})",
     {{{"Degrees of freedom", "1"}}},
     FirstPositive,
     [](RndFamily& rnd, double a, double) { return rnd.gamma.GenChiSq(a); }},
    {RandomLaw::F,
     "F deviates",
     "F (seed {0}, dfn = {1}, dfd = {2})",
     {{{"Numerator degrees of freedom (dfn)", "1"}, {"Denominator degrees of freedom (dfd)", "10"}}},
     BothPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.gamma.GenF(a, b); }},
    {RandomLaw::StudentT,
     "Student t deviates",
     "Student t (seed {0}, df = {1})",
     {{{"Degrees of freedom", "10"}}},
     FirstPositive,
     [](RndFamily& rnd, double a, double) { return rnd.gamma.GenT(a); }},
    {RandomLaw::Logistic,
     "Logistic deviates",
     "Logistic (seed {0}, loc = {1}, scl = {2})",
     {{{"Location (loc)", "0"}, {"Scale (scl)", "1"}}},
     SecondPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.uniform.GenLogistic(a, b); }},
    {RandomLaw::Geometric,
     "Geometric deviates",
     "Geometric (seed {0}, P = {1})",
     {{{"Probability of success (P)", "0.5"}}},
     Chance,
     [](RndFamily& rnd, double a, double) { return rnd.poisson.GenGeom(a); }},
    {RandomLaw::NegativeBinomial,
     "Negative binomial deviates",
     "Negative binomial (seed {0}, size = {1}, P = {2})",
     {{{"Number of successes (size)", "1"}, {"Probability of success (P)", "0.5"}}},
     PositiveAndChance,
     [](RndFamily& rnd, double a, double b) { return rnd.poisson.GenNegbin(a, b); }},
    {RandomLaw::Cauchy,
     "Cauchy deviates",
     "Cauchy (seed {0}, loc = {1}, scl = {2})",
     {{{"Location (loc)", "0"}, {"Scale (scl)", "1"}}},
     SecondPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.uniform.GenCauchy(a, b); }},
    {RandomLaw::Weibull,
     "Weibull deviates",
     "Weibull (seed {0}, shp = {1}, scl = {2})",
     {{{"Shape (shp)", "1"}, {"Scale (scl)", "1"}}},
     BothPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.uniform.GenWeibull(a, b); }},
    {RandomLaw::Beta,
     "beta deviates",
     "Beta (seed {0}, a = {1}, b = {2})",
     {{{"a", "1"}, {"b", "1"}}},
     BothPositive,
     [](RndFamily& rnd, double a, double b) { return rnd.beta.GenBeta(a, b); }},
};

const LawRow& RowOf(RandomLaw law) {
  return *std::ranges::find_if(Laws, [law](const LawRow& row) { return row.law == law; });
}

// ---------------------------------------------------------------------------------------------------------------------
// Prompts
// ---------------------------------------------------------------------------------------------------------------------

// A whole number from 1 to `most`, asked for until it is one; nothing when cancelled.
std::optional<int> AskCount(Session& session, const LawRow& law, std::string_view prompt, const char* preset,
                            int most) {
  for (;;) {
    const std::string typed = session.prompts.InputValue(prompt, law.caption, preset);
    if (typed == CancelledInput) return std::nullopt;
    const int count = ParseInteger(typed, session.options.regional);
    if (count >= 1 && count <= most) return count;
    session.data.ShowInvalidData();
  }
}

// The parameters of the law, 0 where it has none; nothing when cancelled or, after a message, not acceptable.
std::optional<std::array<double, 2>> AskParameters(Session& session, const LawRow& law) {
  std::array<double, 2> values{};
  if (!law.parameters[0].label) return values;
  for (int i = 0; i < 2; ++i) {
    const Parameter& parameter = law.parameters[static_cast<std::size_t>(i)];
    if (!parameter.label) continue;
    session.prompts.FillEntry(i, parameter.label, Localized(parameter.preset, session.options.regional));
  }
  if (!session.prompts.ShowOptions("", law.caption)) return std::nullopt;
  bool areNumbers = true;
  for (int i = 0; i < 2; ++i) {
    if (!law.parameters[static_cast<std::size_t>(i)].label) continue;
    const auto number = ReadNumber(session.prompts.ComboText(i), session.options.regional);
    areNumbers = areNumbers && number.has_value();
    values[static_cast<std::size_t>(i)] = number.value_or(0);
  }
  if (areNumbers && law.accepts(values[0], values[1])) return values;
  ShowMessage(session, "The parameters are not acceptable.", WarningIcon, law.caption);
  return std::nullopt;
}

}  // namespace

void FillRandomNumbers(Session& session, RandomLaw wanted) {
  const LawRow& law = RowOf(wanted);
  const auto columns = AskCount(session, law, "How many columns to fill? (Max 50)", "1", MaxColumns);
  if (!columns) return;
  const auto rows = AskCount(session, law, "How many rows to fill? (Max 65000)", "100", MaxRows);
  if (!rows) return;
  const auto parameters = AskParameters(session, law);
  if (!parameters) return;
  const auto [a, b] = *parameters;

  BusyPointer(session);
  const std::int32_t seed = NewSeed(session);
  const std::string title = fmt::format(fmt::runtime(law.title), seed, NumberText(session, a), NumberText(session, b));
  RndFamily rnd;
  rnd.uniform.Seed(seed);
  std::vector<OutputColumn> block(static_cast<std::size_t>(*columns), OutputColumn{.title = title});
  for (OutputColumn& column : block) {
    column.values.resize(static_cast<std::size_t>(*rows));
    for (double& value : column.values) value = law.draw(rnd, a, b);
  }
  WriteColumns(session, block);
}

}  // namespace tellurix
