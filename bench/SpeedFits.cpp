// Matrices, matched sets, strata and curves at the sizes that commands bring.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/Calls.h"

namespace {

using tellurix::bench::Normals;

// A correlation matrix of p variables, p by p, each pair correlated by a half.
std::vector<f64> Correlations(i32 p) {
  std::vector<f64> a(static_cast<std::size_t>(p * p), 0.5);
  for (i32 j = 0; j < p; ++j) a[static_cast<std::size_t>(j * p + j)] = 1;
  return a;
}

// --- matrices ---

void RcovarbOf(benchmark::State& state) {
  const auto p = static_cast<i32>(state.range(0));
  // Any triangle with zeros below its diagonal.
  std::vector<f64> r = Correlations(p);
  for (i32 j = 0; j < p; ++j) {
    for (i32 i = j + 1; i < p; ++i) r[static_cast<std::size_t>(j * p + i)] = 0;
  }
  std::vector<f64> covariance(r.size());
  i32 status = 0;
  for (auto _ : state) {
    RCOVARB(p, r.data(), p, 2.0, covariance.data(), p, status);
    benchmark::DoNotOptimize(covariance.data());
  }
  if (status != 0) state.SkipWithError("no covariance");
}
BENCHMARK(RcovarbOf)->Arg(21)->Arg(200)->Unit(benchmark::kMicrosecond);

void MxinvOf(benchmark::State& state) {
  const auto p = static_cast<i32>(state.range(0));
  const auto a = Correlations(p);
  std::vector<f64> inverse(a.size());
  f64 logDeterminant = 0;
  i32 failed = 0;
  i32 status = 0;
  for (auto _ : state) {
    MXINV(p, a.data(), p, inverse.data(), p, logDeterminant, failed, status);
    benchmark::DoNotOptimize(inverse.data());
  }
  if (status != 0) state.SkipWithError("no inverse");
}
BENCHMARK(MxinvOf)->Arg(20)->Arg(200)->Unit(benchmark::kMicrosecond);

// Rows by columns.
void SvdOf(benchmark::State& state) {
  const auto m = static_cast<i32>(state.range(0));
  const auto n = static_cast<i32>(state.range(1));
  const auto a = Normals(static_cast<std::size_t>(m * n), 1);
  std::vector<f64> s(static_cast<std::size_t>(n));
  std::vector<f64> u(a.size());
  std::vector<f64> v(static_cast<std::size_t>(n * n));
  i32 status = 0;
  for (auto _ : state) {
    SVD(m, n, a.data(), m, s.data(), u.data(), v.data(), status);
    benchmark::DoNotOptimize(s.data());
  }
  if (status != 0) state.SkipWithError("no decomposition");
}
BENCHMARK(SvdOf)->Args({1000, 20})->Args({200, 200})->Unit(benchmark::kMillisecond);

void SortMillionRiskSets(benchmark::State& state) {
  constexpr i32 Million = 1'000'000;
  const auto time = Normals(Million, 2);
  std::vector<i32> stratum(Million);
  for (i32 i = 0; i < Million; ++i) stratum[static_cast<std::size_t>(i)] = i % 7;
  std::vector<i32> order(Million);
  std::vector<i32> first(Million + 1);
  i32 strata = 0;
  i32 status = 0;
  for (auto _ : state) {
    MXSRT(Million, time.data(), stratum.data(), order.data(), strata, first.data(), status);
    benchmark::DoNotOptimize(order.data());
  }
}
BENCHMARK(SortMillionRiskSets)->Unit(benchmark::kMillisecond);

// --- matched sets and strata ---

// Sets of `cases` cases and three controls each, 4000 rows and five covariates in all.
void MatchedSets(benchmark::State& state) {
  const auto cases = static_cast<i32>(state.range(0));
  constexpr i32 Rows = 4000;
  constexpr i32 Columns = 5;
  const i32 size = cases + 3;
  const auto covariates = Normals(std::size_t{Rows} * Columns, 3);
  std::vector<i32> stratum(Rows);
  std::vector<i32> isCase(Rows);
  for (i32 i = 0; i < Rows; ++i) {
    stratum[static_cast<std::size_t>(i)] = i / size;
    isCase[static_cast<std::size_t>(i)] = i % size < cases;
  }
  const ClmainData data{Rows, Columns, covariates.data(), Rows, stratum.data(), isCase.data()};
  std::vector<f64> b(Columns);
  std::vector<f64> score(Columns);
  std::vector<f64> information(Columns * Columns);
  i32 status = 0;
  for (auto _ : state) {
    b.assign(Columns, 0.0);
    ClmainFit fit{b.data(), score.data(), information.data(), nullptr, 0, 0, 0};
    CLMAIN(data, 1e-9, 30, fit, status);
    benchmark::DoNotOptimize(fit);
  }
  if (status != 0) state.SkipWithError("no fit");
}
BENCHMARK(MatchedSets)->Arg(1)->Arg(5)->Unit(benchmark::kMillisecond);

// 100 strata of 5 by 5 tables.
void HundredStrataOfFiveByFive(benchmark::State& state) {
  std::vector<f64> tables(100 * 25);
  for (std::size_t i = 0; i < tables.size(); ++i) tables[i] = static_cast<f64>(1 + i * 7 % 11);
  f64 correlation = 0;
  f64 meanScore = 0;
  f64 association = 0;
  i32 df[3];
  i32 status = 0;
  for (auto _ : state) {
    GENCMH(tables.data(), 5, 5, 100, nullptr, nullptr, correlation, meanScore, association, df, status);
    benchmark::DoNotOptimize(association);
  }
  if (status != 0) state.SkipWithError("no statistics");
}
BENCHMARK(HundredStrataOfFiveByFive)->Unit(benchmark::kMicrosecond);

// --- curves ---

void MillionPolyfunc(benchmark::State& state) {
  const std::vector<f64> c{-1, 7, -21, 35, -35, 21, -7, 1};
  for (auto _ : state) {
    f64 sum = 0;
    for (int i = 0; i < 1'000'000; ++i) sum += POLYFUNC(i * 1e-6, c.data(), 7);
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(MillionPolyfunc)->Unit(benchmark::kMillisecond);

// Through five points, as Romberg's integration does.
void HundredThousandPolint(benchmark::State& state) {
  const std::vector<f64> xa{3, -1, 0.5, 2, 7};
  const std::vector<f64> ya{1, 4, 1, 5, 9};
  f64 y = 0;
  f64 dy = 0;
  i32 status = 0;
  for (auto _ : state) {
    f64 sum = 0;
    for (int i = 0; i < 100'000; ++i) {
      POLINT(xa.data(), ya.data(), 5, i * 1e-5, y, dy, status);
      sum += y;
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(HundredThousandPolint)->Unit(benchmark::kMillisecond);

// A stage of 2^20 values.
void TrapzdOfAMillion(benchmark::State& state) {
  const auto values = Normals(1 << 20, 5);
  for (auto _ : state) {
    f64 result = 1;
    TRAPZD(0, 2, values.data(), 22, result, 1 << 20);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(TrapzdOfAMillion)->Unit(benchmark::kMillisecond);

void ThousandExpnos(benchmark::State& state) {
  for (auto _ : state) {
    f64 sum = 0;
    for (i32 order = 1; order <= 1000; ++order) sum += EXPNOS(1000, order);
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(ThousandExpnos)->Unit(benchmark::kMillisecond);

}  // namespace
