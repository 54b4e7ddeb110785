// The generalized Cochran-Mantel-Haenszel statistics.
#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

#include "kernel/Inner.h"
#include "kernel/Square.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, BadNumbers, NothingToTest, NoMemory };

struct Tables {
  const f64* counts;
  int rows;
  int columns;
  int strata;
  std::vector<f64> rowScores;
  std::vector<f64> columnScores;

  f64 Count(int i, int j, int h) const {
    const auto table = static_cast<std::size_t>(h) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(j);
    return counts[table * static_cast<std::size_t>(rows) + static_cast<std::size_t>(i)];
  }
};

// Deviations from their expectation with their covariance, summed over the strata.
struct Deviations {
  explicit Deviations(int size) : sum(static_cast<std::size_t>(size), 0.0), covariance(size) {}
  std::vector<f64> sum;
  Square<f64> covariance;
};

// One stratum: its total, the shares of rows and columns, its scores about their means.
struct Stratum {
  f64 total = 0;
  std::vector<f64> rowShares;
  std::vector<f64> columnShares;
  std::vector<f64> rowScores;
  std::vector<f64> columnScores;
};

std::vector<f64> AboutMean(const std::vector<f64>& scores, const std::vector<f64>& shares) {
  // From the first score on, lest a common part of all cancel digits.
  f64 mean = 0;
  for (std::size_t i = 0; i < scores.size(); ++i) mean += (scores[i] - scores[0]) * shares[i];
  std::vector<f64> about(scores.size());
  for (std::size_t i = 0; i < scores.size(); ++i) about[i] = (scores[i] - scores[0]) - mean;
  return about;
}

f64 Variance(const std::vector<f64>& about, const std::vector<f64>& shares) {
  f64 sum = 0;
  for (std::size_t i = 0; i < about.size(); ++i) sum += shares[i] * about[i] * about[i];
  return sum;
}

Stratum StratumOf(const Tables& tables, int h) {
  Stratum stratum;
  stratum.rowShares.assign(static_cast<std::size_t>(tables.rows), 0.0);
  stratum.columnShares.assign(static_cast<std::size_t>(tables.columns), 0.0);
  for (int j = 0; j < tables.columns; ++j) {
    for (int i = 0; i < tables.rows; ++i) {
      const f64 count = tables.Count(i, j, h);
      stratum.total += count;
      stratum.rowShares[static_cast<std::size_t>(i)] += count;
      stratum.columnShares[static_cast<std::size_t>(j)] += count;
    }
  }
  for (f64& share : stratum.rowShares) share /= std::max(stratum.total, 1.0);
  for (f64& share : stratum.columnShares) share /= std::max(stratum.total, 1.0);
  stratum.rowScores = AboutMean(tables.rowScores, stratum.rowShares);
  stratum.columnScores = AboutMean(tables.columnScores, stratum.columnShares);
  return stratum;
}

// n^2/(n - 1), by which the products of the shares' covariances make the covariance of the counts.
f64 Spread(const Stratum& stratum) { return stratum.total * (stratum.total / (stratum.total - 1)); }

// The covariance of two shares of one margin.
f64 ShareCovariance(const std::vector<f64>& shares, int i, int k) {
  const f64 a = shares[static_cast<std::size_t>(i)];
  const f64 b = shares[static_cast<std::size_t>(k)];
  return i == k ? a * (1 - a) : -a * b;
}

f64 Deviation(const Tables& tables, const Stratum& stratum, int i, int j, int h) {
  return tables.Count(i, j, h) - stratum.total * stratum.rowShares[static_cast<std::size_t>(i)] *
                                     stratum.columnShares[static_cast<std::size_t>(j)];
}

void AddCorrelation(const Tables& tables, const Stratum& stratum, int h, Deviations& to) {
  for (int j = 0; j < tables.columns; ++j) {
    for (int i = 0; i < tables.rows; ++i)
      to.sum[0] += stratum.rowScores[static_cast<std::size_t>(i)] * stratum.columnScores[static_cast<std::size_t>(j)] *
                   tables.Count(i, j, h);
  }
  to.covariance(0, 0) += Spread(stratum) * Variance(stratum.rowScores, stratum.rowShares) *
                         Variance(stratum.columnScores, stratum.columnShares);
}

void AddMeanScores(const Tables& tables, const Stratum& stratum, int h, Deviations& to) {
  const f64 spread = Spread(stratum) * Variance(stratum.columnScores, stratum.columnShares);
  for (int i = 0; i < tables.rows - 1; ++i) {
    for (int j = 0; j < tables.columns; ++j)
      to.sum[static_cast<std::size_t>(i)] += stratum.columnScores[static_cast<std::size_t>(j)] * tables.Count(i, j, h);
    for (int k = 0; k <= i; ++k) to.covariance(k, i) += spread * ShareCovariance(stratum.rowShares, i, k);
  }
}

void AddAssociation(const Tables& tables, const Stratum& stratum, int h, Deviations& to) {
  const f64 spread = Spread(stratum);
  const int rows = tables.rows - 1;
  for (int at = 0; at < to.covariance.size(); ++at) {
    to.sum[static_cast<std::size_t>(at)] += Deviation(tables, stratum, at % rows, at / rows, h);
    for (int other = 0; other <= at; ++other) {
      to.covariance(other, at) += spread * ShareCovariance(stratum.rowShares, at % rows, other % rows) *
                                  ShareCovariance(stratum.columnShares, at / rows, other / rows);
    }
  }
}

// x' V^- x and the rank of V, by Cholesky's factorisation that leaves out what the elements before determine.
f64 QuadraticForm(Deviations x, i32& rank) {
  constexpr f64 Determined = 1e-10;
  auto& v = x.covariance;
  f64 sum = 0;
  rank = 0;
  for (int j = 0; j < v.size(); ++j) {
    const f64 whole = v(j, j);
    for (int i = 0; i < j; ++i) {
      if (v(i, i) == 0) {
        v(i, j) = 0;
        continue;
      }
      for (int k = 0; k < i; ++k) v(i, j) -= v(k, i) * v(k, j);
      v(i, j) /= v(i, i);
      v(j, j) -= v(i, j) * v(i, j);
      x.sum[static_cast<std::size_t>(j)] -= v(i, j) * x.sum[static_cast<std::size_t>(i)];
    }
    if (!(v(j, j) > Determined * whole)) {
      v(j, j) = 0;
      continue;
    }
    v(j, j) = std::sqrt(v(j, j));
    f64& scaled = x.sum[static_cast<std::size_t>(j)];
    scaled /= v(j, j);
    sum += scaled * scaled;
    ++rank;
  }
  return sum;
}

using AddStratum = void (*)(const Tables&, const Stratum&, int, Deviations&);

f64 StatisticOf(const Tables& tables, const std::vector<Stratum>& strata, int size, AddStratum add, i32& df) {
  Deviations deviations(size);
  for (int h = 0; h < tables.strata; ++h) {
    if (strata[static_cast<std::size_t>(h)].total >= 2) add(tables, strata[static_cast<std::size_t>(h)], h, deviations);
  }
  return QuadraticForm(std::move(deviations), df);
}

std::vector<f64> ScoresOrPlaces(const f64* scores, int count) {
  std::vector<f64> result;
  for (int i = 0; i < count; ++i) result.push_back(scores != nullptr ? scores[i] : i + 1.0);
  return result;
}

bool NumbersAreLegal(const Tables& tables) {
  const auto finite = [](f64 x) { return std::fabs(x) < 1e75; };  // whose fourth powers are finite
  if (!std::all_of(tables.rowScores.begin(), tables.rowScores.end(), finite)) return false;
  if (!std::all_of(tables.columnScores.begin(), tables.columnScores.end(), finite)) return false;
  for (int h = 0; h < tables.strata; ++h) {
    for (int j = 0; j < tables.columns; ++j) {
      for (int i = 0; i < tables.rows; ++i) {
        const f64 count = tables.Count(i, j, h);
        if (!(count >= 0 && count < 1e15)) return false;
      }
    }
  }
  return true;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void GENCMH(const f64* table, const i32& rows, const i32& columns, const i32& strata, const f64* rowScores,
            const f64* columnScores, f64& correlation, f64& meanScore, f64& association, i32* df, i32& status) {
  status = BadSizes;
  constexpr i32 MostCells = 40'000;  // whose covariances take 12 gigabytes
  if (rows < 2 || columns < 2 || strata < 1 || table == nullptr || df == nullptr) return;
  if (std::int64_t{rows - 1} * (columns - 1) > MostCells) return;
  try {
    const Tables tables{
        table, rows, columns, strata, ScoresOrPlaces(rowScores, rows), ScoresOrPlaces(columnScores, columns)};
    status = BadNumbers;
    if (!NumbersAreLegal(tables)) return;
    std::vector<Stratum> all;
    for (int h = 0; h < strata; ++h) all.push_back(StratumOf(tables, h));
    status = NothingToTest;
    if (std::none_of(all.begin(), all.end(), [](const Stratum& s) { return s.total >= 2; })) return;
    correlation = StatisticOf(tables, all, 1, AddCorrelation, df[0]);
    meanScore = StatisticOf(tables, all, rows - 1, AddMeanScores, df[1]);
    association = StatisticOf(tables, all, (rows - 1) * (columns - 1), AddAssociation, df[2]);
    status = Done;
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
