#include "db/kpt/kpt_keypoint_set_impl.h"

#include <atomic>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_id_counter.h"
#include "db/kpt/kpt_xml_writer.h"

namespace {

// Numbers of sets begin at 1, because 0 means that a keypoint is in no set. Two bits hold the side.
std::uint32_t next_set_number() {
  constexpr std::uint32_t END = UINT32_MAX >> 2U;
  static std::atomic<std::uint64_t> s_made = 0;
  const std::uint64_t number = s_made.fetch_add(1, std::memory_order_relaxed) % (END - 1) + 1;
  return static_cast<std::uint32_t>(number) << 2U;
}

}  // namespace

KPT_KEYPOINT_SET_IMPL::KPT_KEYPOINT_SET_IMPL()
    : m_number(next_set_number()), m_signal_registers(m_keypoints), m_instance_registers(m_keypoints) {}

KPT_KEYPOINT_SET_IMPL::KPT_KEYPOINT_SET_IMPL(KPT_SET_ENUM side) : KPT_KEYPOINT_SET_IMPL() {
  m_number |= side == KPT_REFERENCE_SET ? KPT_KEYPOINT::REFERENCE : KPT_KEYPOINT::TRANSFORMED;
}

// In order of creation: the slots are side by side, while the indexes have a
// random order in memory.
KPT_KEYPOINT_SET_IMPL::~KPT_KEYPOINT_SET_IMPL() {
  for (std::uint32_t k = 0; k < m_keypoints.count(); ++k) {
    std::destroy_at(m_keypoints.at(k));
  }
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::construct(long id, const KPT_REGISTER_TEXTS& texts) {
  return texts.is_signal ? m_keypoints.construct(id, texts.name)
                         : m_keypoints.construct(id, texts.name, texts.entity, texts.register_type);
}

// Retired until it has an entry: if the index runs out of memory, the keypoint
// stays in the pool but is not in the set.
KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add_register(long id, const KPT_REGISTER_TEXTS& texts) {
  const std::uint32_t slot = m_keypoints.count();
  m_standings.resize(std::size_t{slot} + 1, RETIRED);
  m_hashes.resize(std::size_t{slot} + 1);
  m_hashes[slot] = texts.hash;
  KPT_REGISTER_KEYPOINT_IMPL* keypoint = construct(id, texts);
  keypoint->m_set = m_number;
  keypoint->m_slot = slot;
  KPT_REGISTER_KEYPOINT_IMPL* earlier = index(texts.is_signal).enter(slot, texts.hash);
  m_standings[slot] = texts.is_signal ? AMONG_SIGNALS : AMONG_INSTANCES;
  if (earlier != nullptr) {
    retire(*earlier);
  }
  return keypoint;
}

void KPT_KEYPOINT_SET_IMPL::retire(KPT_REGISTER_KEYPOINT_IMPL& keypoint) {
  m_standings[keypoint.m_slot] = RETIRED;
  keypoint.retire();
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add_register(long id, std::string_view name) {
  return add_register(id, KPT_REGISTER_TEXTS(name));
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add_register(long id, std::string_view name, std::string_view entity,
                                                                std::string_view register_type) {
  return add_register(id, KPT_REGISTER_TEXTS(name, entity, register_type));
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_register(const KPT_REGISTER_TEXTS& texts) const {
  return index(texts.is_signal).find(texts);
}

KPT_KEYPOINT::POOL_SLOT KPT_KEYPOINT_SET_IMPL::get_slot(const KPT_REGISTER_TEXTS& texts) const {
  const std::uint32_t slot = index(texts.is_signal).find_slot(texts);
  return slot == KPT_KEYPOINT_INDEX::NO_SLOT ? KPT_KEYPOINT::POOL_SLOT()
                                             : KPT_KEYPOINT::POOL_SLOT{m_number, slot, m_keypoints.at(slot)};
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_register(std::string_view name) const {
  return get_register(KPT_REGISTER_TEXTS(name));
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_register(std::string_view name, std::string_view entity,
                                                                std::string_view register_type) const {
  return get_register(KPT_REGISTER_TEXTS(name, entity, register_type));
}

// The present texts of a register. Its hash is nearly always the one with which
// this set entered it.
KPT_REGISTER_TEXTS KPT_KEYPOINT_SET_IMPL::texts_of(const KPT_REGISTER_KEYPOINT_IMPL& keypoint, bool as_signal) const {
  const bool as_entered =
      keypoint.m_set == m_number && keypoint.is_as_entered() && keypoint.register_is_signal() == as_signal;
  const std::string_view name = keypoint.get_element_name();
  if (as_signal) {
    return as_entered ? KPT_REGISTER_TEXTS(name, m_hashes[keypoint.m_slot]) : KPT_REGISTER_TEXTS(name);
  }
  const std::string_view entity = keypoint.get_entity_name();
  const std::string_view type = keypoint.get_register_type();
  return as_entered ? KPT_REGISTER_TEXTS(name, entity, type, m_hashes[keypoint.m_slot])
                    : KPT_REGISTER_TEXTS(name, entity, type);
}

KPT_REGISTER_TEXTS KPT_KEYPOINT_SET_IMPL::get_texts(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const {
  return texts_of(keypoint, keypoint.register_is_signal());
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const {
  const KPT_STRING& name = keypoint.get_element_name();
  return keypoint.register_is_signal() ? get_register(name)
                                       : get_register(name, keypoint.get_entity_name(), keypoint.get_register_type());
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                                                const KPT_KEYPOINT_SET_IMPL& other) const {
  return get_register(other.texts_of(keypoint, keypoint.register_is_signal()));
}

// A look-up waits for an entry, a keypoint and a name, one after the other and
// each anywhere in memory. The walk prefetches them.
void KPT_KEYPOINT_SET_IMPL::fetch_namesakes_behind(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                                   const KPT_KEYPOINT_SET_IMPL& other) const {
  constexpr std::size_t STEP = 8;
  const auto fetch = [&](std::size_t slot, void (KPT_KEYPOINT_INDEX::*what)(std::uint32_t) const) {
    if (slot < other.m_hashes.size() && other.m_standings[slot] != RETIRED) {
      (index(other.m_standings[slot] == AMONG_SIGNALS).*what)(other.m_hashes[slot]);
    }
  };
  fetch(keypoint.m_slot + 3 * STEP, &KPT_KEYPOINT_INDEX::fetch_entry);
  fetch(keypoint.m_slot + 2 * STEP, &KPT_KEYPOINT_INDEX::fetch_keypoint);
  fetch(keypoint.m_slot + STEP, &KPT_KEYPOINT_INDEX::fetch_name);
}

bool KPT_KEYPOINT_SET_IMPL::remove(KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
  if (keypoint == nullptr) {
    return false;
  }
  const std::uint32_t slot = keypoint->m_slot;
  index(m_standings[slot] == AMONG_SIGNALS).remove(slot, m_hashes[slot]);
  retire(*keypoint);
  return true;
}

bool KPT_KEYPOINT_SET_IMPL::delete_register(std::string_view name) { return remove(get_register(name)); }

bool KPT_KEYPOINT_SET_IMPL::delete_register(std::string_view name, std::string_view entity,
                                            std::string_view register_type) {
  return remove(get_register(name, entity, register_type));
}

bool KPT_KEYPOINT_SET_IMPL::delete_namesake(KPT_REGISTER_KEYPOINT_IMPL& keypoint) {
  const bool stands_here = keypoint.m_set == m_number && m_standings[keypoint.m_slot] != RETIRED;
  return remove(stands_here && keypoint.is_as_entered() ? &keypoint : get_namesake(keypoint));
}

void KPT_KEYPOINT_SET_IMPL::take_back(KPT_REGISTER_KEYPOINT_IMPL& keypoint) {
  if (m_standings[keypoint.m_slot] != RETIRED) {
    remove(&keypoint);
  }
}

// The first `count` steps visit the signals, the next `count` steps the block instances.
KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::walk(std::size_t& step, std::size_t count) const {
  const std::size_t end = m_instance_registers.size() > 0 ? 2 * count : count;
  while (step < end) {
    const std::size_t slot = step < count ? step : step - count;
    const STANDING wanted = step < count ? AMONG_SIGNALS : AMONG_INSTANCES;
    ++step;
    if (m_standings[slot] == wanted) {
      return m_keypoints.at(static_cast<std::uint32_t>(slot));
    }
  }
  return nullptr;
}

KPT_KEYPOINT_LIST KPT_KEYPOINT_SET_IMPL::get_list_of_keypoints() const {
  KPT_KEYPOINT_LIST list;
  list.reserve(size());
  for_each_keypoint([&](KPT_KEYPOINT* keypoint) {
    list.push_back(keypoint);
    return true;
  });
  return list;
}

KPT_ID_KEYPOINT_HASH KPT_KEYPOINT_SET_IMPL::get_id_keypoint_hash() const {
  KPT_ID_KEYPOINT_HASH by_id;
  by_id.reserve(size());
  for_each_keypoint([&](KPT_KEYPOINT* keypoint) {
    by_id.insert_or_assign(keypoint->get_kpid(), keypoint);
    return true;
  });
  return by_id;
}

bool KPT_KEYPOINT_SET_IMPL::is_empty() const { return size() == 0; }

bool KPT_KEYPOINT_SET_IMPL::make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id) {
  return make_union(other, next_id, nullptr);
}

// The index in which the other set has a register decides what is looked up and
// added, even if the register's kind has been changed.
bool KPT_KEYPOINT_SET_IMPL::make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id, KPT_NAMESAKES* namesakes) {
  other.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    fetch_namesakes_behind(*keypoint, other);
    const bool as_signal = other.m_standings[keypoint->m_slot] == AMONG_SIGNALS;
    const KPT_REGISTER_TEXTS texts = other.texts_of(*keypoint, as_signal);
    KPT_REGISTER_KEYPOINT_IMPL* namesake = get_register(texts);
    if (namesake == nullptr) {
      namesake = add_register(kpt_id_counter::take_next(next_id), texts);
    }
    if (namesakes != nullptr && keypoint->register_is_signal() == as_signal) {
      namesakes->at(KPT_KEYPOINT::slot_of(keypoint)) = namesake;
    }
    return true;
  });
  return true;
}

bool KPT_KEYPOINT_SET_IMPL::save_keypoint_set(KPT_SET_ENUM set, KPT_XML_WRITER& writer) const {
  bool ok = true;
  writer.start_tag(kpt_words::KEY_POINTS_SET);
  writer.write_attribute(kpt_words::TYPE, kpt_words::name_of(set));
  writer.new_line();
  for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    writer.step();
    ok = keypoint->save_register(writer);
    return ok;
  });
  writer.space();
  writer.end_tag(kpt_words::KEY_POINTS_SET);
  return ok;
}
