// In which group the registers at index 0 of one side of maps stand, to be
// asked for register after register.
//
// Ownership: none. A map that changes or goes is to be forgotten first.
//
// A map answers by walking its groups, which is the quickest for the few
// registers that nearly every index has. Asked for each of the thousands that
// were merged into one, it would walk them thousands of times: such groups are
// sorted when they are asked for the second time.
#ifndef KPT_POLARITIES_H
#define KPT_POLARITIES_H

#include <boost/unordered/unordered_flat_map.hpp>
#include <vector>

#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_types.h"

class KPT_POLARITIES {
 public:
  struct GROUP_MEMBERSHIP {
    bool in_n_group;
    bool in_i_group;
    bool anywhere() const { return in_n_group || in_i_group; }
  };

  explicit KPT_POLARITIES(KPT_SET_ENUM side) : m_side(side) {}

  GROUP_MEMBERSHIP of(const KPT_TRANSFORMATION_IMPL& map, const KPT_KEYPOINT* keypoint);
  /// The groups of the side have changed places.
  void exchanged(const KPT_TRANSFORMATION_IMPL& map);
  void forget(const KPT_TRANSFORMATION_IMPL& map) { m_large.erase(&map); }

 private:
  using KEYPOINTS = std::vector<const KPT_KEYPOINT*, MEM_STL_ALLOCATOR<const KPT_KEYPOINT*>>;
  struct GROUPS {
    bool sorted = false;
    KEYPOINTS n;
    KEYPOINTS i;
  };
  static void sort(GROUPS& groups, const NI_PAIR& pair);

  KPT_SET_ENUM m_side;
  boost::unordered_flat_map<const KPT_TRANSFORMATION_IMPL*, GROUPS, boost::hash<const KPT_TRANSFORMATION_IMPL*>,
                            std::equal_to<>, MEM_STL_ALLOCATOR<std::pair<const KPT_TRANSFORMATION_IMPL* const, GROUPS>>>
      m_large;
};

#endif
