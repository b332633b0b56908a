#include "db/kpt/kpt_types.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint64_t FACTOR = 17;
constexpr std::size_t STEP = 8;

// The powers of the factor: what a hash is multiplied by for k further bytes.
constexpr std::array<std::uint64_t, STEP + 1> POWERS = [] {
  std::array<std::uint64_t, STEP + 1> powers{1};
  for (std::size_t k = 1; k <= STEP; ++k) {
    powers[k] = powers[k - 1] * FACTOR;
  }
  return powers;
}();

// Eight bytes with the first in the lowest bits, whatever the machine.
std::uint64_t load(const char* bytes, std::size_t count) {
  std::uint64_t word = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&word, bytes, count);
  } else {
    for (std::size_t k = count; k-- > 0;) {
      word = word << 8U | static_cast<unsigned char>(bytes[k]);
    }
  }
  return word;
}

// The hash of eight bytes: neighbours are joined lane by lane, three products
// in all. The lanes hold unsigned bytes, so each byte is raised by 128, and
// what that adds in all is taken off at the end.
std::uint64_t hash_of_word(std::uint64_t word) {
  constexpr std::uint64_t RAISE = 0x8080808080808080U;
  constexpr std::uint64_t BYTES = 0x00FF00FF00FF00FFU;
  constexpr std::uint64_t PAIRS = 0x0000FFFF0000FFFFU;
  constexpr std::uint64_t FOURS = 0x00000000FFFFFFFFU;
  constexpr std::uint64_t RAISED = 128 * ((POWERS[STEP] - 1) / (FACTOR - 1));
  const std::uint64_t bytes = word ^ RAISE;
  const std::uint64_t pairs = (bytes & BYTES) * POWERS[1] + ((bytes >> 8U) & BYTES);
  const std::uint64_t fours = (pairs & PAIRS) * POWERS[2] + ((pairs >> 16U) & PAIRS);
  return (fours & FOURS) * POWERS[4] + (fours >> 32U) - RAISED;
}

}  // namespace

// The value is that of the byte-by-byte rule to the bit; a step takes eight
// bytes. The last bytes are a word whose first bytes are zero: a zero in front
// adds nothing.
std::size_t kpt_hash_bytes(std::size_t h, std::string_view text) noexcept {
  std::uint64_t hash = h;
  const char* p = text.data();
  std::size_t left = text.size();
  for (; left >= STEP; left -= STEP, p += STEP) {
    hash = hash * POWERS[STEP] + hash_of_word(load(p, STEP));
  }
  if (left > 0) {
    const std::uint64_t tail = text.size() >= STEP ? load(p + left - STEP, STEP) >> (8 * (STEP - left)) : load(p, left);
    hash = hash * POWERS[left] + hash_of_word(tail << (8 * (STEP - left)));
  }
  return hash;
}
