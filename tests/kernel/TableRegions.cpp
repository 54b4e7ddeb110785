// Regions of the exact test of tables and of conditional likelihood, by enumeration, and of the generalized
// Cochran-Mantel-Haenszel statistics, by matrices in 50 digits.

#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/Kernel.h"
#include "tests/kernel/AccuracyRegions.h"
#include "tests/kernel/ExactSolve.h"
#include "tests/kernel/MatchedSets.h"
#include "tests/kernel/Reference.h"

namespace tellurix::accuracy {

namespace {

// --- conditional likelihood ---

// Value, score and information. Every other time cases and controls change places, so that the recursion goes over the
// other group.
Region LikelihoodRegion() {
  return AtMost(12, {"CLMAIN", "six sets of 4 to 16, enumeration, absolute", 1e-10, 0,
                     [](Random& random) -> std::optional<Point> {
                       matched::Matched data = matched::SixSets();
                       const bool swapped = random() % 2 == 0;
                       for (auto& flag : data.isCase) flag = swapped ? 1 - flag : flag;
                       std::vector<f64> b;
                       for (int j = 0; j < 3; ++j) b.push_back(Uniform(random, -1, 1));
                       const auto wanted = matched::Enumerated(data, b);
                       data.Run(b, 0);
                       double error = AbsoluteError(data.fit.logLikelihood, wanted.value);
                       for (std::size_t i = 0; i < 3; ++i)
                         error = std::max(error, AbsoluteError(data.score[i], wanted.score[i]));
                       for (std::size_t i = 0; i < 9; ++i)
                         error = std::max(error, AbsoluteError(data.information[i], wanted.information[i]));
                       return Point{b, data.status == 0 ? error : INFINITY};
                     }});
}

// Pairs that differ by 1 in one covariate: b is the logarithm of the ratio of the discordant pairs (N. E. Breslow & N.
// E. Day 1980, Statistical Methods in Cancer Research 1, 5.2), its variance the sum of their reciprocals.
Region PairsRegion() {
  return AtMost(
      200, {"CLMAIN", "discordant pairs, closed form; likelihood to 1e-12", 1e-11, 0,
            [](Random& random) -> std::optional<Point> {
              const i32 more = 1 + static_cast<i32>(random() % 60);
              const i32 less = 1 + static_cast<i32>(random() % 60);
              if (more == less) return std::nullopt;
              matched::Matched data{1};
              for (i32 pair = 0; pair < more + less; ++pair) {
                for (const i32 flag : {1, 0}) {
                  data.stratum.push_back(pair);
                  data.isCase.push_back(flag);
                  data.covariates.push_back(pair < more ? flag : 1 - flag);
                }
              }
              data.Run({0}, 30, 1e-12);
              const double error = std::max(RelativeError(data.b[0], log(Real(more) / less)),
                                            RelativeError(data.covariance[0], 1 / Real(more) + 1 / Real(less)));
              return Point{{static_cast<double>(more), static_cast<double>(less)}, data.status == 0 ? error : INFINITY};
            }});
}

// --- exact test ---

// Every table with the same margins, cell by cell.
class Enumeration {
 public:
  Enumeration(const std::vector<f64>& table, std::size_t rows) : rows_(rows, 0), columns_(table.size() / rows, 0) {
    f64 total = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
      rows_[i % rows] += table[i];
      columns_[i / rows] += table[i];
      total += table[i];
      length_ += LogFactorial(table[i]);
    }
    constant_ = -LogFactorial(total);
    for (const f64 r : rows_) constant_ += LogFactorial(r);
    for (const f64 c : columns_) constant_ += LogFactorial(c);
    Cell(0, 0, columns_[0], 0);
  }
  f64 P() const { return static_cast<f64>(sum_); }
  f64 PTable() const { return static_cast<f64>(std::exp(constant_ - length_)); }

 private:
  static long double LogFactorial(f64 k) { return std::lgamma(static_cast<long double>(k) + 1); }

  void Cell(std::size_t i, std::size_t j, f64 left, long double length) {
    if (j == columns_.size()) {
      if (length >= length_ - 1e-9L) sum_ += std::exp(constant_ - length);
      return;
    }
    const bool isLastRow = i + 1 == rows_.size();
    for (f64 count = isLastRow ? left : 0; count <= std::min(left, rows_[i]); ++count) {
      rows_[i] -= count;
      if (isLastRow)
        Cell(0, j + 1, j + 1 < columns_.size() ? columns_[j + 1] : 0, length + LogFactorial(count));
      else
        Cell(i + 1, j, left - count, length + LogFactorial(count));
      rows_[i] += count;
    }
  }

  std::vector<f64> rows_;
  std::vector<f64> columns_;
  long double length_ = 0;
  long double constant_ = 0;
  long double sum_ = 0;
};

struct Table {
  i32 rows;
  std::vector<f64> counts;
  Real p;
};

Point NetworkPoint(const Table& table, const std::optional<Real>& wantedTable) {
  f64 pTable = NAN;
  f64 p = NAN;
  i32 status = -1;
  const i32 columns = static_cast<i32>(table.counts.size()) / table.rows;
  RCNWA(table.counts.data(), table.rows, columns, {}, pTable, p, status);
  double error = status == 0 ? RelativeError(p, table.p) : INFINITY;
  if (wantedTable) error = std::max(error, RelativeError(pTable, *wantedTable));
  return {{static_cast<double>(table.rows), static_cast<double>(columns), p}, error};
}

// Some with equal margins, some that lean on their diagonal.
Region EnumeratedTablesRegion() {
  return AtMost(
      160, {"RCNWA", "2 by 2 to 3 by 5, all tables enumerated", 1e-12, 0, [](Random& random) -> std::optional<Point> {
              constexpr std::array<std::pair<i32, i32>, 8> Shapes{
                  {{2, 2}, {2, 5}, {3, 3}, {5, 2}, {3, 4}, {4, 3}, {3, 5}, {2, 7}}};
              const auto [rows, columns] = Shapes[random() % Shapes.size()];
              Table table{rows, std::vector<f64>(static_cast<std::size_t>(rows * columns)), 0};
              const f64 mean = rows * columns > 12 ? 0.9 : rows * columns > 9 ? 1.5 : 3;
              const bool equal = random() % 3 == 0;
              const bool leaning = random() % 5 == 0;
              std::poisson_distribution<int> poisson(mean);
              for (std::size_t i = 0; i < table.counts.size(); ++i) {
                table.counts[i] = equal ? std::round(mean) : poisson(random);
                const auto height = static_cast<std::size_t>(rows);
                if (leaning && i % height == i / height) table.counts[i] += 3;
              }
              if (std::all_of(table.counts.begin(), table.counts.end(), [](f64 x) { return x == 0; }))
                return std::nullopt;
              const Enumeration all(table.counts, static_cast<std::size_t>(rows));
              table.p = all.P();
              return NetworkPoint(table, Real(all.PTable()));
            }});
}

// The second is job satisfaction, A. Agresti (2002), Categorical Data Analysis, 2nd edition, table 2.8.
Region LargerTablesRegion() {
  const std::vector<Table> tables{
      {5,
       {2, 0, 1, 2, 6, 1, 3, 1, 1, 1, 1, 0, 3, 1, 0, 1, 1, 0, 2, 0, 0, 2, 1, 0, 0, 1, 1, 1, 1, 1},
       Real("0.18354697476400771469")},
      {4, {1, 2, 1, 0, 3, 3, 6, 1, 10, 10, 14, 9, 6, 7, 12, 11}, Real("0.78268493896639476381")}};
  return Listed("RCNWA", "5 by 6 and 4 by 4, exact rational sums", 1e-12, tables,
                [](const Table& table) { return NetworkPoint(table, std::nullopt); });
}

// --- generalized Cochran-Mantel-Haenszel ---

// G' V^-1 G of the sums over the strata of A (counts - expected) and of A Var A', where the rows of `a` bear on the
// cells of a table, the rows of the table running fastest; in the notation of J. R. Landis, E. R. Heyman & G. G. Koch
// (1978), International Statistical Review 46:237-254.
Real QuadraticForm(const std::vector<f64>& counts, std::size_t rows, std::size_t columns, const Rows<Real>& a) {
  const std::size_t cells = rows * columns;
  Rows<Real> system(a.size(), std::vector<Real>(a.size() + 1, Real(0)));
  std::vector<Real> g(a.size(), Real(0));
  for (std::size_t start = 0; start < counts.size(); start += cells) {
    std::vector<Real> row(rows, Real(0));
    std::vector<Real> column(columns, Real(0));
    Real n = 0;
    for (std::size_t i = 0; i < cells; ++i) {
      row[i % rows] += counts[start + i];
      column[i / rows] += counts[start + i];
      n += counts[start + i];
    }
    const auto covariance = [&](std::size_t i, std::size_t j) -> Real {
      const auto part = [&](const std::vector<Real>& margin, std::size_t x, std::size_t y) -> Real {
        return (x == y ? margin[x] : Real(0)) - margin[x] * margin[y] / n;
      };
      return part(row, i % rows, j % rows) * part(column, i / rows, j / rows) / (n - 1);
    };
    for (std::size_t k = 0; k < a.size(); ++k) {
      for (std::size_t i = 0; i < cells; ++i) {
        g[k] += a[k][i] * (counts[start + i] - row[i % rows] * column[i / rows] / n);
        for (std::size_t l = 0; l < a.size(); ++l) {
          for (std::size_t j = 0; j < cells; ++j) system[k][l] += a[k][i] * covariance(i, j) * a[l][j];
        }
      }
    }
  }
  for (std::size_t k = 0; k < a.size(); ++k) system[k][a.size()] = g[k];
  Eliminate(system);
  Real form = 0;
  for (std::size_t k = 0; k < a.size(); ++k) form += g[k] * system[k][a.size()];
  return form;
}

// The linear functions of the cells that each of the three statistics tests.
std::array<Rows<Real>, 3> Contrasts(const std::vector<f64>& rowScores, const std::vector<f64>& columnScores) {
  const std::size_t rows = rowScores.size();
  const std::size_t columns = columnScores.size();
  std::array<Rows<Real>, 3> contrasts;
  const auto add = [&](Rows<Real>& to, auto element) {
    to.emplace_back();
    for (std::size_t j = 0; j < columns; ++j) {
      for (std::size_t i = 0; i < rows; ++i) to.back().push_back(element(i, j));
    }
  };
  add(contrasts[0], [&](std::size_t i, std::size_t j) { return Real(rowScores[i]) * columnScores[j]; });
  for (std::size_t k = 0; k + 1 < rows; ++k) {
    add(contrasts[1], [&](std::size_t i, std::size_t j) { return i == k ? Real(columnScores[j]) : Real(0); });
    for (std::size_t l = 0; l + 1 < columns; ++l)
      add(contrasts[2], [&](std::size_t i, std::size_t j) { return Real(i == k && j == l ? 1 : 0); });
  }
  return contrasts;
}

Region StrataRegion() {
  return AtMost(
      30,
      {"GENCMH", "1 to 4 strata of 2 by 2 to 4 by 4, 50-digit matrices, of 1 + Q", 1e-12, 0,
       [](Random& random) -> std::optional<Point> {
         const std::size_t rows = 2 + random() % 3;
         const std::size_t columns = 2 + random() % 3;
         const std::size_t strata = 1 + random() % 4;
         std::vector<f64> counts(rows * columns * strata);
         for (auto& count : counts) count = 1 + static_cast<f64>(random() % 20);
         std::vector<f64> rowScores;
         std::vector<f64> columnScores;
         for (std::size_t i = 0; i < rows; ++i) rowScores.push_back(Uniform(random, -3, 8));
         for (std::size_t j = 0; j < columns; ++j) columnScores.push_back(Uniform(random, -3, 8));
         std::array<f64, 3> got{};
         std::array<i32, 3> df{};
         i32 status = -1;
         GENCMH(counts.data(), static_cast<i32>(rows), static_cast<i32>(columns), static_cast<i32>(strata),
                rowScores.data(), columnScores.data(), got[0], got[1], got[2], df.data(), status);
         const auto contrasts = Contrasts(rowScores, columnScores);
         double error = status == 0 ? 0 : INFINITY;
         for (std::size_t k = 0; k < 3; ++k) {
           const Real wanted = QuadraticForm(counts, rows, columns, contrasts[k]);
           error = std::max(error, AbsoluteError(got[k], wanted) / (1 + static_cast<double>(wanted)));
           error = std::max(error, Exactly(static_cast<std::size_t>(df[k]) == contrasts[k].size()));
         }
         return Point{{static_cast<double>(rows), static_cast<double>(columns), static_cast<double>(strata)}, error};
       }});
}

std::vector<Region> TableRegions() {
  return {LikelihoodRegion(), PairsRegion(), EnumeratedTablesRegion(), LargerTablesRegion(), StrataRegion()};
}

const bool added = AddRegions(&TableRegions);

}  // namespace

}  // namespace tellurix::accuracy
