// Prints kernel/SpearmanCounts.cpp, the exact null distribution of Spearman's rho: spearman_counts > FILE. It takes
// some minutes and 1 GB.
//
// Counts the permutations p of 1..n by the sum of i p(i). The first half of the positions is filled in every way, set
// of values by set of values; the other half is its mirror image (i and p(i) taken from n + 1), so that both halves
// come from one table, and the product of their generating functions, summed over the sets, is the distribution.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <unordered_map>
#include <vector>

namespace {

constexpr int Most = 22;  // the largest n whose counts all fit into 64 bits

// The ways to give positions 1..k the values of a set of k values, by the sum of i p(i) less `first`.
struct Ways {
  int first = 0;
  std::vector<std::uint32_t> counts;
};

using Layer = std::unordered_map<std::uint32_t, Ways>;  // by the set: bit v - 1 for the value v

Layer NextLayer(const Layer& layer, int n, int position) {
  Layer next;
  for (const auto& [set, ways] : layer) {
    for (int value = 1; value <= n; ++value) {
      const std::uint32_t bit = 1u << (value - 1);
      if (set & bit) continue;
      Ways& into = next[set | bit];
      const int first = ways.first + position * value;
      const int end = first + static_cast<int>(ways.counts.size());
      if (into.counts.empty()) into.first = first;
      if (first < into.first) {
        into.counts.insert(into.counts.begin(), static_cast<std::size_t>(into.first - first), 0);
        into.first = first;
      }
      if (end > into.first + static_cast<int>(into.counts.size()))
        into.counts.resize(static_cast<std::size_t>(end - into.first));
      for (std::size_t i = 0; i < ways.counts.size(); ++i)
        into.counts[static_cast<std::size_t>(first - into.first) + i] += ways.counts[i];
    }
  }
  return next;
}

std::uint32_t MirrorOfComplement(std::uint32_t set, int n) {
  std::uint32_t mirror = 0;
  for (int v = 0; v < n; ++v) {
    if (!(set & (1u << v))) mirror |= 1u << (n - 1 - v);
  }
  return mirror;
}

// Entry t counts the permutations whose squared rank differences add up to 2 t.
std::vector<std::uint64_t> Distribution(int n) {
  const int half = n / 2;
  Layer lower{{0, {0, {1}}}};
  for (int position = 1; position <= half; ++position) lower = NextLayer(lower, n, position);
  Layer longer;
  if (n - half > half) longer = NextLayer(lower, n, n - half);
  const Layer& upper = n - half > half ? longer : lower;

  const int squares = n * (n + 1) * (2 * n + 1) / 6;
  const int rest = n - half;
  std::vector<std::uint64_t> counts(static_cast<std::size_t>((n * n * n - n) / 6 + 1));
  std::vector<std::uint64_t> product;
  for (const auto& [set, ways] : lower) {
    const std::uint32_t mirrored = MirrorOfComplement(set, n);
    const Ways& others = upper.at(mirrored);
    product.assign(ways.counts.size() + others.counts.size() - 1, 0);
    for (std::size_t i = 0; i < ways.counts.size(); ++i) {
      const std::uint64_t factor = ways.counts[i];
      if (factor == 0) continue;
      for (std::size_t j = 0; j < others.counts.size(); ++j) product[i + j] += factor * others.counts[j];
    }
    int values = 0;
    for (int v = 1; v <= n; ++v) {
      if (mirrored & (1u << (v - 1))) values += v;
    }
    const int shift = (n + 1) * (n + 1) * rest - (n + 1) * (rest * (rest + 1) / 2 + values);
    for (std::size_t i = 0; i < product.size(); ++i) {
      if (product[i] == 0) continue;
      counts[static_cast<std::size_t>(squares - shift - ways.first - others.first - static_cast<int>(i))] += product[i];
    }
  }
  return counts;
}

}  // namespace

int main() {
  std::printf(
      "// Written by bench/SpearmanCounts.cpp.\n"
      "#include \"kernel/SpearmanCounts.h\"\n\n"
      "namespace tellurix::kernel {\n\n"
      "// clang-format off\n"
      "const std::uint64_t SpearmanCounts[] = {\n");
  for (int n = 2; n <= Most; ++n) {
    const std::vector<std::uint64_t> counts = Distribution(n);
    std::printf("    // n = %d\n", n);
    int column = 0;
    for (std::size_t t = 0; t <= (counts.size() - 1) / 2; ++t) {
      const int width = std::snprintf(nullptr, 0, " %lluu,", static_cast<unsigned long long>(counts[t]));
      if (column + width > 116 || column == 0) {
        std::printf(column == 0 ? "   " : "\n   ");
        column = 3;
      }
      std::printf(" %lluu,", static_cast<unsigned long long>(counts[t]));
      column += width;
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  std::printf("};\n// clang-format on\n\n}  // namespace tellurix::kernel\n");
}
