// The stable radix sort.
#include "kernel/Sort.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace tellurix::kernel {

namespace {

constexpr int DigitBits = 11;
constexpr int Digits = 6;  // 6 * 11 = 66 bits
constexpr std::size_t Buckets = std::size_t{1} << DigitBits;

// Below this many keys the counts of the radix sort cost more than comparisons.
constexpr std::size_t FewKeys = 256;

struct Item {
  std::uint64_t key;
  std::uint32_t position;
};

std::size_t DigitOf(std::uint64_t key, int digit) { return (key >> (digit * DigitBits)) & (Buckets - 1); }

using Counts = std::array<std::array<std::uint32_t, Buckets>, Digits>;

// How often each digit takes each value, for all digits in one reading.
void CountDigits(std::span<const std::uint64_t> keys, Counts& counts) {
  for (const std::uint64_t key : keys) {
    for (int digit = 0; digit < Digits; ++digit) ++counts[digit][DigitOf(key, digit)];
  }
}

std::uint64_t KeyOf(const Item& item) { return item.key; }
std::uint64_t KeyOf(std::uint64_t key) { return key; }

// Distributes the items by one digit, in their order.
template <typename Record>
void Distribute(const std::vector<Record>& from, int digit, std::array<std::uint32_t, Buckets>& counts,
                std::vector<Record>& to) {
  std::uint32_t start = 0;
  for (auto& count : counts) start += std::exchange(count, start);
  for (const Record& item : from) to[counts[DigitOf(KeyOf(item), digit)]++] = item;
}

// Sorts the items, whose keys these are.
template <typename Record>
void RadixSort(std::vector<Record>& items, std::span<const std::uint64_t> keys) {
  std::vector<Counts> counts(1);  // on the heap: 96 kilobytes
  CountDigits(keys, counts[0]);
  const std::uint64_t firstKey = keys[0];
  std::vector<Record> other(items.size());
  for (int digit = 0; digit < Digits; ++digit) {
    const bool allAlike = counts[0][digit][DigitOf(firstKey, digit)] == items.size();
    if (allAlike) continue;
    Distribute(items, digit, counts[0][digit], other);
    items.swap(other);
  }
}

}  // namespace

std::vector<std::uint32_t> StableOrder(std::span<const std::uint64_t> keys) {
  std::vector<std::uint32_t> order(keys.size());
  if (keys.size() < FewKeys) {
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    return order;
  }
  std::vector<Item> items(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) items[i] = {keys[i], static_cast<std::uint32_t>(i)};
  RadixSort(items, keys);
  std::transform(items.begin(), items.end(), order.begin(), [](const Item& item) { return item.position; });
  return order;
}

std::vector<std::uint32_t> StableOrder(std::span<const f64> values) {
  std::vector<std::uint64_t> keys(values.size());
  std::transform(values.begin(), values.end(), keys.begin(), SortKey);
  return StableOrder(keys);
}

void SortKeys(std::vector<std::uint64_t>& keys) {
  if (keys.size() < FewKeys) {
    std::ranges::sort(keys);
  } else {
    RadixSort(keys, keys);
  }
}

}  // namespace tellurix::kernel
