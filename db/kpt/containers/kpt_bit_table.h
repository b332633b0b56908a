// The bits of one side of a state table, addressed by position.
//
// Ownership: owns its words. A copy is independent.
//
// A bit is false until it is set. The memory of a table depends on the bits that
// are set and not on its declared size: a file of a few hundred bytes can declare
// 65,535 rows and columns and set only the last bit. The first words are in one
// vector, as long as enough of them are in use. Words far behind go to a hash
// table. The first 64 bits need no allocation.
// The owner knows the length of the table. A bit beyond the stored words is false.
#ifndef KPT_BIT_TABLE_H
#define KPT_BIT_TABLE_H

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "db/kpt/containers/kpt_small_vector.h"

class KPT_BIT_TABLE {
 public:
  KPT_BIT_TABLE() = default;
  KPT_BIT_TABLE(const KPT_BIT_TABLE& other)
      : m_words(other.m_words),
        m_far(other.m_far == nullptr ? nullptr : std::make_unique<FAR>(*other.m_far)),
        m_in_use(other.m_in_use) {}
  KPT_BIT_TABLE(KPT_BIT_TABLE&&) noexcept = default;
  KPT_BIT_TABLE& operator=(const KPT_BIT_TABLE& other) { return *this = KPT_BIT_TABLE(other); }
  KPT_BIT_TABLE& operator=(KPT_BIT_TABLE&&) noexcept = default;
  ~KPT_BIT_TABLE() = default;

  bool get(std::uint64_t position) const { return (word(position / WORD) >> (position % WORD) & 1U) != 0; }

  void set(std::uint64_t position, bool value) {
    const std::uint64_t bit = std::uint64_t{1} << (position % WORD);
    put(position / WORD, bit, value ? bit : 0);
  }

  void flip(std::uint64_t position) {
    const std::uint64_t bit = std::uint64_t{1} << (position % WORD);
    put(position / WORD, bit, ~word(position / WORD) & bit);
  }

  /// Returns `count` bits from `position` on, the first one lowest. `count` is 1 to 64.
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
    const std::uint64_t first = position / WORD;
    const unsigned shift = position % WORD;
    put(first, low_bits(count) << shift, bits << shift);
    if (shift + count > WORD) {
      put(first + 1, low_bits(shift + count - WORD), bits >> (WORD - shift));
    }
  }

  /// Overwrites `count` bits from `position` on with the bits of `other` from `source` on.
  void copy_bits(std::uint64_t position, const KPT_BIT_TABLE& other, std::uint64_t source, std::uint64_t count) {
    while (count != 0) {
      const unsigned step = static_cast<unsigned>(std::min<std::uint64_t>(count, WORD));
      set_bits(position, step, other.get_bits(source, step));
      position += step;
      source += step;
      count -= step;
    }
  }

  /// Allocates memory for so many bits, so that no operation on them can fail.
  void make_room(std::uint64_t bits) { m_words.reserve((bits + WORD - 1) / WORD); }

  /// Every bit at or beyond this position is false.
  std::uint64_t kept() const {
    return WORD * std::max(std::uint64_t{m_words.size()}, m_far == nullptr ? 0 : m_far->end);
  }

  friend bool operator==(const KPT_BIT_TABLE& a, const KPT_BIT_TABLE& b) { return a.is_within(b) && b.is_within(a); }

 private:
  static constexpr unsigned WORD = 64;
  using WORDS = KPT_SMALL_VECTOR<std::uint64_t>;
  // By word index. The index does not come from a file, so no file can choose which words collide.
  struct FAR {
    boost::unordered_flat_map<std::uint64_t, std::uint64_t, boost::hash<std::uint64_t>, std::equal_to<std::uint64_t>,
                              MEM_STL_ALLOCATOR<std::pair<const std::uint64_t, std::uint64_t>>>
        words;
    std::uint64_t end = 0;  // after the last
  };

  static std::uint64_t low_bits(unsigned count) { return ~std::uint64_t{0} >> (WORD - count); }

  std::uint64_t word(std::uint64_t index) const {
    if (index < m_words.size()) {
      return m_words[index];
    }
    return m_far == nullptr ? 0 : far_word(index);
  }
  std::uint64_t far_word(std::uint64_t index) const {
    const auto found = m_far->words.find(index);
    return found == m_far->words.end() ? 0 : found->second;
  }

  // Overwrites the bits of the mask. A bit that is false already needs no memory.
  void put(std::uint64_t index, std::uint64_t mask, std::uint64_t bits) {
    const std::uint64_t before = word(index);
    const std::uint64_t after = (before & ~mask) | bits;
    if (after == before) {
      return;
    }
    m_in_use += before == 0 ? 1U : 0U;
    if (!reach(index)) {
      make_far();
      m_far->words[index] = after;
      m_far->end = std::max(m_far->end, index + 1);
    } else {
      m_words[index] = after;
    }
  }

  // Extends the vector up to this word, unless too few of its words would then be
  // in use. Most tables are filled from the front, so the vector grows by
  // doubling.
  bool reach(std::uint64_t index) {
    constexpr std::uint64_t FEW = 64;
    constexpr std::uint64_t MOST_WORDS_FOR_ONE_IN_USE = 8;
    const std::size_t size = m_words.size();
    if (index < size) {
      return true;
    }
    if (index >= FEW + MOST_WORDS_FOR_ONE_IN_USE * m_in_use) {
      return false;
    }
    if (index >= m_words.capacity()) {
      m_words.reserve(std::max(static_cast<std::size_t>(index) + 1, 2 * m_words.capacity()));
    }
    m_words.resize(static_cast<std::size_t>(index) + 1);
    for (std::size_t k = size; m_far != nullptr && k < m_words.size(); ++k) {
      m_words[k] = far_word(k);
      m_far->words.erase(k);
    }
    return true;
  }

  void make_far() {
    if (m_far == nullptr) {
      m_far = std::make_unique<FAR>();
    }
  }

  bool is_within(const KPT_BIT_TABLE& other) const {
    for (std::size_t k = 0; k < m_words.size(); ++k) {
      if (m_words[k] != other.word(k)) {
        return false;
      }
    }
    return m_far == nullptr || std::all_of(m_far->words.begin(), m_far->words.end(),
                                           [&](const auto& entry) { return other.word(entry.first) == entry.second; });
  }

  WORDS m_words;
  std::unique_ptr<FAR> m_far;  // words that the vector does not reach
  std::uint64_t m_in_use = 0;  // how often a word changed from 0
};

#endif
