#include "db/kpt/kpt_map_index.h"

namespace {

// Never 0, which is an unclaimed keypoint's number.
std::uint32_t next_index_id() {
  static std::uint32_t s_last = 0;
  if (++s_last == 0) {
    ++s_last;
  }
  return s_last;
}

}  // namespace

KPT_MAP_INDEX::KPT_MAP_INDEX(KPT_INDEX_KIND kind) : m_id(next_index_id()), m_kind(kind) {}

std::uint32_t KPT_MAP_INDEX::find_among_others(const KPT_KEYPOINT* keypoint) const {
  const auto found = m_others.find(keypoint);
  return found == m_others.end() ? 0 : found->second;
}

// A keypoint whose entry is already in the hash keeps it there, also when its
// own room has become free: one keypoint never has two entries.
void KPT_MAP_INDEX::set(const KPT_KEYPOINT* keypoint, std::uint32_t position) {
  if (keypoint == nullptr) {
    return;
  }
  if (keypoint->m_index_id == m_id) {
    keypoint->m_index_position = position;
    return;
  }
  const bool claimable = m_kind == KPT_INDEX_IN_KEYPOINTS && keypoint->m_index_id == 0;
  if (claimable && (m_others.empty() || !m_others.contains(keypoint))) {
    keypoint->m_index_id = m_id;
    keypoint->m_index_position = position;
    ++m_claimed;
    return;
  }
  m_others.insert_or_assign(keypoint, position);
}

void KPT_MAP_INDEX::set_if_absent(const KPT_KEYPOINT* keypoint, std::uint32_t position) {
  if (find(keypoint) == 0) {
    set(keypoint, position);
  }
}

bool KPT_MAP_INDEX::erase(const KPT_KEYPOINT* keypoint) {
  if (keypoint == nullptr) {
    return false;
  }
  if (keypoint->m_index_id == m_id) {
    keypoint->m_index_id = 0;
    keypoint->m_index_position = 0;
    --m_claimed;
    return true;
  }
  return !m_others.empty() && m_others.erase(keypoint) > 0;
}

void KPT_MAP_INDEX::reserve(std::size_t entries) {
  if (m_kind == KPT_INDEX_APART) {
    m_others.reserve(entries);
  }
}
