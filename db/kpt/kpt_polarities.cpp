#include "db/kpt/kpt_polarities.h"

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

KPT_POLARITIES::STANDING KPT_POLARITIES::of(const KPT_TRANSFORMATION_IMPL& map, const KPT_KEYPOINT* keypoint) {
  constexpr std::size_t FEW = 16;
  const NI_PAIR_VECTOR& side = m_side == KPT_REFERENCE_SET ? map.r_vec() : map.t_vec();
  if (side.empty()) {
    return {false, false};
  }
  const NI_PAIR& pair = side.front();
  if (pair.first.size() + pair.second.size() <= FEW) {
    return {contains(pair.first, keypoint), contains(pair.second, keypoint)};
  }
  const GROUPS& groups = sorted(map, pair);
  return {contains_sorted(groups.n, keypoint), contains_sorted(groups.i, keypoint)};
}

const KPT_POLARITIES::GROUPS& KPT_POLARITIES::sorted(const KPT_TRANSFORMATION_IMPL& map, const NI_PAIR& pair) {
  const auto [entry, is_new] = m_sorted.try_emplace(&map);
  GROUPS& groups = entry->second;
  if (is_new) {
    groups.n.assign(pair.first.begin(), pair.first.end());
    groups.i.assign(pair.second.begin(), pair.second.end());
    std::sort(groups.n.begin(), groups.n.end(), std::less<>());
    std::sort(groups.i.begin(), groups.i.end(), std::less<>());
  }
  return groups;
}

void KPT_POLARITIES::exchanged(const KPT_TRANSFORMATION_IMPL& map) {
  const auto entry = m_sorted.find(&map);
  if (entry != m_sorted.end()) {
    entry->second.n.swap(entry->second.i);
  }
}
