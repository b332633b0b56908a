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
  // The ids of a file are ints, so their difference fits.
  const auto cells = static_cast<std::size_t>(most - m_least) + 1;
  if (cells / MOST_CELLS_A_KEYPOINT > set.size()) {
    fill_far(set);
    return;
  }
  m_near.resize(cells);
  set.for_each_keypoint([&](KPT_KEYPOINT* keypoint) {
    m_near[static_cast<std::size_t>(keypoint->get_kpid() - m_least)] = keypoint;
    return true;
  });
}

void KPT_ID_INDEX::fill_far(const KPT_KEYPOINT_SET_IMPL& set) {
  m_far.reserve(set.size());
  set.for_each_keypoint([&](KPT_KEYPOINT* keypoint) {
    m_far.push_back({keypoint->get_kpid(), keypoint});
    return true;
  });
  std::stable_sort(m_far.begin(), m_far.end(), [](const ENTRY& a, const ENTRY& b) { return a.id < b.id; });
}

KPT_KEYPOINT* KPT_ID_INDEX::find(long id) const {
  if (!m_near.empty()) {
    const auto cell = static_cast<std::size_t>(id - m_least);
    return cell < m_near.size() ? m_near[cell] : nullptr;
  }
  // The last of the entries with that id.
  const auto behind = std::upper_bound(m_far.begin(), m_far.end(), id,
                                       [](long wanted, const ENTRY& entry) { return wanted < entry.id; });
  return behind == m_far.begin() || behind[-1].id != id ? nullptr : behind[-1].keypoint;
}
