// A million mixed calls of each kernel function; the arguments are drawn beforehand.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/Calls.h"
#include "kernel/Kernel.h"

namespace tellurix::bench {

namespace {

void MillionAlnorm(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{16 * uniform() - 8, 0, 0}; });
  Run(state, arguments, [](const Arguments& x) { return ALNORM(x.a); });
}
BENCHMARK(MillionAlnorm)->Unit(benchmark::kMillisecond);

void MillionGauinv(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{uniform(), 0, 0}; });
  Run(state, arguments, [](const Arguments& x) {
    i32 ifault = 0;
    return GAUINV(x.a, ifault);
  });
}
BENCHMARK(MillionGauinv)->Unit(benchmark::kMillisecond);

void MillionTfromp(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) {
    return Arguments{LogBetween(1e-6, 0.5, uniform()), LogBetween(1, 1e4, uniform()), 0};
  });
  Run(state, arguments, [](const Arguments& x) { return TFROMP(x.a, x.b); });
}
BENCHMARK(MillionTfromp)->Unit(benchmark::kMillisecond);

// Parameters 0.5 to `state.range(0)`, arguments within about five standard deviations of the mean.
void MillionBetain(benchmark::State& state) {
  const auto arguments = Drawn([&](auto uniform) {
    const f64 p = LogBetween(0.5, static_cast<f64>(state.range(0)), uniform());
    const f64 q = LogBetween(0.5, static_cast<f64>(state.range(0)), uniform());
    const f64 logit = std::log(p / q) + (10 * uniform() - 5) * std::sqrt(1 / p + 1 / q);
    return Arguments{1 / (1 + std::exp(-logit)), p, q};
  });
  Run(state, arguments, [](const Arguments& x) {
    i32 ifault = 0;
    return BETAIN(x.a, x.b, x.c, ifault);
  });
}
BENCHMARK(MillionBetain)->Arg(100)->Arg(1000000)->Unit(benchmark::kMillisecond);

void MillionGammad(benchmark::State& state) {
  const auto arguments = Drawn([&](auto uniform) {
    const f64 p = LogBetween(0.5, static_cast<f64>(state.range(0)), uniform());
    return Arguments{p * std::exp((10 * uniform() - 5) / std::sqrt(p)), p, 0};
  });
  Run(state, arguments, [](const Arguments& x) {
    i32 ifault = 0;
    return GAMMAD(x.a, x.b, ifault);
  });
}
BENCHMARK(MillionGammad)->Arg(100)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tellurix::bench
