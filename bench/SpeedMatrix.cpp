// Ranks, sorts and fits at the sizes that matter; bench/peers/Matrix.R times the same work elsewhere.
#include <benchmark/benchmark.h>

#include <cmath>
#include <span>
#include <vector>

#include "bench/Calls.h"
#include "kernel/NormalScores.h"
#include "numeric/Sorting.h"

namespace {

constexpr i32 Million = 1'000'000;

using tellurix::bench::Normals;

void RankMillion(benchmark::State& state) {
  const auto data = Normals(Million, 1);
  std::vector<f64> ranks(Million);
  f64 correction = 0;
  for (auto _ : state) {
    RANK(data.data(), ranks.data(), Million, 1, correction);
    benchmark::DoNotOptimize(ranks.data());
  }
}
BENCHMARK(RankMillion)->Unit(benchmark::kMillisecond);

void SortMillion(benchmark::State& state) {
  const auto data = Normals(Million, 1);
  for (auto _ : state) {
    auto values = data;
    tellurix::DxSortArray(values);
    benchmark::DoNotOptimize(values.data());
  }
}
BENCHMARK(SortMillion)->Unit(benchmark::kMillisecond);

struct Record {
  f64 time;
  f64 weight;
  i32 event;
};

void SortMillionRecords(benchmark::State& state) {
  const auto data = Normals(Million, 1);
  std::vector<Record> records;
  for (const f64 x : data) records.push_back({x, 1, 0});
  for (auto _ : state) {
    auto values = records;
    tellurix::DxSortArrayMulti(values, &Record::time);
    benchmark::DoNotOptimize(values.data());
  }
}
BENCHMARK(SortMillionRecords)->Unit(benchmark::kMillisecond);

// An intercept and 20 columns; with `nearly` the last is the first but for a part in 10^6.
void FitMillion(benchmark::State& state, bool nearly) {
  constexpr i32 Columns = 20;
  auto design = Normals(std::size_t{Million} * Columns, 2);
  const auto response = Normals(Million, 3);
  if (nearly) {
    for (std::size_t i = 0; i < Million; ++i)
      design[std::size_t{Million} * (Columns - 1) + i] = design[i] + 1e-6 * response[i] * response[i];
  }
  constexpr i32 P = Columns + 1;
  std::vector<f64> r(P * P);
  std::vector<f64> coefficients(P);
  std::vector<i32> pivot(P);
  f64 totalSS = 0;
  f64 regressionSS = 0;
  f64 residualSS = 0;
  const GlsqrData data{.rows = Million,
                       .columns = Columns,
                       .responses = 1,
                       .intercept = 1,
                       .design = design.data(),
                       .designLeading = Million,
                       .designLow = nullptr,
                       .response = response.data(),
                       .responseLeading = Million,
                       .weights = nullptr};
  GlsqrFit fit{.r = r.data(),
               .rLeading = P,
               .coefficients = coefficients.data(),
               .effects = nullptr,
               .pivot = pivot.data(),
               .totalSS = &totalSS,
               .regressionSS = &regressionSS,
               .residualSS = &residualSS};
  i32 status = 0;
  for (auto _ : state) {
    GLSQR(data, 0, fit, status);
    benchmark::DoNotOptimize(fit);
  }
  if (status != 0 || fit.doubled != (nearly ? 1 : 0)) state.SkipWithError("not the fit that was meant");
}
BENCHMARK_CAPTURE(FitMillion, WellConditioned, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FitMillion, NearlyCollinear, true)->Unit(benchmark::kMillisecond);

void NormalScoresOfTenThousand(benchmark::State& state) {
  std::vector<f64> scores(10'000);
  for (auto _ : state) {
    tellurix::kernel::ExpectedNormalScores(10'000, scores.data());
    benchmark::DoNotOptimize(scores.data());
  }
}
BENCHMARK(NormalScoresOfTenThousand)->Unit(benchmark::kMillisecond);

// All averages of a sample of 1000, in order.
void WalkHalfAMillionAverages(benchmark::State& state) {
  constexpr i32 Count = 1000;
  auto data = Normals(Count, 4);
  tellurix::DxSortArray(data);
  std::vector<i32> next(Count);
  std::vector<i32> heap(Count);
  for (auto _ : state) {
    PairWalk walk{0, 0, 0, next.data(), heap.data()};
    f64 average = 0;
    while (walk.status == 0) PAIRNEXT(walk, average, data.data(), Count);
    benchmark::DoNotOptimize(walk);
  }
}
BENCHMARK(WalkHalfAMillionAverages)->Unit(benchmark::kMillisecond);

// All differences of two samples of 700, in order.
void WalkHalfAMillionDifferences(benchmark::State& state) {
  constexpr i32 Count = 700;
  auto a = Normals(Count, 4);
  auto b = Normals(Count, 5);
  tellurix::DxSortArray(a);
  tellurix::DxSortArray(b);
  std::vector<i32> next(Count);
  std::vector<i32> heap(Count);
  for (auto _ : state) {
    PairWalk walk{0, 0, 0, next.data(), heap.data()};
    f64 difference = 0;
    while (walk.status == 0) FINDNEXT(walk, difference, a.data(), b.data(), Count, Count);
    benchmark::DoNotOptimize(walk);
  }
}
BENCHMARK(WalkHalfAMillionDifferences)->Unit(benchmark::kMillisecond);

// A 5 by 5 table of 126.
void ExactTestOfFiveByFive(benchmark::State& state) {
  const std::vector<f64> table{7, 4, 5, 3, 6, 4, 9, 3, 5, 4, 6, 3, 8, 4, 5, 5, 5, 3, 9, 4, 4, 5, 6, 4, 5};
  for (auto _ : state) {
    f64 pTable = 0;
    f64 p = 0;
    i32 status = 0;
    RCNWA(table.data(), 5, 5, {}, pTable, p, status);
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(ExactTestOfFiveByFive)->Unit(benchmark::kMillisecond);

}  // namespace
