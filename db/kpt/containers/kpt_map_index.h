// One index of a transformation set: finds the position of a keypoint's map in
// the set by the keypoint's slot.
//
// Ownership: none.
#ifndef KPT_MAP_INDEX_H
#define KPT_MAP_INDEX_H

#include <cstddef>
#include <cstdint>

#include "db/kpt/containers/kpt_by_slot.h"

class KPT_MAP_INDEX {
 public:
  /// The position (from 1) that was entered for the keypoint, or 0.
  std::uint32_t find(const KPT_POOL_SLOT& keypoint) const { return m_positions.find(keypoint); }
  /// Prefetches the memory that `find` reads.
  void fetch(const KPT_POOL_SLOT& keypoint) const { __builtin_prefetch(m_positions.find_cell(keypoint)); }

  /// Enters the keypoint or changes its entry: the last writer wins. An empty
  /// slot is never entered.
  void set(const KPT_POOL_SLOT& keypoint, std::uint32_t position) {
    if (keypoint.object != nullptr) {
      std::uint32_t& entry = m_positions.at(keypoint);
      m_size += entry == 0 ? 1U : 0U;
      entry = position;
    }
  }

  /// Allocates memory for the keypoint's entry, so that entering it cannot fail.
  void make_room(const KPT_POOL_SLOT& keypoint) {
    if (keypoint.object != nullptr) {
      m_positions.at(keypoint);
    }
  }

  /// False when the keypoint has no entry.
  bool erase(const KPT_POOL_SLOT& keypoint) {
    std::uint32_t* entry = m_positions.find_cell(keypoint);
    if (entry == nullptr || *entry == 0) {
      return false;
    }
    *entry = 0;
    --m_size;
    return true;
  }

  /// The number of entries, also those whose map was deleted.
  std::size_t size() const { return m_size; }

 private:
  KPT_BY_SLOT<std::uint32_t> m_positions;
  std::size_t m_size = 0;
};

#endif
