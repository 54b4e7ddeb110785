// Many calls of one kernel function with arguments drawn beforehand. bench/peers holds the same for other programs: the
// two must draw as many arguments from the same ranges.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::bench {

struct Arguments {
  f64 a;
  f64 b;
  f64 c;
};

// Filled by `draw`, which is handed a uniform generator on (0, 1).
template <typename Draw>
std::vector<Arguments> Drawn(Draw draw, int calls = 1'000'000) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<f64> uniform(1e-12, 1);
  std::vector<Arguments> arguments(calls);
  for (auto& x : arguments) x = draw([&] { return uniform(random); });
  return arguments;
}

template <typename Call>
void Run(benchmark::State& state, const std::vector<Arguments>& arguments, Call call) {
  for (auto _ : state) {
    f64 sum = 0;
    for (const auto& x : arguments) sum += call(x);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(arguments.size()));
}

inline std::vector<f64> Normals(std::size_t count, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<f64> normal;
  std::vector<f64> values(count);
  for (auto& x : values) x = normal(random);
  return values;
}

inline f64 LogBetween(f64 low, f64 high, f64 u) { return low * std::pow(high / low, u); }

}  // namespace tellurix::bench
