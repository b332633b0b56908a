#include "db/kpt/kpt_types.h"

#include <array>
#include <cstdint>

namespace {

constexpr std::uint64_t FACTOR = 17;
constexpr std::size_t STEP = 8;

// Powers of the factor from 17^7 down to 17^0: the weights of eight bytes.
constexpr std::array<std::uint64_t, STEP> weights() {
  std::array<std::uint64_t, STEP> w{};
  std::uint64_t power = 1;
  for (std::size_t k = STEP; k-- > 0;) {
    w[k] = power;
    power *= FACTOR;
  }
  return w;
}
constexpr std::array<std::uint64_t, STEP> WEIGHTS = weights();
constexpr std::uint64_t FACTOR_TO_STEP = WEIGHTS[0] * FACTOR;

constexpr std::uint64_t value_of(char c) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<signed char>(c)));
}

}  // namespace

// Eight bytes a step: their products do not wait for one another, where the
// byte-by-byte form is one chain of multiplications. The value is the same.
std::size_t kpt_hash_bytes(std::size_t h, std::string_view text) noexcept {
  std::uint64_t hash = h;
  const char* p = text.data();
  std::size_t left = text.size();
  for (; left >= STEP; left -= STEP, p += STEP) {
    std::uint64_t sum = 0;
    for (std::size_t k = 0; k < STEP; ++k) {
      sum += value_of(p[k]) * WEIGHTS[k];
    }
    hash = hash * FACTOR_TO_STEP + sum;
  }
  for (; left > 0; --left, ++p) {
    hash = hash * FACTOR + value_of(*p);
  }
  return hash;
}
