#include "db/kpt/kpt_transformation_list.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include "db/kpt/kpt_transformation_impl.h"

KPT_TRANSFORMATION_LIST::MAP_POSITION KPT_TRANSFORMATION_LIST::position_of(const KPT_TRANSFORMATION_IMPL& map) {
  return map.m_position;
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_LIST::back() const {
  const auto last = std::find_if(m_cells.rbegin(), m_cells.rend(), [](const auto* map) { return map != nullptr; });
  return last == m_cells.rend() ? nullptr : *last;
}

// A position has 31 bits. A further map is refused as if memory had run out.
void KPT_TRANSFORMATION_LIST::make_room(std::size_t more) {
  constexpr std::size_t LAST_POSITION = INT32_MAX;
  const std::size_t wanted = m_cells.size() + more;
  if (wanted > LAST_POSITION) {
    throw std::bad_alloc();
  }
  if (wanted > m_cells.capacity()) {
    m_cells.reserve(std::max(wanted, 2 * m_cells.capacity()));
  }
}

void KPT_TRANSFORMATION_LIST::append(KPT_TRANSFORMATION_IMPL* map) {
  m_cells.push_back(map);
  map->m_position = static_cast<std::uint32_t>(m_cells.size()) & INT32_MAX;
  ++m_size;
}

bool KPT_TRANSFORMATION_LIST::contains(const KPT_TRANSFORMATION_IMPL* map) const {
  return map != nullptr && at(map->m_position) == map;
}

void KPT_TRANSFORMATION_LIST::remove(const KPT_TRANSFORMATION_IMPL* map) {
  m_cells[map->m_position - 1U] = nullptr;
  --m_size;
}
