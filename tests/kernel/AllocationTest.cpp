// Neither the kernel nor the wrappers over it allocate: the global operator new of this program counts.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "kernel/Tails.h"
#include "numeric/ColumnStats.h"
#include "numeric/Elementary.h"
#include "numeric/Noncentral.h"
#include "numeric/Power.h"
#include "numeric/Probability.h"
#include "numeric/RankStatistics.h"

namespace {
std::atomic<long> allocations{0};
}  // namespace

// Out of line, lest the compiler take free() for the wrong partner of new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
// std::stable_sort takes its buffer by the nothrow form, and frees it by the plain delete.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size == 0 ? 1 : size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace tellurix {
namespace {

TEST(Allocation, CounterCounts) {
  const long before = allocations;
  const auto memory = std::make_unique<std::vector<double>>(100);
  EXPECT_GE(allocations - before, 2) << memory->size();
}

TEST(Allocation, ProbabilitiesAllocateNothing) {
  const std::vector<double> column{1, 2, 4, 8};
  double sum = 0;
  const long before = allocations;
  for (double shape = 0.3; shape < 2e5; shape *= 1.7) {
    for (const double at : {0.02, 0.6, 0.97, 1.03, 1.5, 8.0}) {
      i32 ifault = 0;
      const double x = shape * at;
      const double u = at / (1 + at);
      sum += ALNORM(at) + GAUINV(u, ifault) + TFROMP(u / 2, shape) + BETAIN(u, shape, 0.5, ifault) +
             BETAIN(u, shape, 1.1 * shape, ifault) + GAMMAD(x, shape, ifault);
      sum += kernel::LogGamma(shape) + kernel::LogBeta(shape, at) + kernel::StirlingRemainder(shape);
      sum += UpperPFromChi(x, shape) + UpperPFromF(at, shape, 7) + UpperPFromT(at, shape) + TwoSidedP(at) + FoldP(u);
      f64 a = 0;
      f64 b = 0;
      f64 c = 0;
      f64 d = 0;
      const i32 count = static_cast<i32>(shape);
      sum += ALOGAM(shape) + DLNREL(at) + DPMACH(1) + PPCHI2(u, shape, ifault) + FFROMP(shape, 5 * at, u) +
             PNCT(at, shape, 2, ifault) + TNCT(u, shape, at, ifault) + NCHI2(x, shape, at);
      POISSON(x, count, a, b, c, ifault);
      sum += a + b + c;
      for (const i32 which : {1, 2, 3}) POISSONI(u, count, which, a, b, c, d, ifault);
      BINO(count, u, count / 3, a, b, c, ifault);
      sum += a + b + c;
      BINO2(count, u, count / 3, a, b, ifault);
      BINOMID(count, u, count / 3, c, d, ifault);
      bool failed = false;
      sum += a + b + c + d + ExpMinus1(at) + NoncentralityFromT(u, at, shape, failed) +
             NoncentralityFromChi(u / 10, at, 1, failed);
      double critical = 0;
      double alpha = 0;
      CriticalValue(static_cast<std::int32_t>(shape), critical, 0.9, alpha);
      const i32 sizes[] = {9, 4, 6};
      const i32 n = static_cast<i32>(std::min(shape, 300.0)) + 2;
      sum += PROBSR(4 * at, n, shape) + DMCA(4 * at, 3, shape, 2, alpha, ifault);
      sum += DMCC(3 * at, 3, shape, sizes[0], alpha, ifault) + QUANTSR(u, 3, shape);
      sum += PRHO(n, n * n, ifault) + KSP2(n, n, u, ifault) + KendallUpperP(n / 2, n, ifault) +
             SpearmanUpperP(n, x, ifault);
      sum += critical + PowerOneSample(0.05, at, 1, 12) + ComputeColumnStats(column).sd;
    }
  }
  EXPECT_EQ(allocations - before, 0);
  EXPECT_GT(sum, 0);
}

}  // namespace
}  // namespace tellurix
