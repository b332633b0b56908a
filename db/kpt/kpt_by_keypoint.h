// A value for each of many keypoints, the default value for all others.
//
// Ownership: owns its values, never the keypoints. The entry of a keypoint of
// the first two sets that are met is never taken for one of another, since the
// set's number and the places in it are given out once. Any other keypoint is
// known by its address and must outlive its entry.
//
// The keypoints of the first two sets that are met, which are all that an
// index of one database ever sees, are looked up by their place in an array a
// set: four or eight bytes a keypoint, no hash, and walks in order of creation
// run through memory in order. All others are in a hash by address.
#ifndef KPT_BY_KEYPOINT_H
#define KPT_BY_KEYPOINT_H

#include <algorithm>
#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <vector>

#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_types.h"

template <class VALUE>
class KPT_BY_KEYPOINT {
 public:
  /// The keypoint's value; the default value for null.
  VALUE find(const KPT_KEYPOINT* keypoint) const {
    const VALUE* value = find_cell(keypoint);
    return value == nullptr ? VALUE() : *value;
  }
  /// The same, without a look at the keypoint.
  VALUE find(const KPT_KEYPOINT::PLACE& place) const {
    const VALUE* value = find_cell(place);
    return value == nullptr ? VALUE() : *value;
  }

  /// Where the keypoint's value stands, until the next call that makes room;
  /// null when there is no place for one.
  VALUE* find_cell(const KPT_KEYPOINT* keypoint) {
    return const_cast<VALUE*>(static_cast<const KPT_BY_KEYPOINT&>(*this).find_cell(keypoint));
  }
  const VALUE* find_cell(const KPT_KEYPOINT* keypoint) const {
    return keypoint == nullptr ? nullptr : find_cell(KPT_KEYPOINT::PLACE{keypoint->m_set, keypoint->m_place, keypoint});
  }
  const VALUE* find_cell(const KPT_KEYPOINT::PLACE& place) const {
    for (const SHELF& shelf : m_shelves) {
      if (shelf.set == place.set) {
        return place.place < shelf.values.size() ? &shelf.values[place.place] : nullptr;
      }
    }
    const auto found = m_others.find(place.keypoint);
    return found == m_others.end() ? nullptr : &found->second;
  }

  /// The keypoint's value, to change. Requires a keypoint that is not null.
  VALUE& at(const KPT_KEYPOINT* keypoint) {
    for (SHELF& shelf : m_shelves) {
      if (shelf.set == NO_SET && keypoint->m_set != KPT_KEYPOINT::OUTSIDE) {
        shelf.set = keypoint->m_set;
      }
      if (shelf.set == keypoint->m_set) {
        if (keypoint->m_place >= shelf.values.size()) {
          make_room(shelf.values, std::size_t{keypoint->m_place} + 1);
        }
        return shelf.values[keypoint->m_place];
      }
    }
    return m_others[keypoint];
  }

 private:
  static constexpr std::uint32_t NO_SET = UINT32_MAX;  // the number of no set
  using VALUES = std::vector<VALUE, MEM_STL_ALLOCATOR<VALUE>>;
  struct SHELF {
    std::uint32_t set = NO_SET;
    VALUES values;
  };

  // All that is allocated is used at once: keypoints come by the million, and one by one.
  static void make_room(VALUES& values, std::size_t count) {
    values.reserve(std::max(count, count > values.capacity() ? 2 * values.capacity() : 0));
    values.resize(values.capacity());
  }

  std::array<SHELF, 2> m_shelves;
  boost::unordered_flat_map<const KPT_KEYPOINT*, VALUE, boost::hash<const KPT_KEYPOINT*>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const KPT_KEYPOINT* const, VALUE>>>
      m_others;
};

#endif
