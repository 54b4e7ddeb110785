// A million random deviates of each law, the branches of the algorithms apart; their peers stand in
// bench/peers/Random.R.
#include <benchmark/benchmark.h>

#include "kernel/Kernel.h"
#include "numeric/Rnd.h"

namespace tellurix::bench {

namespace {

constexpr int Deviates = 1'000'000;

template <typename Draw>
void Run(benchmark::State& state, Draw draw) {
  RndFamily rnd;
  rnd.uniform.Seed(7);
  for (auto _ : state) {
    double sum = 0;
    for (int i = 0; i < Deviates; ++i) sum += draw(rnd);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * Deviates);
}

// Parameters are tenths, so that the names of the benchmarks are whole numbers.
double Tenths(const benchmark::State& state, int index) { return static_cast<double>(state.range(index)) / 10; }

// The stream itself, and a thousand starts of it with its first number.
void MillionMtrnd(benchmark::State& state) {
  INITMTRND(7);
  for (auto _ : state) {
    double sum = 0;
    for (int i = 0; i < Deviates; ++i) sum += MTRND();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * Deviates);
}
BENCHMARK(MillionMtrnd)->Unit(benchmark::kMillisecond);

void ThousandInitmtrnd(benchmark::State& state) {
  for (auto _ : state) {
    double sum = 0;
    for (int seed = 0; seed < 1000; ++seed) {
      INITMTRND(seed);
      sum += MTRND();
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(ThousandInitmtrnd)->Unit(benchmark::kMillisecond);

void RandomUniform(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.uniform.GenUni(); });
}
BENCHMARK(RandomUniform)->Unit(benchmark::kMillisecond);

void RandomUniformAB(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.uniform.GenUniAB(2, 5); });
}
BENCHMARK(RandomUniformAB)->Unit(benchmark::kMillisecond);

void RandomCauchy(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.uniform.GenCauchy(0, 1); });
}
BENCHMARK(RandomCauchy)->Unit(benchmark::kMillisecond);

void RandomLogistic(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.uniform.GenLogistic(0, 1); });
}
BENCHMARK(RandomLogistic)->Unit(benchmark::kMillisecond);

void RandomWeibull(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.uniform.GenWeibull(1.5, 2); });
}
BENCHMARK(RandomWeibull)->Unit(benchmark::kMillisecond);

void RandomNormal(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.normal.GenNorm(0, 1); });
}
BENCHMARK(RandomNormal)->Unit(benchmark::kMillisecond);

void RandomLognormal(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.normal.GenLnNorm(2, 3); });
}
BENCHMARK(RandomLognormal)->Unit(benchmark::kMillisecond);

void RandomExponential(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.exponential.GenExp(); });
}
BENCHMARK(RandomExponential)->Unit(benchmark::kMillisecond);

void RandomGamma(benchmark::State& state) {
  const double shape = Tenths(state, 0);
  Run(state, [=](RndFamily& rnd) { return rnd.gamma.GenGamma(shape, 1); });
}
BENCHMARK(RandomGamma)->Arg(5)->Arg(20)->Arg(80)->Arg(1000)->Unit(benchmark::kMillisecond);

void RandomChiSquare(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.gamma.GenChiSq(5); });
}
BENCHMARK(RandomChiSquare)->Unit(benchmark::kMillisecond);

void RandomF(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.gamma.GenF(5, 12); });
}
BENCHMARK(RandomF)->Unit(benchmark::kMillisecond);

void RandomT(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.gamma.GenT(5); });
}
BENCHMARK(RandomT)->Unit(benchmark::kMillisecond);

void RandomBeta(benchmark::State& state) {
  const double a = Tenths(state, 0), b = Tenths(state, 1);
  Run(state, [=](RndFamily& rnd) { return rnd.beta.GenBeta(a, b); });
}
BENCHMARK(RandomBeta)->Args({20, 30})->Args({400, 900})->Args({5, 5})->Args({300, 8})->Unit(benchmark::kMillisecond);

void RandomBinomial(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  const double p = Tenths(state, 1);
  Run(state, [=](RndFamily& rnd) { return rnd.binomial.GenBinom(n, p); });
}
BENCHMARK(RandomBinomial)
    ->Args({10, 3})
    ->Args({100, 2})
    ->Args({100, 4})
    ->Args({20000, 3})
    ->Unit(benchmark::kMillisecond);

void RandomPoisson(benchmark::State& state) {
  const double mean = Tenths(state, 0);
  Run(state, [=](RndFamily& rnd) { return rnd.poisson.GenPoisson(mean); });
}
BENCHMARK(RandomPoisson)->Arg(7)->Arg(80)->Arg(120)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void RandomNegativeBinomial(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.poisson.GenNegbin(2.5, 0.4); });
}
BENCHMARK(RandomNegativeBinomial)->Unit(benchmark::kMillisecond);

void RandomGeometric(benchmark::State& state) {
  Run(state, [](RndFamily& rnd) { return rnd.poisson.GenGeom(0.2); });
}
BENCHMARK(RandomGeometric)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tellurix::bench
