// Finds the keypoints of one side by the ids of a file.
//
// Ownership: none; the keypoints belong to their set.
//
// Most ids are close together; their keypoints are then in one array. Ids that
// are far apart are sorted, so the memory depends only on the number of
// registers. There is no hash, because whoever writes a file can choose its ids.
#ifndef KPT_ID_INDEX_H
#define KPT_ID_INDEX_H

#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_types.h"

class KPT_ID_INDEX {
 public:
  /// Enters the present registers of the set. Of two keypoints with one id, the
  /// later in walking order counts.
  void fill(const KPT_KEYPOINT_SET_IMPL& set);
  /// Null when no keypoint has the id.
  KPT_KEYPOINT* find(long id) const;

 private:
  struct ENTRY {
    long id;
    KPT_KEYPOINT* keypoint;
  };

  void fill_far(const KPT_KEYPOINT_SET_IMPL& set);

  long m_least = 0;
  std::vector<KPT_KEYPOINT*, MEM_STL_ALLOCATOR<KPT_KEYPOINT*>> m_near;  // by id, from the lowest
  std::vector<ENTRY, MEM_STL_ALLOCATOR<ENTRY>> m_far;                   // sorted by id; used when the array is empty
};

#endif
