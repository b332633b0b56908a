#include "db/kpt/kpt_keypoint_index.h"

#include <bit>

KPT_KEYPOINT_INDEX::KPT_KEYPOINT_INDEX(const POOL& pool) : m_pool(pool) {}

bool KPT_KEYPOINT_INDEX::stands_for(const ENTRY& entry, const KEY& key, std::uint32_t hash) const {
  if (entry.hash != hash) {
    return false;
  }
  const KEY its_key = keypoint(entry)->key();
  return its_key.name == key.name && its_key.register_type == key.register_type;
}

// The position of the key's entry, or of the free entry where it belongs.
std::size_t KPT_KEYPOINT_INDEX::position_of(const KEY& key, std::uint32_t hash) const {
  std::size_t at = home(hash);
  while (m_entries[at].slot != 0 && !stands_for(m_entries[at], key, hash)) {
    at = after(at);
  }
  return at;
}

// A free entry has slot 0; 0 minus 1 is NO_SLOT.
std::uint32_t KPT_KEYPOINT_INDEX::find_slot(const KPT_REGISTER_TEXTS& texts) const {
  return m_size == 0 ? NO_SLOT : m_entries[position_of({texts.name, texts.register_type}, texts.hash)].slot - 1U;
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::find(const KPT_REGISTER_TEXTS& texts) const {
  const std::uint32_t slot = find_slot(texts);
  return slot == NO_SLOT ? nullptr : m_pool.at(slot);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::enter(std::uint32_t slot, std::uint32_t hash) {
  make_room();
  ENTRY& entry = m_entries[position_of(m_pool.at(slot)->key(), hash)];
  KPT_REGISTER_KEYPOINT_IMPL* earlier = entry.slot == 0 ? nullptr : keypoint(entry);
  entry = {slot + 1U, hash};
  m_size += earlier == nullptr ? 1U : 0U;
  return earlier;
}

bool KPT_KEYPOINT_INDEX::remove(std::uint32_t slot, std::uint32_t hash) {
  if (m_size == 0) {
    return false;
  }
  std::size_t at = home(hash);
  while (m_entries[at].slot != slot + 1U) {
    if (m_entries[at].slot == 0) {
      return false;
    }
    at = after(at);
  }
  close_gap(at);
  --m_size;
  return true;
}

// Moves entries back into the gap that a removal leaves, so that a search does
// not end before its entry: those whose search from their home passes the gap.
void KPT_KEYPOINT_INDEX::close_gap(std::size_t gap) {
  const std::size_t mask = m_entries.size() - 1;
  for (std::size_t at = after(gap); m_entries[at].slot != 0; at = after(at)) {
    const std::size_t steps = (at - home(m_entries[at].hash)) & mask;
    if (steps >= ((at - gap) & mask)) {
      m_entries[gap] = m_entries[at];
      gap = at;
    }
  }
  m_entries[gap] = {};
}

// At most three quarters of the entries are used. Entries are moved roughly in the
// order of their hashes, so the new table is filled from one end to the other.
void KPT_KEYPOINT_INDEX::make_room() {
  constexpr std::size_t FEWEST = 8;
  if (4 * (m_size + 1) <= 3 * m_entries.size()) {
    return;
  }
  const std::size_t wanted = m_entries.empty() ? FEWEST : 2 * m_entries.size();
  decltype(m_entries) before(wanted);
  before.swap(m_entries);
  m_shift = 32U - static_cast<unsigned>(std::countr_zero(wanted));
  for (const ENTRY& entry : before) {
    if (entry.slot != 0) {
      std::size_t at = home(entry.hash);
      while (m_entries[at].slot != 0) {
        at = after(at);
      }
      m_entries[at] = entry;
    }
  }
}

void KPT_KEYPOINT_INDEX::fetch_entry(std::uint32_t hash) const {
  if (m_size != 0) {
    __builtin_prefetch(&m_entries[home(hash)]);
  }
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::first_with(std::uint32_t hash) const {
  if (m_size == 0) {
    return nullptr;
  }
  std::size_t at = home(hash);
  while (m_entries[at].slot != 0 && m_entries[at].hash != hash) {
    at = after(at);
  }
  return m_entries[at].slot == 0 ? nullptr : keypoint(m_entries[at]);
}

void KPT_KEYPOINT_INDEX::fetch_keypoint(std::uint32_t hash) const { __builtin_prefetch(first_with(hash)); }

void KPT_KEYPOINT_INDEX::fetch_name(std::uint32_t hash) const {
  const KPT_REGISTER_KEYPOINT_IMPL* wanted = first_with(hash);
  if (wanted != nullptr) {
    __builtin_prefetch(wanted->get_element_name().data());
  }
}
