#include "db/kpt/unite/kpt_polarities.h"

KPT_POLARITIES::GROUP_MEMBERSHIP KPT_POLARITIES::of(const KPT_TRANSFORMATION_IMPL& map, const KPT_KEYPOINT* keypoint) {
  const NI_PAIR_VECTOR& side = m_side == KPT_REFERENCE_SET ? map.r_vec() : map.t_vec();
  if (side.empty() || side.front().first.size() + side.front().second.size() <= KPT_MOST_WALKED) {
    return map.membership(m_side, keypoint);
  }
  const auto [entry, is_first] = m_large.try_emplace(&map);
  if (is_first) {
    return map.membership(m_side, keypoint);
  }
  GROUPS& groups = entry->second;
  if (!groups.sorted) {
    sort(groups, side.front());
  }
  return {groups.n.contains(keypoint), groups.i.contains(keypoint)};
}

// Not before the second question: a map that grows between two questions would be
// sorted for each.
void KPT_POLARITIES::sort(GROUPS& groups, const NI_PAIR& pair) {
  const auto fill = [](KEYPOINTS& keypoints, const KPT_KEYPOINT_LIST& group) {
    keypoints.reserve(group.size());
    for (const KPT_KEYPOINT* keypoint : group) {
      keypoints.add(keypoint);
    }
    keypoints.sort();
  };
  fill(groups.n, pair.first);
  fill(groups.i, pair.second);
  groups.sorted = true;
}

void KPT_POLARITIES::exchanged(const KPT_TRANSFORMATION_IMPL& map) {
  const auto entry = m_large.find(&map);
  if (entry != m_large.end()) {
    entry->second.n.swap(entry->second.i);
  }
}
