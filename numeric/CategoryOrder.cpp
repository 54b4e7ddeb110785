#include "numeric/CategoryOrder.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

#include "numeric/Text.h"

namespace tellurix {

std::optional<double> CategoryNumber(std::string_view name, const Regional& regional) {
  const auto number = ReadNumber(name, Regional());
  return number ? number : ReadNumber(name, regional);
}

std::vector<std::size_t> CategoryOrder(std::span<const std::string> names, const Regional& regional) {
  struct Key {
    double number;  // infinite for what is none
    std::string text;
  };
  std::vector<Key> keys;
  keys.reserve(names.size());
  for (const std::string& name : names) {
    keys.push_back({CategoryNumber(name, regional).value_or(std::numeric_limits<double>::infinity()), FoldCase(name)});
  }
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    return std::tie(keys[a].number, keys[a].text) < std::tie(keys[b].number, keys[b].text);
  });
  return order;
}

}  // namespace tellurix
