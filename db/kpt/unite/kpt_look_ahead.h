// Prefetches memory for a walk over the maps of one stage.
//
// In the order of one stage, the maps of the other stage are scattered in memory.
// A walk that waits for each map spends most of its time waiting. This class
// prefetches what lies between a map and its counterpart in the other stage, one
// step at a time: the keypoint, its index entry, the map's cell in the list, and
// the map. It changes nothing.
//
// Ownership: none; the lists and the index outlive it.
#ifndef KPT_LOOK_AHEAD_H
#define KPT_LOOK_AHEAD_H

#include <cstdint>

#include "db/kpt/containers/kpt_map_index.h"
#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_transformation_list.h"

class KPT_LOOK_AHEAD {
 public:
  /// For a walk over the maps of one stage. `index` is the other stage's index of
  /// the registers on the given side.
  KPT_LOOK_AHEAD(const KPT_TRANSFORMATION_LIST& walked, KPT_SET_ENUM side, const KPT_TRANSFORMATION_LIST& other,
                 const KPT_MAP_INDEX& index)
      : m_walked(walked), m_side(side), m_other(other), m_index(index) {}

  /// The walk is at this map: prefetches for the next ones.
  void from(const KPT_TRANSFORMATION_IMPL& map) const {
    const std::uint32_t position = KPT_TRANSFORMATION_LIST::position_of(map);
    __builtin_prefetch(keypoint_of(m_walked.at(position + 4 * STEP)));
    m_index.fetch(KPT_KEYPOINT::slot_of(keypoint_of(m_walked.at(position + 3 * STEP))));
    m_other.fetch(m_index.find(KPT_KEYPOINT::slot_of(keypoint_of(m_walked.at(position + 2 * STEP)))));
    fetch(counterpart_of(m_walked.at(position + STEP)));
  }

  /// The counterpart of the map `ahead` positions further on; null when there is none.
  const KPT_TRANSFORMATION_IMPL* counterpart(const KPT_TRANSFORMATION_IMPL& map, std::uint32_t ahead) const {
    return counterpart_of(m_walked.at(KPT_TRANSFORMATION_LIST::position_of(map) + ahead));
  }

 private:
  static constexpr std::uint32_t STEP = 6;

  static void fetch(const KPT_TRANSFORMATION_IMPL* map) {
    if (map != nullptr) {
      __builtin_prefetch(map);
      __builtin_prefetch(reinterpret_cast<const char*>(map) + sizeof(KPT_TRANSFORMATION_IMPL) - 1);
    }
  }
  const KPT_KEYPOINT* keypoint_of(const KPT_TRANSFORMATION_IMPL* map) const {
    if (map == nullptr) {
      return nullptr;
    }
    return m_side == KPT_TRANSFORMED_SET ? map->get_t_n_first(0) : map->get_r_n_first(0);
  }
  const KPT_TRANSFORMATION_IMPL* counterpart_of(const KPT_TRANSFORMATION_IMPL* map) const {
    return m_other.at(m_index.find(KPT_KEYPOINT::slot_of(keypoint_of(map))));
  }

  const KPT_TRANSFORMATION_LIST& m_walked;
  KPT_SET_ENUM m_side;
  const KPT_TRANSFORMATION_LIST& m_other;
  const KPT_MAP_INDEX& m_index;
};

#endif
