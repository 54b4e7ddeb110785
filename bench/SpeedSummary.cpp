// Summaries and frequencies of a million; bench/peers/Summary.R times the same work elsewhere.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "bench/Played.h"
#include "numeric/Summary.h"

namespace tellurix {
namespace {

constexpr int Million = 1'000'000;

// A sequence that R can make too.
std::vector<double> Values() {
  std::vector<double> x(Million);
  for (int i = 0; i < Million; ++i)
    x[static_cast<std::size_t>(i)] = std::exp(std::fmod((i + 1) * 0.6180339887498949, 1.0));
  return x;
}

void MillionFullSummary(benchmark::State& state) {
  const auto x = Values();
  Summary summary;
  for (auto _ : state) {
    summary.FullSummaryFromX(x, "x", 0.95, 5, 95);
    benchmark::DoNotOptimize(summary.median);
  }
}
BENCHMARK(MillionFullSummary)->Unit(benchmark::kMillisecond);

// The whole command: selection, table, report.
void MillionTextFrequencies(benchmark::State& state) {
  bench::Played played;
  Workbook& workbook = played.workbook;
  workbook.TextRC(1, 1, "Code");
  for (int i = 0; i < Million; ++i) workbook.TextRC(i + 2, 1, "value " + std::to_string(i * 7919LL % 1000));
  played.Run(state, "run M_Frequencies\nselect A1:A1000001\nexpect freq.n 1000000\n", [] {});
}
BENCHMARK(MillionTextFrequencies)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
