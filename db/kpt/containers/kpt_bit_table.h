// The bits of one side of a state table, addressed by position.
//
// Ownership: owns its words. A copy is independent.
//
// A bit is false until it is set, and only the words up to the last bit ever
// set are kept. A table that a file declares with 65,535 rows and columns so
// costs nothing before it is filled, and the first 64 bits need no allocation.
// The length is the owner's to know: asked beyond what is kept, a bit is false.
#ifndef KPT_BIT_TABLE_H
#define KPT_BIT_TABLE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "db/kpt/containers/kpt_small_vector.h"

class KPT_BIT_TABLE {
 public:
  bool get(std::uint64_t position) const {
    const std::uint64_t word = position / WORD;
    return word < m_words.size() && (m_words[word] >> (position % WORD) & 1U) != 0;
  }

  void set(std::uint64_t position, bool value) {
    const std::uint64_t bit = std::uint64_t{1} << (position % WORD);
    if (value) {
      m_words[reach(position)] |= bit;
    } else if (position < kept()) {
      m_words[position / WORD] &= ~bit;
    }
  }

  void flip(std::uint64_t position) { m_words[reach(position)] ^= std::uint64_t{1} << (position % WORD); }

  /// The `count` bits from `position` on, the first one lowest. `count` is 1 to 64.
  std::uint64_t get_bits(std::uint64_t position, unsigned count) const {
    const std::uint64_t first = position / WORD;
    const unsigned shift = position % WORD;
    std::uint64_t bits = word(first) >> shift;
    if (shift + count > WORD) {
      bits |= word(first + 1) << (WORD - shift);
    }
    return bits & low_bits(count);
  }

  /// Overwrites the `count` bits from `position` on. `bits` has no higher bit set.
  void set_bits(std::uint64_t position, unsigned count, std::uint64_t bits) {
    if (bits == 0 && position >= kept()) {
      return;
    }
    reach(position + count - 1);
    const std::uint64_t first = position / WORD;
    const unsigned shift = position % WORD;
    m_words[first] = (m_words[first] & ~(low_bits(count) << shift)) | bits << shift;
    if (shift + count > WORD) {
      const unsigned done = WORD - shift;
      m_words[first + 1] = (m_words[first + 1] & ~low_bits(shift + count - WORD)) | bits >> done;
    }
  }

  /// Overwrites `count` bits from `position` on with those of `other` from `source` on.
  void copy_bits(std::uint64_t position, const KPT_BIT_TABLE& other, std::uint64_t source, std::uint64_t count) {
    while (count != 0) {
      const unsigned step = static_cast<unsigned>(std::min<std::uint64_t>(count, WORD));
      set_bits(position, step, other.get_bits(source, step));
      position += step;
      source += step;
      count -= step;
    }
  }

  /// Room for so many bits: nothing below fails from now on.
  void make_room(std::uint64_t bits) { m_words.reserve((bits + WORD - 1) / WORD); }

  /// Every bit at or beyond this position is false.
  std::uint64_t kept() const { return std::uint64_t{m_words.size()} * WORD; }

  friend bool operator==(const KPT_BIT_TABLE& a, const KPT_BIT_TABLE& b) {
    const WORDS& shorter = a.m_words.size() < b.m_words.size() ? a.m_words : b.m_words;
    const WORDS& longer = a.m_words.size() < b.m_words.size() ? b.m_words : a.m_words;
    const auto* rest = longer.begin() + shorter.size();
    return std::equal(shorter.begin(), shorter.end(), longer.begin()) &&
           std::all_of(rest, longer.end(), [](std::uint64_t bits) { return bits == 0; });
  }

 private:
  static constexpr unsigned WORD = 64;
  using WORDS = KPT_SMALL_VECTOR<std::uint64_t>;

  static std::uint64_t low_bits(unsigned count) { return ~std::uint64_t{0} >> (WORD - count); }

  std::uint64_t word(std::uint64_t index) const { return index < m_words.size() ? m_words[index] : 0; }

  // Keeps the word of the position and returns its index. Tables are mostly
  // filled from the front, so the words grow by doubling.
  std::size_t reach(std::uint64_t position) {
    const std::size_t index = position / WORD;
    if (index >= m_words.size()) {
      if (index >= m_words.capacity()) {
        m_words.reserve(std::max(index + 1, 2 * m_words.capacity()));
      }
      m_words.resize(index + 1);
    }
    return index;
  }

  WORDS m_words;
};

#endif
