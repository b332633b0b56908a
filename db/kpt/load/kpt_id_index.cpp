#include "db/kpt/load/kpt_id_index.h"

#include <algorithm>
#include <cstddef>

#include "db/kpt/kpt_register_keypoint_impl.h"

void KPT_ID_INDEX::fill(const KPT_KEYPOINT_SET_IMPL& set) {
  constexpr std::size_t MOST_CELLS_A_KEYPOINT = 4;
  m_near.clear();
  m_far.clear();
  bool any = false;
  long most = 0;
  set.for_each_keypoint([&](const KPT_KEYPOINT* keypoint) {
    const long id = keypoint->get_kpid();
    m_least = any ? std::min(m_least, id) : id;
    most = any ? std::max(most, id) : id;
    any = true;
    return true;
  });
  if (!any) {
    return;
  }
  // Ids of a file are ints, so the difference of two fits.
  const auto cells = static_cast<std::size_t>(most - m_least) + 1;
  if (cells / MOST_CELLS_A_KEYPOINT > set.size()) {
    m_far = set.get_id_keypoint_hash();
    return;
  }
  m_near.resize(cells);
  set.for_each_keypoint([&](KPT_KEYPOINT* keypoint) {
    m_near[static_cast<std::size_t>(keypoint->get_kpid() - m_least)] = keypoint;
    return true;
  });
}

KPT_KEYPOINT* KPT_ID_INDEX::find(long id) const {
  if (!m_near.empty()) {
    const auto cell = static_cast<std::size_t>(id - m_least);
    return cell < m_near.size() ? m_near[cell] : nullptr;
  }
  const auto found = m_far.find(id);
  return found == m_far.end() ? nullptr : found->second;
}
