// The Mersenne Twister MT19937, for C++ callers; MTRND and INITMTRND stand on one of these.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "kernel/Kernel.h"

namespace tellurix::kernel {

// M. Matsumoto & T. Nishimura (1998), Mersenne Twister: a 623-dimensionally equidistributed uniform pseudo-random
// number generator, ACM Transactions on Modeling and Computer Simulation 8:3-30, with the seedings of their 2002
// revision. Period 2^19937 - 1.
class TELLURIX_KERNEL MersenneTwister {
 public:
  static constexpr std::uint32_t DefaultSeed = 5489;

  constexpr explicit MersenneTwister(std::uint32_t seed = DefaultSeed) { Seed(seed); }

  constexpr void Seed(std::uint32_t seed) {
    state_[0] = seed;
    for (std::uint32_t i = 1; i < Size; ++i) state_[i] = 1812433253U * (state_[i - 1] ^ (state_[i - 1] >> 30)) + i;
    used_ = Size;
  }
  void Seed(std::span<const std::uint32_t> key);  // a key of one number or more

  // The next integer, each of the 2^32 equally likely.
  std::uint32_t Next() {
    if (used_ == Size) Refill();
    return tempered_[used_++];
  }

  // The midpoint of the cell of an integer, of 2^32 equal cells of the interval from 0 to 1: never 0, never 1.
  static constexpr f64 OpenUniform(std::uint32_t integer) { return (integer + 0.5) * (1.0 / 4294967296.0); }

 private:
  static constexpr std::size_t Size = 624;

  void Refill();  // the next `Size` integers

  std::array<std::uint32_t, Size> state_{};
  std::array<std::uint32_t, Size> tempered_{};
  std::size_t used_ = Size;  // of tempered_
};

}  // namespace tellurix::kernel
