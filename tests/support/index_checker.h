// Checks that the two indexes of a transformation set agree with its maps.
//
// Both indexes are built again from the maps, in order of creation, so that the
// last map wins. They are then compared with the results of look-ups. The caller
// passes what events did to an index as facts. A difference that no fact explains
// is reported as one text.
//
// Ownership: none. The keypoints in the facts must exist: their set may have
// deleted them, but must not have been destroyed.
#ifndef TESTS_SUPPORT_INDEX_CHECKER_H
#define TESTS_SUPPORT_INDEX_CHECKER_H

#include <set>
#include <string>
#include <vector>

#include "db/kpt/kpt_types.h"

namespace kpt_test {

/// What happened to one index. Several facts may name a keypoint. A fact allows a
/// difference and does not demand it.
struct INDEX_FACTS {
  using KEYPOINTS = std::set<const KPT_KEYPOINT*>;

  /// May have no entry although maps list it: it was eliminated or merged, or
  /// another map that listed it was deleted.
  KEYPOINTS erased;
  /// May lead to an older map that lists it: a merge or a union entered that map
  /// again.
  KEYPOINTS repointed;
  /// May lead to a map that does not list it: a union or a replication entered it.
  KEYPOINTS entered;
  /// How many entries may lead to no map, because their map was deleted.
  std::size_t dead = 0;
};

struct EXPLANATIONS {
  INDEX_FACTS r;
  INDEX_FACTS t;
};

/// Empty when there is no difference.
std::vector<std::string> index_differences(const KPT_TRANSFORMATION_SET_IMPL& maps,
                                           const std::vector<const KPT_KEYPOINT*>& further_keypoints,
                                           const EXPLANATIONS& facts = {});

/// The same for a database: it also looks up the registers of its keypoint sets,
/// each on both sides.
std::vector<std::string> index_differences(KPT_KEYPOINTS_DB_IMPL& db, const EXPLANATIONS& facts = {});

}  // namespace kpt_test

#endif
