#include "db/kpt/unite/kpt_polarities.h"

#include <algorithm>

namespace {

template <class GROUP>
bool contains(const GROUP& group, const KPT_KEYPOINT* keypoint) {
  return std::find(group.begin(), group.end(), keypoint) != group.end();
}

template <class GROUP>
bool contains_sorted(const GROUP& group, const KPT_KEYPOINT* keypoint) {
  return std::binary_search(group.begin(), group.end(), keypoint, std::less<>());
}

}  // namespace

KPT_POLARITIES::GROUP_MEMBERSHIP KPT_POLARITIES::of(const KPT_TRANSFORMATION_IMPL& map, const KPT_KEYPOINT* keypoint) {
  constexpr std::size_t FEW = 16;
  const NI_PAIR_VECTOR& side = m_side == KPT_REFERENCE_SET ? map.r_vec() : map.t_vec();
  if (side.empty()) {
    return {false, false};
  }
  const NI_PAIR& pair = side.front();
  const bool few = pair.first.size() + pair.second.size() <= FEW;
  const auto [entry, is_first] = few ? std::pair(m_large.end(), true) : m_large.try_emplace(&map);
  if (is_first) {
    return {contains(pair.first, keypoint), contains(pair.second, keypoint)};
  }
  GROUPS& groups = entry->second;
  if (!groups.sorted) {
    sort(groups, pair);
  }
  return {contains_sorted(groups.n, keypoint), contains_sorted(groups.i, keypoint)};
}

// Not before the second question: a map that grows between any two would be
// sorted for each.
void KPT_POLARITIES::sort(GROUPS& groups, const NI_PAIR& pair) {
  groups.n.assign(pair.first.begin(), pair.first.end());
  groups.i.assign(pair.second.begin(), pair.second.end());
  std::sort(groups.n.begin(), groups.n.end(), std::less<>());
  std::sort(groups.i.begin(), groups.i.end(), std::less<>());
  groups.sorted = true;
}

void KPT_POLARITIES::exchanged(const KPT_TRANSFORMATION_IMPL& map) {
  const auto entry = m_large.find(&map);
  if (entry != m_large.end()) {
    entry->second.n.swap(entry->second.i);
  }
}
