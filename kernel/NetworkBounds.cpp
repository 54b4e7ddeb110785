#include "kernel/NetworkBounds.h"

#include <algorithm>
#include <cmath>

#include "kernel/Tails.h"

namespace tellurix::kernel {

namespace {

// The count at which ln x! - price x is least.
i32 BestCount(f64 price, i32 most) {
  const f64 count = std::floor(std::exp(price));
  return count < most ? static_cast<i32>(count) : most;
}

// The prices of one margin's lines, the other's given, at which the counts of each line sum to about its total: a few
// steps of the secant between logarithms.
void AdjustPrices(std::span<const i32> totals, std::vector<f64>& prices, std::span<const i32> others,
                  const std::vector<f64>& otherPrices) {
  for (std::size_t i = 0; i < totals.size(); ++i) {
    for (int round = 0; round < 3; ++round) {
      f64 sum = 0;
      // Half a count more than the whole one: what rounding down takes away on the average.
      for (std::size_t j = 0; j < others.size(); ++j) sum += std::max(std::exp(prices[i] + otherPrices[j]) - 0.5, 0.0);
      if (!(sum > 0)) {
        prices[i] += 0.5;
        continue;
      }
      const f64 change = std::log((totals[i] + 0.1) / (sum + 0.1));
      prices[i] += change;
      if (std::fabs(change) < 0.01) break;
    }
  }
}

// The Lagrangian bound: with a price on every row and column, each cell takes its best count by itself.
f64 PricedLength(std::span<const i32> rows, const std::vector<f64>& rowPrices, std::span<const i32> columns,
                 const std::vector<f64>& columnPrices, const LogFactorials& logFactorials) {
  f64 sum = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) sum += rowPrices[i] * rows[i];
  for (std::size_t j = 0; j < columns.size(); ++j) sum += columnPrices[j] * columns[j];
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const f64 price = rowPrices[i] + columnPrices[j];
      const i32 count = BestCount(price, std::min(rows[i], columns[j]));
      sum += logFactorials[count] - price * count;
    }
  }
  return sum;
}

f64 LeastLength(std::span<const i32> rows, std::span<const i32> columns, const LogFactorials& logFactorials) {
  f64 total = 0;
  for (const i32 row : rows) total += row;
  std::vector<f64> rowPrices;
  std::vector<f64> columnPrices;
  for (const i32 row : rows) rowPrices.push_back(std::log(row + 0.5));
  for (const i32 column : columns) columnPrices.push_back(std::log((column + 0.5) / total));
  f64 best = PricedLength(rows, rowPrices, columns, columnPrices, logFactorials);
  for (int round = 0; round < 3; ++round) {
    AdjustPrices(rows, rowPrices, columns, columnPrices);
    AdjustPrices(columns, columnPrices, rows, rowPrices);
    best = std::max(best, PricedLength(rows, rowPrices, columns, columnPrices, logFactorials));
  }
  return best;
}

// Every line by itself, filled from the widest cell on: of all ways to fill it the longest.
f64 FilledLength(std::span<const i32> lines, std::span<const i32> caps, const LogFactorials& logFactorials) {
  std::vector<i32> widest(caps.begin(), caps.end());
  std::sort(widest.rbegin(), widest.rend());
  f64 sum = 0;
  for (i32 left : lines) {
    for (const i32 cap : widest) {
      const i32 count = std::min(left, cap);
      sum += logFactorials[count];
      left -= count;
    }
  }
  return sum;
}

}  // namespace

LogFactorials::LogFactorials(i32 most) {
  for (i32 k = 0; k <= most; ++k) values_.push_back(LogGammaOnePlus(k));
}

Lengths BoundLengths(std::span<const i32> rows, std::span<const i32> columns, const LogFactorials& logFactorials) {
  std::vector<i32> filled;
  for (const i32 row : rows) {
    if (row > 0) filled.push_back(row);
  }
  if (filled.empty()) return {0, 0};
  return {LeastLength(filled, columns, logFactorials),
          std::min(FilledLength(filled, columns, logFactorials), FilledLength(columns, filled, logFactorials))};
}

}  // namespace tellurix::kernel
