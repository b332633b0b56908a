#include "db/kpt/kpt_types.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

namespace {

constexpr std::uint64_t FACTOR = 17;
constexpr std::size_t STEP = 8;
constexpr std::size_t BLOCK = 16;

// The powers of the factor: what a hash is multiplied by for k further bytes.
constexpr std::array<std::uint64_t, BLOCK + 1> POWERS = [] {
  std::array<std::uint64_t, BLOCK + 1> powers{1};
  for (std::size_t k = 1; k <= BLOCK; ++k) {
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

// The hash of bytes behind `hash`, eight bytes a step. The last
// are a word whose first bytes are zero: a zero in front adds nothing.
std::uint64_t hash_words(std::uint64_t hash, const char* p, std::size_t size) {
  std::size_t left = size;
  for (; left >= STEP; left -= STEP, p += STEP) {
    hash = hash * POWERS[STEP] + hash_of_word(load(p, STEP));
  }
  if (left > 0) {
    const std::uint64_t tail = size >= STEP ? load(p + left - STEP, STEP) >> (8 * (STEP - left)) : load(p, left);
    hash = hash * POWERS[left] + hash_of_word(tail << (8 * (STEP - left)));
  }
  return hash;
}

#ifdef __x86_64__
// The hash of sixteen bytes: neighbours are joined to pairs, pairs to fours.
// A pair is at most 128 * 18, which a lane of 16 bits holds.
std::uint64_t hash_of_block(__m128i bytes) {
  const __m128i join_bytes = _mm_set1_epi32(0x00010000 | static_cast<int>(POWERS[1]));
  const __m128i join_pairs = _mm_set1_epi32(0x00010000 | static_cast<int>(POWERS[2]));
  const __m128i first = _mm_srai_epi16(_mm_unpacklo_epi8(bytes, bytes), 8);
  const __m128i last = _mm_srai_epi16(_mm_unpackhi_epi8(bytes, bytes), 8);
  const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(first, join_bytes), _mm_madd_epi16(last, join_bytes));
  const __m128i fours = _mm_madd_epi16(pairs, join_pairs);
  const std::int64_t low = _mm_cvtsi128_si64(fours);
  const std::int64_t high = _mm_cvtsi128_si64(_mm_unpackhi_epi64(fours, fours));
  const auto four = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  return four(static_cast<std::int32_t>(low)) * POWERS[12] + four(low >> 32) * POWERS[8] +
         four(static_cast<std::int32_t>(high)) * POWERS[4] + four(high >> 32);
}

__m128i load_block(const char* bytes) {
  __m128i block;
  std::memcpy(&block, bytes, BLOCK);
  return block;
}

// Sixteen bytes a step. The last step takes the last sixteen once more, those
// that were taken already as zeros. Requires as many.
std::uint64_t hash_blocks(std::uint64_t hash, const char* p, std::size_t size) {
  static constexpr auto KEEP_LAST = [] {
    std::array<char, 2 * BLOCK> mask{};
    for (std::size_t k = BLOCK; k < mask.size(); ++k) {
      mask[k] = static_cast<char>(-1);
    }
    return mask;
  }();
  std::size_t left = size;
  for (; left >= BLOCK; left -= BLOCK, p += BLOCK) {
    hash = hash * POWERS[BLOCK] + hash_of_block(load_block(p));
  }
  if (left == 0) {
    return hash;
  }
  const __m128i tail = _mm_and_si128(load_block(p + left - BLOCK), load_block(KEEP_LAST.data() + left));
  return hash * POWERS[left] + hash_of_block(tail);
}
#else
std::uint64_t hash_blocks(std::uint64_t hash, const char* p, std::size_t size) { return hash_words(hash, p, size); }
#endif

}  // namespace

// The value is that of the byte-by-byte rule to the bit.
std::size_t kpt_hash_bytes(std::size_t h, std::string_view text) noexcept {
  return text.size() >= BLOCK ? hash_blocks(h, text.data(), text.size()) : hash_words(h, text.data(), text.size());
}
