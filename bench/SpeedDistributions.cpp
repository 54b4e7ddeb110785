// Many calls of the distributions beyond the tails; their peers stand in bench/peers/distributions.R.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

#include "bench/Calls.h"
#include "kernel/Kernel.h"

namespace tellurix::bench {

namespace {

void MillionAlogam(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{LogBetween(0.01, 1e4, uniform()), 0, 0}; });
  Run(state, arguments, [](const Arguments& x) { return ALOGAM(x.a); });
}
BENCHMARK(MillionAlogam)->Unit(benchmark::kMillisecond);

void MillionDlnrel(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{2 * uniform() - 0.9, 0, 0}; });
  Run(state, arguments, [](const Arguments& x) { return DLNREL(x.a); });
}
BENCHMARK(MillionDlnrel)->Unit(benchmark::kMillisecond);

void MillionPpchi2(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{uniform(), LogBetween(0.5, 1e4, uniform()), 0}; });
  Run(state, arguments, [](const Arguments& x) {
    i32 ifault = 0;
    return PPCHI2(x.a, x.b, ifault);
  });
}
BENCHMARK(MillionPpchi2)->Unit(benchmark::kMillisecond);

void MillionFfromp(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) {
    return Arguments{LogBetween(1, 1e4, uniform()), LogBetween(1, 1e4, uniform()), LogBetween(1e-6, 0.5, uniform())};
  });
  Run(state, arguments, [](const Arguments& x) { return FFROMP(x.a, x.b, x.c); });
}
BENCHMARK(MillionFfromp)->Unit(benchmark::kMillisecond);

// A mean and a count within four standard deviations of it.
void MillionPoisson(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) {
    const f64 mean = LogBetween(1, 1e4, uniform());
    return Arguments{mean, std::max(0.0, std::round(mean + (8 * uniform() - 4) * std::sqrt(mean))), 0};
  });
  Run(state, arguments, [](const Arguments& x) {
    f64 orMore = 0;
    f64 orFewer = 0;
    f64 exactly = 0;
    i32 ifault = 0;
    POISSON(x.a, static_cast<i32>(x.b), orMore, orFewer, exactly, ifault);
    return orMore + orFewer + exactly;
  });
}
BENCHMARK(MillionPoisson)->Unit(benchmark::kMillisecond);

void HundredThousandPoissoni(benchmark::State& state) {
  const auto draw = [](auto uniform) { return Arguments{uniform(), std::ceil(LogBetween(0.5, 1e4, uniform())), 0}; };
  Run(state, Drawn(draw, 100'000), [](const Arguments& x) {
    f64 mean = 0;
    f64 orMore = 0;
    f64 orFewer = 0;
    f64 exactly = 0;
    i32 ifault = 0;
    POISSONI(x.a, static_cast<i32>(x.b), 1, mean, orMore, orFewer, exactly, ifault);
    return mean;
  });
}
BENCHMARK(HundredThousandPoissoni)->Unit(benchmark::kMillisecond);

// Trials, a probability, and a count within four standard deviations of what it makes expect.
Arguments BinomialArguments(f64 n, f64 p, f64 u) {
  const f64 k = std::round(n * p + (8 * u - 4) * std::sqrt(n * p * (1 - p)));
  return {n, p, std::clamp(k, 0.0, n)};
}

std::vector<Arguments> DrawnBinomials(int calls) {
  const auto draw = [](auto uniform) {
    return BinomialArguments(std::round(LogBetween(10, 1e4, uniform())), uniform(), uniform());
  };
  return Drawn(draw, calls);
}

void MillionBino(benchmark::State& state) {
  Run(state, DrawnBinomials(1'000'000), [](const Arguments& x) {
    f64 exactly = 0;
    f64 orFewer = 0;
    f64 orMore = 0;
    i32 ifault = 0;
    BINO(static_cast<i32>(x.a), x.b, static_cast<i32>(x.c), exactly, orFewer, orMore, ifault);
    return exactly + orFewer + orMore;
  });
}
BENCHMARK(MillionBino)->Unit(benchmark::kMillisecond);

void ThousandBino2(benchmark::State& state) {
  Run(state, DrawnBinomials(1000), [](const Arguments& x) {
    f64 oneSided = 0;
    f64 twoSided = 0;
    i32 ifault = 0;
    BINO2(static_cast<i32>(x.a), x.b, static_cast<i32>(x.c), oneSided, twoSided, ifault);
    return twoSided;
  });
}
BENCHMARK(ThousandBino2)->Unit(benchmark::kMillisecond);

void MillionBinomid(benchmark::State& state) {
  Run(state, DrawnBinomials(1'000'000), [](const Arguments& x) {
    f64 oneSided = 0;
    f64 twoSided = 0;
    i32 ifault = 0;
    BINOMID(static_cast<i32>(x.a), x.b, static_cast<i32>(x.c), oneSided, twoSided, ifault);
    return twoSided;
  });
}
BENCHMARK(MillionBinomid)->Unit(benchmark::kMillisecond);

void MillionDpmach(benchmark::State& state) {
  const auto arguments = Drawn([](auto uniform) { return Arguments{std::floor(5 * uniform()), 0, 0}; });
  Run(state, arguments, [](const Arguments& x) { return DPMACH(static_cast<i32>(x.a)) * 1e-300; });
}
BENCHMARK(MillionDpmach)->Unit(benchmark::kMillisecond);

void HundredThousandPnct(benchmark::State& state) {
  const auto draw = [](auto uniform) {
    const f64 delta = 20 * uniform() - 10;
    return Arguments{delta + 8 * uniform() - 4, LogBetween(1, 1e4, uniform()), delta};
  };
  Run(state, Drawn(draw, 100'000), [](const Arguments& x) {
    i32 ifault = 0;
    return PNCT(x.a, x.b, x.c, ifault);
  });
}
BENCHMARK(HundredThousandPnct)->Unit(benchmark::kMillisecond);

void TenThousandTnct(benchmark::State& state) {
  const auto draw = [](auto uniform) {
    return Arguments{0.001 + 0.998 * uniform(), LogBetween(1, 1e4, uniform()), 20 * uniform() - 10};
  };
  Run(state, Drawn(draw, 10'000), [](const Arguments& x) {
    i32 ifault = 0;
    return TNCT(x.a, x.b, x.c, ifault);
  });
}
BENCHMARK(TenThousandTnct)->Unit(benchmark::kMillisecond);

void HundredThousandNchi2(benchmark::State& state) {
  const auto draw = [](auto uniform) {
    const f64 df = LogBetween(1, 100, uniform());
    const f64 lambda = LogBetween(0.1, 1000, uniform());
    return Arguments{std::max(0.01, df + lambda + (8 * uniform() - 4) * std::sqrt(2 * df + 4 * lambda)), df, lambda};
  };
  Run(state, Drawn(draw, 100'000), [](const Arguments& x) { return NCHI2(x.a, x.b, x.c); });
}
BENCHMARK(HundredThousandNchi2)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tellurix::bench
