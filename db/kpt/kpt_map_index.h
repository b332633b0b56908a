// One index of a transformation set: from a keypoint to the position of its
// map in the set.
//
// Ownership: none.
#ifndef KPT_MAP_INDEX_H
#define KPT_MAP_INDEX_H

#include <cstdint>

#include "db/kpt/kpt_by_keypoint.h"

class KPT_MAP_INDEX {
 public:
  /// The position (from 1) entered for the keypoint, or 0. Null is never entered.
  std::uint32_t find(const KPT_KEYPOINT* keypoint) const { return m_positions.find(keypoint); }
  /// The same, without a look at the keypoint.
  std::uint32_t find(const KPT_KEYPOINT::PLACE& place) const { return m_positions.find(place); }
  /// Asks for the memory that `find` reads.
  void fetch(const KPT_KEYPOINT* keypoint) const { __builtin_prefetch(m_positions.find_cell(keypoint)); }

  /// Enters the keypoint, or points its entry elsewhere: the last writer wins.
  void set(const KPT_KEYPOINT* keypoint, std::uint32_t position) {
    if (keypoint != nullptr) {
      std::uint32_t& entry = m_positions.at(keypoint);
      m_size += entry == 0 ? 1U : 0U;
      entry = position;
    }
  }

  /// False when the keypoint has no entry.
  bool erase(const KPT_KEYPOINT* keypoint) {
    std::uint32_t* entry = m_positions.find_cell(keypoint);
    if (entry == nullptr || *entry == 0) {
      return false;
    }
    *entry = 0;
    --m_size;
    return true;
  }

  /// The number of entries, those that lead to no map included.
  std::size_t size() const { return m_size; }

 private:
  KPT_BY_KEYPOINT<std::uint32_t> m_positions;
  std::size_t m_size = 0;
};

#endif
