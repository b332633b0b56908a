// From the ids of a file to the keypoints of one side.
//
// Ownership: none; the keypoints belong to their set.
//
// Ids mostly lie close together, and then their keypoints stand in one array;
// ids that a file spreads far apart go to a hash table, so that the index costs
// what the registers weigh.
#ifndef KPT_ID_INDEX_H
#define KPT_ID_INDEX_H

#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_types.h"

class KPT_ID_INDEX {
 public:
  /// Enters what the set holds now. Of two keypoints with one id the later in
  /// walking order counts.
  void fill(const KPT_KEYPOINT_SET_IMPL& set);
  /// Null for an id that no keypoint has.
  KPT_KEYPOINT* find(long id) const;

 private:
  long m_least = 0;
  std::vector<KPT_KEYPOINT*, MEM_STL_ALLOCATOR<KPT_KEYPOINT*>> m_near;  // by id, from the least
  KPT_ID_KEYPOINT_HASH m_far;                                           // used when the array is not
};

#endif
