#include "db/kpt/kpt_keypoint_set_impl.h"

#include "db/kpt/kpt_translation.h"
#include "db/kpt/kpt_xml_writer.h"

namespace {

// Numbers of sets begin at 1: 0 marks a keypoint outside every set.
std::uint32_t next_set_number() {
  static std::uint32_t s_last = 0;
  s_last = s_last + 1 == UINT32_MAX ? 1 : s_last + 1;
  return s_last;
}

}  // namespace

KPT_KEYPOINT_SET_IMPL::KPT_KEYPOINT_SET_IMPL()
    : m_number(next_set_number()), m_signal_registers(m_keypoints), m_instance_registers(m_keypoints) {}

// In order of creation: the places lie side by side, where the order of the
// indexes would jump about in memory.
KPT_KEYPOINT_SET_IMPL::~KPT_KEYPOINT_SET_IMPL() {
  for (std::uint32_t k = 0; k < m_keypoints.count(); ++k) {
    std::destroy_at(m_keypoints.at(k));
  }
}

template <class... TEXTS>
KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add(KPT_KEYPOINT_INDEX& index, STANDING standing, long id,
                                                       TEXTS... texts) {
  // Retired until it is entered: were the index to run out of memory, the
  // keypoint would stay in the pool but not in the set.
  m_standings.push_back(RETIRED);
  KPT_REGISTER_KEYPOINT_IMPL* keypoint = m_keypoints.construct(id, texts...);
  keypoint->m_set = m_number;
  keypoint->m_place = m_keypoints.count() - 1;
  KPT_REGISTER_KEYPOINT_IMPL* earlier = index.enter(keypoint->m_place);
  m_standings[keypoint->m_place] = standing;
  if (earlier != nullptr) {
    retire(*earlier);
  }
  return keypoint;
}

void KPT_KEYPOINT_SET_IMPL::retire(KPT_REGISTER_KEYPOINT_IMPL& keypoint) {
  m_standings[keypoint.m_place] = RETIRED;
  keypoint.retire();
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add_register(long id, std::string_view name) {
  return add(m_signal_registers, AMONG_SIGNALS, id, name);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::add_register(long id, std::string_view name, std::string_view entity,
                                                                std::string_view register_type) {
  return add(m_instance_registers, AMONG_INSTANCES, id, name, entity, register_type);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_register(std::string_view name) const {
  return m_signal_registers.find({name, {}});
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_register(std::string_view name, std::string_view /*entity*/,
                                                                std::string_view register_type) const {
  return m_instance_registers.find({name, register_type});
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const {
  const KPT_STRING& name = keypoint.get_element_name();
  return keypoint.register_is_signal() ? get_register(name)
                                       : get_register(name, keypoint.get_entity_name(), keypoint.get_register_type());
}

bool KPT_KEYPOINT_SET_IMPL::remove(KPT_KEYPOINT_INDEX& index, const KPT_KEYPOINT_INDEX::KEY& key) {
  KPT_REGISTER_KEYPOINT_IMPL* keypoint = index.remove(key);
  if (keypoint == nullptr) {
    return false;
  }
  retire(*keypoint);
  return true;
}

bool KPT_KEYPOINT_SET_IMPL::delete_register(std::string_view name) { return remove(m_signal_registers, {name, {}}); }

bool KPT_KEYPOINT_SET_IMPL::delete_register(std::string_view name, std::string_view /*entity*/,
                                            std::string_view register_type) {
  return remove(m_instance_registers, {name, register_type});
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

// The index in which the other set has the register decides what is added,
// whatever kind the register has been made since.
KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINT_SET_IMPL::find_or_add(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                                               STANDING standing, long& next_id) {
  const KPT_STRING& name = keypoint.get_element_name();
  if (standing == AMONG_SIGNALS) {
    KPT_REGISTER_KEYPOINT_IMPL* found = get_register(name);
    return found != nullptr ? found : add_register(++next_id, name);
  }
  const KPT_STRING& entity = keypoint.get_entity_name();
  const KPT_STRING& type = keypoint.get_register_type();
  KPT_REGISTER_KEYPOINT_IMPL* found = get_register(name, entity, type);
  return found != nullptr ? found : add_register(++next_id, name, entity, type);
}

bool KPT_KEYPOINT_SET_IMPL::make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id) {
  return make_union(other, next_id, nullptr);
}

bool KPT_KEYPOINT_SET_IMPL::make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id, KPT_TRANSLATION* translation) {
  bool ok = true;
  other.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    const STANDING standing = other.m_standings[keypoint->m_place];
    KPT_REGISTER_KEYPOINT_IMPL* namesake = find_or_add(*keypoint, standing, next_id);
    ok = namesake != nullptr && ok;
    if (translation != nullptr && namesake != nullptr &&
        keypoint->register_is_signal() == (standing == AMONG_SIGNALS)) {
      translation->remember(keypoint, namesake);
    }
    return true;
  });
  return ok;
}

bool KPT_KEYPOINT_SET_IMPL::save_keypoint_set(KPT_SET_ENUM set, KPT_XML_WRITER& writer) const {
  bool ok = true;
  writer.start_tag("key_points_set");
  writer.write_attribute("type", set == KPT_REFERENCE_SET ? "reference" : "transformed");
  writer.new_line();
  for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    ok = keypoint->save_register(writer);
    return ok;
  });
  writer.space();
  writer.end_tag("key_points_set");
  return ok;
}
