// Least squares by QR, one pass over blocks of rows, in doubles or in twice their precision.
#include "kernel/LeastSquares.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

#include "kernel/RowBlockQr.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Done, BadSizes, NotFinite, BadWeights, NoMemory, OutOfRange };

constexpr f64 DefaultTolerance = 1e-13;

// Up to so many multiplications (some ten milliseconds) twice the precision is used without asking.
constexpr f64 SmallProblem = 1e7;

// What doubles can bear: the root of the largest variance inflation factor, and how far the residuals may lie below the
// response. Both lose their factor of the 16 digits.
constexpr f64 MostInflation = 1e2;
constexpr f64 LeastResidual = 1e-3;

// Beyond these magnitudes squares need scaling.
constexpr f64 LargestPlain = 1e100;
constexpr f64 SmallestPlain = 1e-100;

// A column of the augmented matrix: ones, the design, the responses.
struct Column {
  const f64* high;  // null for ones
  const f64* low;   // null for zeros
  f64 scale = 1;    // a power of two by which it is multiplied
};

struct Problem {
  std::size_t rows;
  int predictors;  // the intercept counted
  int responses;
  bool intercept;
  const f64* weights;
  f64 weightScale = 1;  // a power of two by which the roots of the weights are multiplied
  i32 rowsUsed;
  f64 tolerance;
  std::vector<Column> columns;

  int Width() const { return predictors + responses; }
};

// The factor of the augmented matrix, freed of shifts, still in the scales of the columns.
template <typename Real>
struct Factor {
  Square<Real> triangle;
  std::vector<int> rowOf;  // the row of the triangle that a predictor bears; -1 for an aliased one
  int rank = 0;
};

Problem Gathered(const GlsqrData& data, f64 tolerance) {
  Problem problem{static_cast<std::size_t>(data.rows),
                  data.columns + (data.intercept != 0 ? 1 : 0),
                  data.responses,
                  data.intercept != 0,
                  data.weights,
                  1,
                  data.rows,
                  tolerance == 0 ? DefaultTolerance : tolerance,
                  {}};
  if (problem.intercept) problem.columns.push_back({nullptr, nullptr});
  for (i32 j = 0; j < data.columns; ++j) {
    const std::size_t offset = static_cast<std::size_t>(j) * static_cast<std::size_t>(data.designLeading);
    problem.columns.push_back({data.design + offset, data.designLow != nullptr ? data.designLow + offset : nullptr});
  }
  for (i32 j = 0; j < data.responses; ++j) {
    const std::size_t offset = static_cast<std::size_t>(j) * static_cast<std::size_t>(data.responseLeading);
    problem.columns.push_back({data.response + offset, nullptr});
  }
  return problem;
}

bool SizesAreLegal(const GlsqrData& data, f64 tolerance, const GlsqrFit& fit) {
  if (data.rows < 1 || data.columns < 0 || data.responses < 1) return false;
  const std::int64_t predictors = std::int64_t{data.columns} + (data.intercept != 0 ? 1 : 0);
  if (predictors < 1 || predictors + data.responses > std::numeric_limits<i32>::max()) return false;
  if (data.columns > 0 && (data.design == nullptr || data.designLeading < data.rows)) return false;
  if (data.response == nullptr || data.responseLeading < data.rows) return false;
  if (fit.rLeading < predictors || !(tolerance >= 0 && tolerance < 1)) return false;
  return fit.r != nullptr && fit.coefficients != nullptr && fit.pivot != nullptr && fit.totalSS != nullptr &&
         fit.regressionSS != nullptr && fit.residualSS != nullptr;
}

// Checks the weights, counts the rows that have one and scales the largest to about 1.
Status WeighRows(Problem& problem) {
  if (problem.weights == nullptr) return Done;
  f64 largest = 0;
  problem.rowsUsed = 0;
  for (std::size_t i = 0; i < problem.rows; ++i) {
    const f64 weight = problem.weights[i];
    if (!std::isfinite(weight)) return NotFinite;
    if (weight < 0) return BadWeights;
    if (weight > 0) ++problem.rowsUsed;
    largest = std::max(largest, weight);
  }
  if (problem.rowsUsed == 0) return BadWeights;
  problem.weightScale = std::ldexp(1.0, -std::ilogb(largest) / 2);
  return Done;
}

f64 PowerOfTwoBelow(f64 largest) {
  return largest > 0 ? std::ldexp(1.0, std::clamp(-std::ilogb(largest), -1000, 1000)) : 1;
}

// Scales every column to magnitudes of at most about 1; false where a number is not finite.
bool ScaleColumns(Problem& problem) {
  for (Column& column : problem.columns) {
    if (column.high == nullptr) continue;
    f64 largest = 0;
    bool finite = true;
    for (std::size_t i = 0; i < problem.rows; ++i) {
      if (problem.weights != nullptr && problem.weights[i] == 0) continue;
      finite = finite && std::isfinite(column.high[i]) && (column.low == nullptr || std::isfinite(column.low[i]));
      largest = std::max(largest, std::fabs(column.high[i]));
    }
    if (!finite) return false;
    column.scale = PowerOfTwoBelow(largest);
  }
  return true;
}

// The next rows that have a weight, at most `most` of them; `next` moves behind them.
void TakeRows(const Problem& problem, std::size_t& next, int most, std::vector<std::size_t>& rows) {
  rows.clear();
  while (next < problem.rows && rows.size() < static_cast<std::size_t>(most)) {
    if (problem.weights == nullptr || problem.weights[next] > 0) rows.push_back(next);
    ++next;
  }
}

// --- twice the precision ---

DoubleDouble Element(const Column& column, std::size_t row) {
  if (column.high == nullptr) return 1;
  const DoubleDouble value =
      column.low == nullptr ? DoubleDouble(column.high[row]) : QuickTwoSum(column.high[row], column.low[row]);
  return Scaled(value, column.scale);
}

void Fill(const Problem& problem, const std::vector<std::size_t>& rows, DoubleDoubleBlock& block) {
  std::vector<DoubleDouble> roots(rows.size(), DoubleDouble(1));
  if (problem.weights != nullptr) {
    const f64 scale = problem.weightScale;
    for (std::size_t i = 0; i < rows.size(); ++i)
      roots[i] = Root(DoubleDouble(problem.weights[rows[i]] * scale * scale));
  }
  for (int j = 0; j < problem.Width(); ++j) {
    f64* high = block.High(j);
    f64* low = block.Low(j);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      DoubleDouble value = Element(problem.columns[static_cast<std::size_t>(j)], rows[i]);
      if (problem.weights != nullptr) value *= roots[i];
      high[i] = value.high;
      low[i] = value.low;
    }
  }
}

Square<DoubleDouble> DoubledTriangle(const Problem& problem) {
  Square<DoubleDouble> triangle(problem.Width());
  DoubleDoubleBlock block(problem.Width());
  std::vector<std::size_t> rows;
  for (std::size_t next = 0; next < problem.rows;) {
    TakeRows(problem, next, DoubleDoubleBlock::Rows, rows);
    Fill(problem, rows, block);
    ReduceInto(triangle, block, static_cast<int>(rows.size()));
  }
  return triangle;
}

// --- doubles ---

// Near the middle of each column, for an intercept to make up for: means of the first block.
std::vector<f64> Shifts(const Problem& problem) {
  std::vector<f64> shifts(static_cast<std::size_t>(problem.Width()), 0.0);
  if (!problem.intercept) return shifts;
  std::vector<std::size_t> rows;
  std::size_t next = 0;
  TakeRows(problem, next, PlainBlock::Rows, rows);
  for (std::size_t j = 1; j < shifts.size(); ++j) {
    f64 sum = 0;
    for (const std::size_t row : rows) sum += problem.columns[j].high[row];
    const f64 mean = sum / static_cast<f64>(rows.size());
    if (std::isfinite(mean)) shifts[j] = mean;
  }
  return shifts;
}

// The largest magnitude of a column in a block; NaN is larger than all.
f64 Largest(const f64* values, int rows) {
  f64 largest = 0;
  bool finite = true;
  for (int i = 0; i < rows; ++i) {
    const f64 size = std::fabs(values[i]);
    finite = finite && size <= LargestPlain;
    largest = std::max(largest, size);
  }
  return finite ? largest : std::numeric_limits<f64>::infinity();
}

// False where a magnitude is too large or too small for unscaled squares.
bool Fill(const Problem& problem, const std::vector<std::size_t>& rows, const std::vector<f64>& shifts,
          PlainBlock& block) {
  const int count = static_cast<int>(rows.size());
  for (int j = 0; j < problem.Width(); ++j) {
    const Column& column = problem.columns[static_cast<std::size_t>(j)];
    f64* to = block.Column(j);
    if (column.high == nullptr) {
      std::fill_n(to, count, 1.0);
    } else if (problem.weights == nullptr) {
      const f64* from = column.high + rows.front();  // without weights the rows adjoin
      const f64 shift = shifts[static_cast<std::size_t>(j)];
      for (int i = 0; i < count; ++i) to[i] = from[i] - shift;
    } else {
      for (int i = 0; i < count; ++i)
        to[i] = column.high[rows[static_cast<std::size_t>(i)]] - shifts[static_cast<std::size_t>(j)];
    }
    const f64 largest = Largest(to, count);
    if (largest > LargestPlain || (largest > 0 && largest < SmallestPlain)) return false;
  }
  if (problem.weights == nullptr) return true;
  std::vector<f64> roots(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) roots[i] = std::sqrt(problem.weights[rows[i]]) * problem.weightScale;
  for (int j = 0; j < problem.Width(); ++j) {
    f64* to = block.Column(j);
    for (int i = 0; i < count; ++i) to[i] *= roots[static_cast<std::size_t>(i)];
  }
  return true;
}

// Of the elements first .. end - 1 of a column.
template <typename Real>
Real SumOfSquares(const Square<Real>& matrix, int column, int first, int end) {
  Real sum = 0;
  for (int i = first; i < end; ++i) sum += matrix(i, column) * matrix(i, column);
  return sum;
}

// The root of the largest variance inflation factor among the predictors: the longest row of the inverse of R, its
// columns brought to length 1. Infinite for a singular R.
f64 LargestInflation(const Square<f64>& r, int predictors) {
  Square<f64> leading(predictors);
  for (int j = 0; j < predictors; ++j) {
    if (r(j, j) == 0) return std::numeric_limits<f64>::infinity();
    for (int i = 0; i <= j; ++i) leading(i, j) = r(i, j);
  }
  const auto inverse = InverseTriangle(leading);
  f64 largest = 0;
  for (int i = 0; i < predictors; ++i) {
    f64 row = 0;
    for (int j = i; j < predictors; ++j) row += inverse(i, j) * inverse(i, j);
    largest = std::max(largest, std::sqrt(row * SumOfSquares(r, i, 0, i + 1)));
  }
  return largest;
}

bool ResidualsAreClear(const Square<f64>& r, const Problem& problem) {
  for (int s = problem.predictors; s < problem.Width(); ++s) {
    f64 residual = 0;
    f64 total = 0;
    for (int i = problem.intercept ? 1 : 0; i <= s; ++i) {
      total += r(i, s) * r(i, s);
      if (i >= problem.predictors) residual += r(i, s) * r(i, s);
    }
    if (!(residual > LeastResidual * LeastResidual * total)) return false;
  }
  return true;
}

// The factor in doubles, where doubles suffice.
std::optional<Square<f64>> PlainTriangle(const Problem& problem) {
  const auto shifts = Shifts(problem);
  Square<f64> triangle(problem.Width());
  PlainBlock block(problem.Width());
  std::vector<std::size_t> rows;
  for (std::size_t next = 0; next < problem.rows;) {
    TakeRows(problem, next, PlainBlock::Rows, rows);
    if (rows.empty()) break;
    if (!Fill(problem, rows, shifts, block)) return std::nullopt;
    ReduceInto(triangle, block, static_cast<int>(rows.size()));
  }
  if (!(LargestInflation(triangle, problem.predictors) <= MostInflation) || !ResidualsAreClear(triangle, problem))
    return std::nullopt;
  for (int j = 1; j < problem.Width(); ++j) triangle(0, j) += triangle(0, 0) * shifts[static_cast<std::size_t>(j)];
  return triangle;
}

// --- from the triangle to the fit ---

// Clears column j below row `top` by a reflection of the rows top .. j.
template <typename Real>
void ClearBelow(Square<Real>& matrix, int top, int j) {
  const Real below = SumOfSquares(matrix, j, top + 1, j + 1);
  if (!(static_cast<f64>(below) > 0)) return;
  const Real old = matrix(top, j);
  const Real length = Root(old * old + below);
  const Real norm = static_cast<f64>(old) < 0 ? Real(0) - length : length;
  const Real head = old + norm;  // the vector is (old + norm, below)
  const Real scale = Real(1) / (head * norm);
  for (int k = j + 1; k < matrix.size(); ++k) {
    Real factor = head * matrix(top, k);
    for (int i = top + 1; i <= j; ++i) factor += matrix(i, j) * matrix(i, k);
    factor *= scale;
    matrix(top, k) -= head * factor;
    for (int i = top + 1; i <= j; ++i) matrix(i, k) -= matrix(i, j) * factor;
  }
  matrix(top, j) = Real(0) - norm;
  for (int i = top + 1; i <= j; ++i) matrix(i, j) = 0;
}

// Makes the diagonal of a row positive.
template <typename Real>
void TurnRow(Square<Real>& matrix, int row, int column) {
  if (!(static_cast<f64>(matrix(row, column)) < 0)) return;
  for (int k = column; k < matrix.size(); ++k) matrix(row, k) = Real(0) - matrix(row, k);
}

// Sets aside the predictors that lie in the span of those before them and brings the others to a triangle.
template <typename Real>
Factor<Real> WithoutAliases(Square<Real> triangle, const Problem& problem) {
  Factor<Real> factor{std::move(triangle), std::vector<int>(static_cast<std::size_t>(problem.predictors), -1)};
  auto& r = factor.triangle;
  for (int j = 0; j < problem.predictors; ++j) {
    const f64 rest = std::sqrt(static_cast<f64>(SumOfSquares(r, j, factor.rank, j + 1)));
    const f64 whole = std::sqrt(static_cast<f64>(SumOfSquares(r, j, 0, j + 1)));
    if (rest <= problem.tolerance * whole) {
      // What is left is rounding.
      for (int i = factor.rank; i <= j; ++i) r(i, j) = 0;
      continue;
    }
    ClearBelow(r, factor.rank, j);
    TurnRow(r, factor.rank, j);
    factor.rowOf[static_cast<std::size_t>(j)] = factor.rank++;
  }
  return factor;
}

f64 High(f64 x) { return x; }
f64 High(DoubleDouble x) { return x.high; }
f64 Low(f64) { return 0; }
f64 Low(DoubleDouble x) { return x.low; }

// R in the order of the predictors with its low-order words. Each row is changed by the rounding of its diagonal, of
// which the inverse of R'R feels no more than that rounding.
template <typename Real>
void StoreR(const Factor<Real>& factor, const Problem& problem, GlsqrFit& fit) {
  const auto at = [&](int i, int j) -> f64& {
    return fit.r[static_cast<std::size_t>(j) * static_cast<std::size_t>(fit.rLeading) + static_cast<std::size_t>(i)];
  };
  for (int i = 0; i < problem.predictors; ++i) {
    const int row = factor.rowOf[static_cast<std::size_t>(i)];
    at(i, i) = 0;
    for (int j = i + 1; j < problem.predictors; ++j) at(i, j) = at(j, i) = 0;
    if (row < 0) continue;
    const Real diagonal = factor.triangle(row, i);
    const Real rounding = Real(High(diagonal)) / diagonal;
    for (int j = i; j < problem.predictors; ++j) {
      const f64 unscale = 1 / problem.columns[static_cast<std::size_t>(j)].scale;
      const Real element = i == j ? Real(High(diagonal)) : factor.triangle(row, j) * rounding;
      at(i, j) = High(element) * unscale / problem.weightScale;
      if (i != j) at(j, i) = Low(element) * unscale / problem.weightScale;
    }
  }
}

template <typename Real>
void StoreSums(const Factor<Real>& factor, const Problem& problem, int s, GlsqrFit& fit) {
  const int column = problem.predictors + s;
  const f64 unscale = 1 / problem.columns[static_cast<std::size_t>(column)].scale / problem.weightScale;
  const int first = problem.intercept ? 1 : 0;
  const Real regression = SumOfSquares(factor.triangle, column, std::min(first, factor.rank), factor.rank);
  const Real residual = SumOfSquares(factor.triangle, column, factor.rank, column + 1);
  fit.regressionSS[s] = High(regression) * unscale * unscale;
  fit.residualSS[s] = High(residual) * unscale * unscale;
  fit.totalSS[s] = High(regression + residual) * unscale * unscale;
}

template <typename Real>
void StoreCoefficients(const Factor<Real>& factor, const Problem& problem, int s, GlsqrFit& fit) {
  const int column = problem.predictors + s;
  const f64 unscale = 1 / problem.columns[static_cast<std::size_t>(column)].scale;
  const std::size_t offset = static_cast<std::size_t>(s) * static_cast<std::size_t>(problem.predictors);
  std::vector<Real> solution(static_cast<std::size_t>(problem.predictors), Real(0));
  for (int j = problem.predictors - 1; j >= 0; --j) {
    const int row = factor.rowOf[static_cast<std::size_t>(j)];
    if (row >= 0) {
      Real sum = factor.triangle(row, column);
      for (int k = j + 1; k < problem.predictors; ++k)
        sum -= factor.triangle(row, k) * solution[static_cast<std::size_t>(k)];
      solution[static_cast<std::size_t>(j)] = sum / factor.triangle(row, j);
    }
    const std::size_t place = offset + static_cast<std::size_t>(j);
    fit.coefficients[place] =
        High(solution[static_cast<std::size_t>(j)]) * problem.columns[static_cast<std::size_t>(j)].scale * unscale;
    if (fit.effects != nullptr)
      fit.effects[place] = row < 0 ? 0 : High(factor.triangle(row, column)) * unscale / problem.weightScale;
  }
}

bool AllFinite(const f64* values, std::size_t count) {
  return std::all_of(values, values + count, [](f64 x) { return std::isfinite(x); });
}

bool FitIsFinite(const Problem& problem, const GlsqrFit& fit) {
  const auto predictors = static_cast<std::size_t>(problem.predictors);
  const auto responses = static_cast<std::size_t>(problem.responses);
  bool finite = AllFinite(fit.coefficients, predictors * responses) && AllFinite(fit.totalSS, responses);
  for (std::size_t j = 0; j < predictors; ++j)
    finite = finite && AllFinite(fit.r + j * static_cast<std::size_t>(fit.rLeading), predictors);
  return finite && (fit.effects == nullptr || AllFinite(fit.effects, predictors * responses));
}

template <typename Real>
Status Store(const Factor<Real>& factor, const Problem& problem, GlsqrFit& fit) {
  StoreR(factor, problem, fit);
  for (int s = 0; s < problem.responses; ++s) {
    StoreSums(factor, problem, s, fit);
    StoreCoefficients(factor, problem, s, fit);
  }
  int next = 0;
  int aliased = factor.rank;
  for (int j = 0; j < problem.predictors; ++j)
    fit.pivot[factor.rowOf[static_cast<std::size_t>(j)] >= 0 ? next++ : aliased++] = j;
  fit.rank = factor.rank;
  fit.rowsUsed = problem.rowsUsed;
  return FitIsFinite(problem, fit) ? Done : OutOfRange;
}

bool IsSmall(const Problem& problem) {
  const f64 width = problem.Width();
  return static_cast<f64>(problem.rowsUsed) * width * width <= SmallProblem;
}

bool HasLowWords(const Problem& problem) {
  return std::any_of(problem.columns.begin(), problem.columns.end(), [](const Column& c) { return c.low != nullptr; });
}

Status FitAll(Problem problem, GlsqrFit& fit) {
  if (const Status status = WeighRows(problem); status != Done) return status;
  if (!IsSmall(problem) && !HasLowWords(problem)) {
    if (auto triangle = PlainTriangle(problem)) {
      fit.doubled = 0;
      return Store(WithoutAliases(std::move(*triangle), problem), problem, fit);
    }
  }
  if (!ScaleColumns(problem)) return NotFinite;
  fit.doubled = 1;
  return Store(WithoutAliases(DoubledTriangle(problem), problem), problem, fit);
}

}  // namespace

void PowerColumns(const f64* x, i32 rows, i32 degree, f64* high, f64* low) {
  constexpr f64 Splittable = 1e290;
  for (i32 i = 0; i < rows; ++i) {
    DoubleDouble power = 1;
    for (i32 k = 0; k < degree; ++k) {
      const std::size_t place =
          static_cast<std::size_t>(k) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(i);
      const f64 plain = power.high * x[i];
      power = std::fabs(plain) < Splittable && std::fabs(x[i]) < Splittable ? power * DoubleDouble(x[i]) : plain;
      high[place] = power.high;
      low[place] = power.low;
    }
  }
}

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void GLSQR(const GlsqrData& data, const f64& tolerance, GlsqrFit& fit, i32& status) {
  status = BadSizes;
  if (!SizesAreLegal(data, tolerance, fit)) return;
  try {
    status = FitAll(Gathered(data, tolerance), fit);
  } catch (const std::bad_alloc&) {
    status = NoMemory;
  } catch (const std::length_error&) {
    status = NoMemory;
  }
}
