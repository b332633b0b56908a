#include "db/kpt/kpt_keypoint_index.h"

KPT_KEYPOINT_INDEX::KPT_KEYPOINT_INDEX(const POOL& pool) : m_pool(pool), m_entries(0, HASH(), EQUAL{&pool}) {}

// The string hash leaves names that differ in their last bytes close
// together; the product spreads them before half of the bits are dropped.
KPT_KEYPOINT_INDEX::PROBE KPT_KEYPOINT_INDEX::probe_for(const KEY& key) {
  constexpr std::uint64_t SPREAD = 0x9E3779B97F4A7C15U;
  const std::uint64_t hash = KPT_STRINGPAIR_HASH_COMPARE()({key.name, key.register_type});
  return {key, static_cast<std::uint32_t>((hash * SPREAD) >> 32U)};
}

bool KPT_KEYPOINT_INDEX::EQUAL::operator()(const PROBE& probe, const ENTRY& entry) const {
  if (probe.hash != entry.hash) {
    return false;
  }
  const KEY key = pool->at(entry.place)->key();
  return key.name == probe.key.name && key.register_type == probe.key.register_type;
}

bool KPT_KEYPOINT_INDEX::EQUAL::operator()(const ENTRY& a, const ENTRY& b) const {
  return a.hash == b.hash && (*this)({pool->at(a.place)->key(), a.hash}, b);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::find(const KEY& key) const {
  const auto found = m_entries.find(probe_for(key));
  return found == m_entries.end() ? nullptr : m_pool.at(found->place);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::enter(std::uint32_t place) {
  const auto [entry, is_new] = m_entries.insert({place, probe_for(m_pool.at(place)->key()).hash});
  if (is_new) {
    return nullptr;
  }
  KPT_REGISTER_KEYPOINT_IMPL* earlier = m_pool.at(entry->place);
  entry->place = place;
  return earlier;
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_INDEX::remove(const KEY& key) {
  const auto found = m_entries.find(probe_for(key));
  if (found == m_entries.end()) {
    return nullptr;
  }
  KPT_REGISTER_KEYPOINT_IMPL* keypoint = m_pool.at(found->place);
  m_entries.erase(found);
  return keypoint;
}
