// Whether the two indexes of a transformation set are what its maps say.
//
// Both indexes are rebuilt from the maps, in order of creation, the last
// writer winning, and compared with what lookups answer. What events do to an
// index beyond that is told as facts; a difference that no fact explains is
// reported, one text each.
//
// Ownership: none. The keypoints in the facts must be alive: their set may
// have deleted them, but not been destroyed.
#ifndef TESTS_SUPPORT_INDEX_CHECKER_H
#define TESTS_SUPPORT_INDEX_CHECKER_H

#include <set>
#include <string>
#include <vector>

#include "db/kpt/kpt_types.h"

namespace kpt_test {

/// What befell one index. A keypoint may be named by several facts; a fact
/// allows, it demands nothing.
struct INDEX_FACTS {
  using KEYPOINTS = std::set<const KPT_KEYPOINT*>;

  /// May have no entry although maps list it: it was eliminated or merged, or
  /// a map that listed it too was deleted.
  KEYPOINTS erased;
  /// May lead to an older map that lists it: a merge or a union entered that
  /// map anew.
  KEYPOINTS repointed;
  /// May lead to a map that does not list it: a union or a replication entered it.
  KEYPOINTS entered;
  /// How many entries may lead to no map, their map having been deleted.
  std::size_t dead = 0;
};

struct EXPLANATIONS {
  INDEX_FACTS r;
  INDEX_FACTS t;
};

/// Empty when all is well.
std::vector<std::string> index_differences(const KPT_TRANSFORMATION_SET_IMPL& maps,
                                           const std::vector<const KPT_KEYPOINT*>& further_keypoints,
                                           const EXPLANATIONS& facts = {});

/// The same for a database: what is in its keypoint sets is looked up too,
/// each register on both sides.
std::vector<std::string> index_differences(KPT_KEYPOINTS_DB_IMPL& db, const EXPLANATIONS& facts = {});

}  // namespace kpt_test

#endif
