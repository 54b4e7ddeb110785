#include "kernel/MersenneTwister.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace tellurix::kernel {
namespace {

// Matsumoto & Nishimura, mt19937ar.out (2002): the first outputs of the key {0x123, 0x234, 0x345, 0x456}.
TEST(MersenneTwister, GivesThePublishedOutputs) {
  constexpr std::array<std::uint32_t, 4> key{0x123, 0x234, 0x345, 0x456};
  MersenneTwister twister;
  twister.Seed(key);
  for (const std::uint32_t expected : {1067595299U, 955945823U, 477289528U, 4107218783U, 4228976476U, 3344332714U,
                                       3355579695U, 227628506U, 810200273U, 2591290167U}) {
    EXPECT_EQ(twister.Next(), expected);
  }
}

// The engine of the standard library has the same seeding by one integer.
TEST(MersenneTwister, AgreesWithAnIndependentOne) {
  MersenneTwister unseeded;
  for (int i = 1; i < 10000; ++i) unseeded.Next();
  EXPECT_EQ(unseeded.Next(), 4123659995U);  // ISO C++, [rand.predef]: output 10000 of mt19937

  for (const std::int32_t seed : {0, 1, 7, 20021, 2147483647, -1, -2147483647}) {
    std::mt19937 standard(static_cast<std::uint32_t>(seed));
    INITMTRND(seed);
    for (int i = 0; i < 3000; ++i) ASSERT_EQ(MTRND(), (standard() + 0.5) / 4294967296.0) << seed << ", draw " << i;
  }
}

TEST(MersenneTwister, UniformsStayInTheOpenInterval) {
  EXPECT_GT(MersenneTwister::OpenUniform(0), 0);
  EXPECT_LT(MersenneTwister::OpenUniform(0xffffffffU), 1);
}

}  // namespace
}  // namespace tellurix::kernel
