// The studentized range and the exact distributions of rank statistics; bench/peers/Ranks.R does the same in R.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "kernel/Kernel.h"
#include "numeric/RankStatistics.h"

namespace {

// The fractional part of i times an irrational number: a sequence that R can make too.
f64 Spread(int i, f64 irrational) { return std::fmod(i * irrational, 1.0); }
f64 First(int i) { return Spread(i, 0.6180339887498949); }
f64 Second(int i) { return Spread(i, 0.4142135623730951); }
f64 Third(int i) { return Spread(i, 0.7320508075688772); }

// Sums call(i) over i = 1..calls.
template <typename Call>
void Run(benchmark::State& state, int calls, Call call) {
  for (auto _ : state) {
    f64 sum = 0;
    for (int i = 1; i <= calls; ++i) sum += call(i);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * calls);
}

// Samples 2 to 50 and degrees of freedom 2 to 120, as analyses of variance have them.
f64 Samples(int i) { return 2 + std::floor(49 * Second(i)); }
f64 Freedom(int i) { return 2 + std::floor(119 * Third(i)); }

void TenThousandProbsr(benchmark::State& state) {
  Run(state, 10000, [](int i) { return PROBSR(1 + 6 * First(i), Samples(i), Freedom(i)); });
}
BENCHMARK(TenThousandProbsr)->Unit(benchmark::kMillisecond);

void ThousandQuantsr(benchmark::State& state) {
  Run(state, 1000, [](int i) { return QUANTSR(0.001 + 0.5 * First(i), Samples(i), Freedom(i)); });
}
BENCHMARK(ThousandQuantsr)->Unit(benchmark::kMillisecond);

// Two ranges at once.
void ThousandDmca(benchmark::State& state) {
  Run(state, 1000, [](int i) {
    i32 ifault = 0;
    f64 p = 0;
    return DMCA(1 + 6 * First(i), static_cast<i32>(Samples(i)), Freedom(i), 2, p, ifault);
  });
}
BENCHMARK(ThousandDmca)->Unit(benchmark::kMillisecond);

void HundredPpq2(benchmark::State& state) {
  Run(state, 100, [](int i) {
    i32 ifault = 0;
    f64 q = 0;
    return PPQ2(0.001 + 0.5 * First(i), static_cast<i32>(Samples(i)), Freedom(i), 2, q, ifault);
  });
}
BENCHMARK(HundredPpq2)->Unit(benchmark::kMillisecond);

void ThousandDmcc(benchmark::State& state) {
  const std::vector<i32> sizes{12, 8, 9, 10, 11};
  Run(state, 1000, [&](int i) {
    i32 ifault = 0;
    f64 p = 0;
    return DMCC(1 + 3 * First(i), 5, Freedom(i), sizes[0], p, ifault);
  });
}
BENCHMARK(ThousandDmcc)->Unit(benchmark::kMillisecond);

void ThousandPpd2(benchmark::State& state) {
  const std::vector<i32> sizes{12, 8, 9, 10, 11};
  Run(state, 1000, [&](int i) {
    i32 ifault = 0;
    f64 d = 0;
    return PPD2(0.001 + 0.2 * First(i), 5, Freedom(i), sizes[0], d, ifault);
  });
}
BENCHMARK(ThousandPpd2)->Unit(benchmark::kMillisecond);

// n = 9 is the last that R enumerates.
void HundredPrhoOf9(benchmark::State& state) {
  Run(state, 100, [](int i) {
    i32 ifault = 0;
    return PRHO(9, 2 * static_cast<i32>(120 * First(i)), ifault);
  });
}
BENCHMARK(HundredPrhoOf9)->Unit(benchmark::kMillisecond);

void HundredThousandPrhoOf22(benchmark::State& state) {
  Run(state, 100000, [](int i) {
    i32 ifault = 0;
    return PRHO(22, 2 * static_cast<i32>(1771 * First(i)), ifault);
  });
}
BENCHMARK(HundredThousandPrhoOf22)->Unit(benchmark::kMillisecond);

void HundredThousandPrhoSeries(benchmark::State& state) {
  Run(state, 100000, [](int i) {
    i32 ifault = 0;
    return PRHO(50, 2 * static_cast<i32>(20825 * First(i)), ifault);
  });
}
BENCHMARK(HundredThousandPrhoSeries)->Unit(benchmark::kMillisecond);

// One size anew each time, as a command asks for one.
void HundredKendallOf40(benchmark::State& state) {
  Run(state, 100, [](int i) {
    i32 ifault = 0;
    return tellurix::KendallUpperP(2 * static_cast<i32>(390 * First(i)) - 390, 40, ifault);
  });
}
BENCHMARK(HundredKendallOf40)->Unit(benchmark::kMillisecond);

void HundredKsp2(benchmark::State& state) {
  Run(state, 100, [](int i) {
    i32 ifault = 0;
    return KSP2(300, 401, 0.02 + 0.3 * First(i), ifault);
  });
}
BENCHMARK(HundredKsp2)->Unit(benchmark::kMillisecond);

void HundredKsp2OfEqualSizes(benchmark::State& state) {
  Run(state, 100, [](int i) {
    i32 ifault = 0;
    return KSP2(400, 400, 0.02 + 0.3 * First(i), ifault);
  });
}
BENCHMARK(HundredKsp2OfEqualSizes)->Unit(benchmark::kMillisecond);

// Without ties, for R has no other; the smallest tied rank step, a half, is in the second.
void WmwpxOf30And80(benchmark::State& state) {
  std::vector<i32> ranks(110);
  for (int i = 0; i < 110; ++i) ranks[i] = 2 * i + 2;
  Run(state, 1, [&](int) {
    i32 ifault = 0;
    f64 upper = 0;
    return WMWPX(30, 80, ranks[0], 2 * 1000, upper, ifault);
  });
}
BENCHMARK(WmwpxOf30And80)->Unit(benchmark::kMillisecond);

void WmwpxOf30And80WithTies(benchmark::State& state) {
  std::vector<i32> ranks(110);
  for (int i = 0; i < 110; ++i) ranks[i] = 4 * (i / 2) + 3;
  ranks[108] = 218;
  ranks[109] = 220;
  Run(state, 1, [&](int) {
    i32 ifault = 0;
    f64 upper = 0;
    return WMWPX(30, 80, ranks[0], 2 * 1000, upper, ifault);
  });
}
BENCHMARK(WmwpxOf30And80WithTies)->Unit(benchmark::kMillisecond);

}  // namespace
