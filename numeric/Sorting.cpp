#include "numeric/Sorting.h"

#include <cmath>
#include <numeric>

#include "kernel/Sort.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

// The place of a value in the order of the system, where the missing value follows all others.
std::uint64_t PlaceOf(double value, SortDirection direction) {
  constexpr auto Last = ~std::uint64_t{0};
  if (value == MissingValue || std::isnan(value)) return Last;
  const auto key = kernel::SortKey(value);
  return direction == SortDirection::Rising ? key : Last - 1 - key;
}

}  // namespace

std::vector<std::uint32_t> SortedOrder(std::span<const double> values, SortDirection direction) {
  std::vector<std::uint64_t> keys(values.size());
  std::transform(values.begin(), values.end(), keys.begin(), [&](double x) { return PlaceOf(x, direction); });
  return kernel::StableOrder(keys);
}

std::vector<std::uint32_t> SortedOrder(std::span<const std::span<const double>> columns, SortDirection direction) {
  std::vector<std::uint32_t> order(columns.empty() ? 0 : columns.front().size());
  std::iota(order.begin(), order.end(), 0u);
  std::vector<std::uint64_t> keys(order.size());
  // The least column first: each stable sort keeps what the earlier ones did among its equals.
  for (std::size_t c = columns.size(); c-- > 0;) {
    for (std::size_t i = 0; i < order.size(); ++i) keys[i] = PlaceOf(columns[c][order[i]], direction);
    std::vector<std::uint32_t> sorted = kernel::StableOrder(keys);
    for (auto& position : sorted) position = order[position];
    order = std::move(sorted);
  }
  return order;
}

void DxSortArray(std::span<double> values, SortDirection direction) {
  const auto order = SortedOrder(values, direction);
  const std::vector<double> before(values.begin(), values.end());
  for (std::size_t i = 0; i < order.size(); ++i) values[i] = before[order[i]];
}

}  // namespace tellurix
