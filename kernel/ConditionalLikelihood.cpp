// The exact conditional likelihood of matched sets and its maximum.
#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/Square.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadArguments, NotFinite, NoMemory, Singular, NotConverged };

// A run of rows: the members of one matched set.
struct MatchedSet {
  std::size_t first;
  std::size_t members;
  std::size_t cases;
};

struct Problem {
  std::size_t columns;
  std::vector<MatchedSet> sets;  // those that have cases and controls
  std::vector<f64> covariates;   // by rows, about the mean of each set, scaled
  std::vector<bool> isCase;
  std::vector<f64> scales;  // powers of two by which the covariates were multiplied
};

// The log likelihood with its derivatives.
struct Likelihood {
  explicit Likelihood(std::size_t columns) : score(columns), information(columns * columns) {}
  f64 value = 0;
  std::vector<f64> score;
  std::vector<f64> information;
};

// A sum over all choices of a given number among the members so far: its logarithm, and mean and covariance of the sum
// of the covariates of the chosen, each choice weighted by its share. The covariance is packed by rows of its upper
// triangle.
struct Choices {
  f64 logSum = -Infinity;
  std::vector<f64> mean;
  std::vector<f64> covariance;
};

// `without` becomes the mixture of itself and of `with` joined by one member of weight exp(eta).
void Mix(Choices& without, const Choices& with, f64 eta, const f64* member) {
  if (with.logSum == -Infinity) return;
  const f64 logWith = with.logSum + eta;
  const f64 higher = std::max(without.logSum, logWith);
  const f64 logSum = higher + std::log1p(std::exp(-std::fabs(without.logSum - logWith)));
  const f64 share = std::exp(logWith - logSum);
  const f64 rest = std::exp(without.logSum - logSum);
  without.logSum = logSum;
  const std::size_t columns = without.mean.size();
  std::size_t at = 0;
  for (std::size_t i = 0; i < columns; ++i) {
    const f64 apart = with.mean[i] + member[i] - without.mean[i];
    for (std::size_t j = i; j < columns; ++j, ++at) {
      // The mean of column j changes only when its own turn as i has come.
      const f64 apartJ = with.mean[j] + member[j] - without.mean[j];
      without.covariance[at] =
          rest * without.covariance[at] + share * with.covariance[at] + rest * share * apart * apartJ;
    }
  }
  for (std::size_t i = 0; i < columns; ++i)
    without.mean[i] = rest * without.mean[i] + share * (with.mean[i] + member[i]);
}

// The choices of `count` among the members of a set, sign 1 for the weights exp(eta), -1 for their inverses.
const Choices& AllChoices(const Problem& problem, const MatchedSet& set, std::size_t count, f64 sign,
                          const std::vector<f64>& etas, std::vector<Choices>& chosen) {
  const std::size_t columns = problem.columns;
  if (chosen.size() <= count) chosen.resize(count + 1);
  for (std::size_t k = 0; k <= count; ++k) {
    chosen[k].logSum = k == 0 ? 0 : -Infinity;
    chosen[k].mean.assign(columns, 0.0);
    chosen[k].covariance.assign(columns * (columns + 1) / 2, 0.0);
  }
  for (std::size_t member = 0; member < set.members; ++member) {
    const f64* covariates = &problem.covariates[(set.first + member) * columns];
    // Fewer than `least` can no longer grow to `count`.
    const std::size_t left = set.members - member - 1;
    const std::size_t least = std::max<std::size_t>(1, count > left ? count - left : 0);
    for (std::size_t k = std::min(count, member + 1); k >= least; --k)
      Mix(chosen[k], chosen[k - 1], sign * etas[member], covariates);
  }
  return chosen[count];
}

void AddSet(const Problem& problem, const MatchedSet& set, const std::vector<f64>& b, std::vector<f64>& etas,
            std::vector<Choices>& chosen, Likelihood& sum) {
  const std::size_t columns = problem.columns;
  etas.assign(set.members, 0.0);
  f64 casesEta = 0;
  f64 controlsEta = 0;
  std::vector<f64> casesSum(columns, 0.0);
  for (std::size_t member = 0; member < set.members; ++member) {
    const f64* x = &problem.covariates[(set.first + member) * columns];
    for (std::size_t j = 0; j < columns; ++j) etas[member] += b[j] * x[j];
    const bool isCase = problem.isCase[set.first + member];
    (isCase ? casesEta : controlsEta) += etas[member];
    for (std::size_t j = 0; isCase && j < columns; ++j) casesSum[j] += x[j];
  }
  // Choosing the cases is leaving the controls; about the mean of the set, the covariates of all members sum to 0.
  const bool byCases = 2 * set.cases <= set.members;
  const std::size_t count = byCases ? set.cases : set.members - set.cases;
  const f64 sign = byCases ? 1 : -1;
  const Choices& all = AllChoices(problem, set, count, sign, etas, chosen);
  sum.value += (byCases ? casesEta : -controlsEta) - all.logSum;
  std::size_t at = 0;
  for (std::size_t i = 0; i < columns; ++i) {
    sum.score[i] += casesSum[i] - sign * all.mean[i];
    for (std::size_t j = i; j < columns; ++j, ++at) {
      sum.information[i * columns + j] += all.covariance[at];
      if (j != i) sum.information[j * columns + i] += all.covariance[at];
    }
  }
}

Likelihood LikelihoodAt(const Problem& problem, const std::vector<f64>& b) {
  Likelihood sum(problem.columns);
  std::vector<f64> etas;
  std::vector<Choices> chosen;
  for (const MatchedSet& set : problem.sets) AddSet(problem, set, b, etas, chosen, sum);
  return sum;
}

// --- the data ---

bool ArgumentsAreLegal(const ClmainData& data, f64 accuracy, i32 iterations, const ClmainFit& fit) {
  if (data.rows < 1 || data.columns < 1 || data.leading < data.rows || iterations < 0) return false;
  if (!(accuracy >= 0) || std::isinf(accuracy)) return false;
  if (data.covariates == nullptr || data.stratum == nullptr || data.isCase == nullptr) return false;
  if (fit.coefficients == nullptr || fit.score == nullptr || fit.information == nullptr) return false;
  return std::all_of(data.isCase, data.isCase + data.rows, [](i32 flag) { return flag == 0 || flag == 1; });
}

bool NumbersAreFinite(const ClmainData& data, const ClmainFit& fit) {
  const auto finite = [](f64 x) { return std::isfinite(x); };
  for (i32 j = 0; j < data.columns; ++j) {
    const f64* column = data.covariates + Place(0, j, data.leading);
    if (!std::all_of(column, column + data.rows, finite)) return false;
  }
  return std::all_of(fit.coefficients, fit.coefficients + data.columns, finite);
}

std::vector<MatchedSet> SetsOf(const ClmainData& data) {
  std::vector<MatchedSet> sets;
  for (i32 first = 0, end = 0; first < data.rows; first = end) {
    std::size_t cases = 0;
    for (end = first; end < data.rows && data.stratum[end] == data.stratum[first]; ++end)
      cases += static_cast<std::size_t>(data.isCase[end]);
    const auto members = static_cast<std::size_t>(end - first);
    if (cases > 0 && cases < members) sets.push_back({static_cast<std::size_t>(first), members, cases});
  }
  return sets;
}

// Covariates of one column in the sets about their means, brought to at most about 1.
void TakeColumn(const f64* from, std::size_t column, Problem& problem) {
  f64 largest = 0;
  for (const MatchedSet& set : problem.sets) {
    for (std::size_t i = set.first; i < set.first + set.members; ++i) largest = std::max(largest, std::fabs(from[i]));
  }
  const f64 first = largest > 0 ? std::ldexp(1.0, std::clamp(-std::ilogb(largest), -1000, 1000)) : 1;
  f64 spread = 0;
  for (const MatchedSet& set : problem.sets) {
    f64 mean = 0;
    for (std::size_t i = set.first; i < set.first + set.members; ++i)
      mean += from[i] * first / static_cast<f64>(set.members);
    for (std::size_t i = set.first; i < set.first + set.members; ++i) {
      f64& to = problem.covariates[i * problem.columns + column];
      to = from[i] * first - mean;
      spread = std::max(spread, std::fabs(to));
    }
  }
  const f64 second = spread > 0 ? std::ldexp(1.0, std::clamp(-std::ilogb(spread), 0, 60)) : 1;
  for (const MatchedSet& set : problem.sets) {
    for (std::size_t i = set.first; i < set.first + set.members; ++i)
      problem.covariates[i * problem.columns + column] *= second;
  }
  problem.scales[column] = first * second;
}

Problem Prepared(const ClmainData& data) {
  const auto rows = static_cast<std::size_t>(data.rows);
  const auto columns = static_cast<std::size_t>(data.columns);
  Problem problem{columns, SetsOf(data), std::vector<f64>(rows * columns), std::vector<bool>(rows),
                  std::vector<f64>(columns, 1.0)};
  for (std::size_t i = 0; i < rows; ++i) problem.isCase[i] = data.isCase[i] == 1;
  for (i32 j = 0; j < data.columns; ++j)
    TakeColumn(data.covariates + Place(0, j, data.leading), static_cast<std::size_t>(j), problem);
  return problem;
}

// --- the fit ---

bool IsFinite(const Likelihood& at) {
  const auto finite = [](f64 x) { return std::isfinite(x); };
  return finite(at.value) && std::all_of(at.score.begin(), at.score.end(), finite) &&
         std::all_of(at.information.begin(), at.information.end(), finite);
}

// The inverse of the information; false where it is singular.
bool Invert(const Likelihood& at, std::vector<f64>& inverse, i32& failed) {
  const i32 columns = static_cast<i32>(at.score.size());
  inverse.resize(at.information.size());
  f64 logDeterminant = 0;
  i32 status = 0;
  MXINV(columns, at.information.data(), columns, inverse.data(), columns, logDeterminant, failed, status);
  return status == 0;
}

// Newton's step with its length halved until the likelihood no longer falls; false where no length will do.
bool Advance(const Problem& problem, const std::vector<f64>& inverse, std::vector<f64>& b, Likelihood& at) {
  constexpr f64 Shortest = 1e-6;
  std::vector<f64> step(b.size(), 0.0);
  for (std::size_t i = 0; i < b.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) step[i] += inverse[i * b.size() + j] * at.score[j];
  }
  // What rounding may take from the likelihood.
  const f64 slack = 1e-13 * (1 + std::fabs(at.value));
  for (f64 length = 1; length > Shortest; length /= 2) {
    std::vector<f64> trial = b;
    for (std::size_t i = 0; i < b.size(); ++i) trial[i] += length * step[i];
    Likelihood there = LikelihoodAt(problem, trial);
    if (!IsFinite(there) || there.value < at.value - slack) continue;
    b = std::move(trial);
    at = std::move(there);
    return true;
  }
  return false;
}

void Store(const Problem& problem, const std::vector<f64>& b, const Likelihood& at, const std::vector<f64>& inverse,
           ClmainFit& fit) {
  const std::size_t columns = problem.columns;
  fit.logLikelihood = at.value;
  for (std::size_t i = 0; i < columns; ++i) {
    fit.coefficients[i] = b[i] * problem.scales[i];
    fit.score[i] = at.score[i] / problem.scales[i];
    for (std::size_t j = 0; j < columns; ++j) {
      fit.information[i * columns + j] = at.information[i * columns + j] / problem.scales[i] / problem.scales[j];
      if (fit.covariance != nullptr && !inverse.empty())
        fit.covariance[i * columns + j] = inverse[i * columns + j] * problem.scales[i] * problem.scales[j];
    }
  }
}

Status Maximise(const Problem& problem, f64 accuracy, i32 iterations, ClmainFit& fit) {
  std::vector<f64> b(problem.columns);
  for (std::size_t j = 0; j < b.size(); ++j) b[j] = fit.coefficients[j] / problem.scales[j];
  Likelihood at = LikelihoodAt(problem, b);
  if (!IsFinite(at)) return NotFinite;
  const bool wantsInverse = iterations > 0 || fit.covariance != nullptr;
  std::vector<f64> inverse;
  Status status = iterations > 0 ? NotConverged : Done;
  if (wantsInverse && !Invert(at, inverse, fit.singular)) status = Singular;
  while (status == NotConverged && fit.iterations < iterations) {
    ++fit.iterations;
    const f64 before = at.value;
    if (!Advance(problem, inverse, b, at)) break;
    if (!Invert(at, inverse, fit.singular)) {
      status = Singular;
    } else if (std::fabs(at.value - before) <= accuracy * (std::fabs(at.value) + accuracy)) {
      status = Done;
    }
  }
  if (status == Singular) inverse.clear();
  Store(problem, b, at, inverse, fit);
  return status;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void CLMAIN(const ClmainData& data, const f64& accuracy, const i32& iterations, ClmainFit& fit, i32& status) {
  fit.iterations = 0;
  fit.singular = 0;
  fit.logLikelihood = 0;
  status = BadArguments;
  if (!ArgumentsAreLegal(data, accuracy, iterations, fit)) return;
  status = NotFinite;
  if (!NumbersAreFinite(data, fit)) return;
  try {
    status = Maximise(Prepared(data), accuracy, iterations, fit);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
