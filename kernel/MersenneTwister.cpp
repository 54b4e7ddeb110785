#include "kernel/MersenneTwister.h"

#include <algorithm>

namespace tellurix::kernel {

namespace {

constexpr std::size_t Middle = 397;  // how far ahead the recurrence reaches

std::uint32_t Twisted(std::uint32_t high, std::uint32_t low) {
  const std::uint32_t joined = (high & 0x80000000U) | (low & 0x7fffffffU);
  return (joined >> 1) ^ (0x9908b0dfU & (0U - (joined & 1U)));
}

std::uint32_t Tempered(std::uint32_t word) {
  word ^= word >> 11;
  word ^= (word << 7) & 0x9d2c5680U;
  word ^= (word << 15) & 0xefc60000U;
  return word ^ (word >> 18);
}

}  // namespace

void MersenneTwister::Seed(std::span<const std::uint32_t> key) {
  Seed(19650218U);
  std::size_t i = 1;
  const auto mixed = [&](std::uint32_t factor) {
    return state_[i] ^ ((state_[i - 1] ^ (state_[i - 1] >> 30)) * factor);
  };
  const auto advance = [&] {
    if (++i < Size) return;
    state_[0] = state_[Size - 1];
    i = 1;
  };
  std::size_t k = 0;
  for (std::size_t round = std::max(Size, key.size()); round > 0; --round) {
    state_[i] = mixed(1664525U) + key[k] + static_cast<std::uint32_t>(k);
    advance();
    k = k + 1 < key.size() ? k + 1 : 0;
  }
  for (std::size_t round = Size - 1; round > 0; --round) {
    state_[i] = mixed(1566083941U) - static_cast<std::uint32_t>(i);
    advance();
  }
  state_[0] = 0x80000000U;
}

void MersenneTwister::Refill() {
  for (std::size_t i = 0; i < Size - Middle; ++i) {
    state_[i] = state_[i + Middle] ^ Twisted(state_[i], state_[i + 1]);
  }
  for (std::size_t i = Size - Middle; i < Size - 1; ++i) {
    state_[i] = state_[i + Middle - Size] ^ Twisted(state_[i], state_[i + 1]);
  }
  state_[Size - 1] = state_[Middle - 1] ^ Twisted(state_[Size - 1], state_[0]);
  std::ranges::transform(state_, tempered_.begin(), Tempered);
  used_ = 0;
}

}  // namespace tellurix::kernel

namespace {

// The one stream of the process.
constinit tellurix::kernel::MersenneTwister generator;

}  // namespace

void INITMTRND(const i32& seed) { generator.Seed(static_cast<std::uint32_t>(seed)); }

f64 MTRND() { return tellurix::kernel::MersenneTwister::OpenUniform(generator.Next()); }
