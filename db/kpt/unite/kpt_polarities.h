// Finds the group of a register at index 0 of one side of a map, for many
// registers one after the other.
//
// Ownership: none. Call `forget` before a map is changed or deleted.
//
// A map finds the group by walking over its registers. That is the fastest way
// for the few registers that nearly every index has. But when thousands of
// registers were merged into one, a walk for each would take very long. Such
// groups are sorted at the second question.
#ifndef KPT_POLARITIES_H
#define KPT_POLARITIES_H

#include <boost/unordered/unordered_flat_map.hpp>

#include "db/kpt/containers/kpt_sorted_set.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_types.h"

class KPT_POLARITIES {
 public:
  using GROUP_MEMBERSHIP = KPT_TRANSFORMATION_IMPL::GROUP_MEMBERSHIP;

  explicit KPT_POLARITIES(KPT_SET_ENUM side) : m_side(side) {}

  GROUP_MEMBERSHIP of(const KPT_TRANSFORMATION_IMPL& map, const KPT_KEYPOINT* keypoint);
  /// The two groups of every index of the side were swapped.
  void exchanged(const KPT_TRANSFORMATION_IMPL& map);
  void forget(const KPT_TRANSFORMATION_IMPL& map) { m_large.erase(&map); }

 private:
  using KEYPOINTS = KPT_SORTED_SET<const KPT_KEYPOINT*>;
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
