// One index of a transformation set: from a keypoint to the position of its
// map in the set.
//
// Ownership: none. An entry dies with its keypoint or with the index.
//
// The entry of a keypoint that no other index has claimed is kept in the
// keypoint itself, so that finding the map of a register that was just found
// by name is no further probe. A keypoint that stands in several indexes, as
// the registers between two stages do during a union, has its further entries
// in the hash of each. An index is known to keypoints by a number that is
// never given out twice: what a destroyed index left in keypoints is dead.
#ifndef KPT_MAP_INDEX_H
#define KPT_MAP_INDEX_H

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>

#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_types.h"

/// Whether an index may keep entries in keypoints. A short-lived one should
/// not: it would take the room from the index that stays.
enum KPT_INDEX_KIND { KPT_INDEX_IN_KEYPOINTS, KPT_INDEX_APART };

class KPT_MAP_INDEX {
 public:
  explicit KPT_MAP_INDEX(KPT_INDEX_KIND kind);

  /// The position entered for the keypoint, or 0. Null is never entered.
  std::uint32_t find(const KPT_KEYPOINT* keypoint) const {
    if (keypoint == nullptr) {
      return 0;
    }
    if (keypoint->m_index_id == m_id) {
      return keypoint->m_index_position;
    }
    return m_others.empty() ? 0 : find_among_others(keypoint);
  }

  /// Enters the keypoint, or points its entry elsewhere: the last writer wins.
  void set(const KPT_KEYPOINT* keypoint, std::uint32_t position);
  /// Enters the keypoint unless it has an entry.
  void set_if_absent(const KPT_KEYPOINT* keypoint, std::uint32_t position);
  /// False when the keypoint has no entry.
  bool erase(const KPT_KEYPOINT* keypoint);
  /// The number of entries, those that lead to no map included.
  std::size_t size() const { return m_claimed + m_others.size(); }
  /// Makes room for so many entries, where they are kept apart.
  void reserve(std::size_t entries);

 private:
  std::uint32_t find_among_others(const KPT_KEYPOINT* keypoint) const;

  std::uint32_t m_id;
  KPT_INDEX_KIND m_kind;
  std::size_t m_claimed = 0;
  boost::unordered_flat_map<const KPT_KEYPOINT*, std::uint32_t, boost::hash<const KPT_KEYPOINT*>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const KPT_KEYPOINT* const, std::uint32_t>>>
      m_others;
};

#endif
