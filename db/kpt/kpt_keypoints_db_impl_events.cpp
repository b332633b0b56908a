// The events that optimisation passes report: the look-ups, the new
// keypoints and the debug line of each event. The transformation set changes
// the maps.
#include "db/kpt/containers/kpt_undo.h"
#include "db/kpt/kpt_id_counter.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_texts.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/msg_kpt.h"

namespace {

// A name for a debug line. Names are views, which need not end in a zero byte.
KPT_STRING text(std::string_view name) { return KPT_STRING(name); }

// The register's name in a line. It is copied only if the register was renamed,
// because a line after a change must not fail.
class LINE_NAME {
 public:
  LINE_NAME(std::string_view name, const KPT_KEYPOINT& k) {
    const KPT_STRING& own = k.get_element_name();
    m_copy = own == name ? KPT_STRING() : KPT_STRING(name);
    m_text = own == name ? own.c_str() : m_copy.c_str();
  }
  LINE_NAME(const LINE_NAME&) = delete;
  LINE_NAME& operator=(const LINE_NAME&) = delete;

  const char* c_str() const { return m_text; }

 private:
  KPT_STRING m_copy;
  const char* m_text;
};

}  // namespace

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINTS_DB_IMPL::create(KPT_SET_ENUM set, const KPT_REGISTER_TEXTS& texts) {
  long& counter = id_counter(set);
  const long id = kpt_id_counter::take(counter);
  KPT_UNDO undo([&] { kpt_id_counter::give_back(counter, id); });
  KPT_REGISTER_KEYPOINT_IMPL* const created = set_of(set).add_register(id, texts);
  undo.keep();
  return created;
}

// Undoes `create` for registers that were created last: the next register gets
// the id of the first of them.
void KPT_KEYPOINTS_DB_IMPL::take_back(KPT_SET_ENUM set, const KPT_KEYPOINT_LIST& created) {
  for (std::size_t k = created.size(); k > 0; --k) {
    auto& keypoint = static_cast<KPT_REGISTER_KEYPOINT_IMPL&>(*created[k - 1]);
    const long id = keypoint.get_kpid();
    set_of(set).take_back(keypoint);
    kpt_id_counter::give_back(id_counter(set), id);
  }
}

bool KPT_KEYPOINTS_DB_IMPL::associate(const KPT_REGISTER_TEXTS& r, const KPT_REGISTER_TEXTS& t) {
  if (m_reference_set.get_register(r) != nullptr || m_transformed_set.get_register(t) != nullptr) {
    return false;
  }
  KPT_KEYPOINT_LIST reference;
  KPT_KEYPOINT_LIST transformed;
  KPT_UNDO undo([&] {
    take_back(KPT_REFERENCE_SET, reference);
    take_back(KPT_TRANSFORMED_SET, transformed);
  });
  reference.push_back(create(KPT_REFERENCE_SET, r));
  transformed.push_back(create(KPT_TRANSFORMED_SET, t));
  m_transformation_set.add_map(reference.front(), transformed.front());
  undo.keep();
  return true;
}

bool KPT_KEYPOINTS_DB_IMPL::associate_registers_signal_to_signal(std::string_view r_name, std::string_view t_name) {
  return associate(r_name, t_name);
}

bool KPT_KEYPOINTS_DB_IMPL::associate_registers_signal_to_instance(std::string_view r_name, std::string_view t_name,
                                                                   std::string_view t_entity,
                                                                   std::string_view t_register_type) {
  return associate(r_name, {t_name, t_entity, t_register_type});
}

bool KPT_KEYPOINTS_DB_IMPL::associate_registers_instance_to_signal(std::string_view r_name, std::string_view r_entity,
                                                                   std::string_view r_register_type,
                                                                   std::string_view t_name) {
  return associate({r_name, r_entity, r_register_type}, t_name);
}

bool KPT_KEYPOINTS_DB_IMPL::associate_registers_instance_to_instance(std::string_view r_name, std::string_view r_entity,
                                                                     std::string_view r_register_type,
                                                                     std::string_view t_name, std::string_view t_entity,
                                                                     std::string_view t_register_type) {
  return associate({r_name, r_entity, r_register_type}, {t_name, t_entity, t_register_type});
}

// Both counts have 16 bits, like those of a state table. Of a longer vector, only
// as many names as the count says are used.
bool KPT_KEYPOINTS_DB_IMPL::any_signal_exists(KPT_SET_ENUM set, const KPT_STRING_VECTOR& names) {
  const auto count = static_cast<unsigned short>(names.size());
  for (unsigned short k = 0; k < count; ++k) {
    if (set_of(set).get_register(names[k]) != nullptr) {
      return true;
    }
  }
  return false;
}

// The names are in the order of the state table's columns.
void KPT_KEYPOINTS_DB_IMPL::create_signals(KPT_SET_ENUM set, const KPT_STRING_VECTOR& names,
                                           KPT_KEYPOINT_LIST& created) {
  const auto count = static_cast<unsigned short>(names.size());
  created.reserve(count);
  for (unsigned short k = 0; k < count; ++k) {
    created.push_back(create(set, std::string_view(names[k])));
  }
}

// A name that occurs twice in one vector passes the check. Both keypoints are
// created, and only the map leads to the first one.
bool KPT_KEYPOINTS_DB_IMPL::associate_registers_fsm_signals(const KPT_STRING_VECTOR& r_names,
                                                            const KPT_STRING_VECTOR& t_names,
                                                            const KPT_STATE_TABLE& table) {
  if (any_signal_exists(KPT_REFERENCE_SET, r_names) || any_signal_exists(KPT_TRANSFORMED_SET, t_names)) {
    return false;
  }
  KPT_KEYPOINT_LIST r;
  KPT_KEYPOINT_LIST t;
  KPT_UNDO undo([&] {
    take_back(KPT_REFERENCE_SET, r);
    take_back(KPT_TRANSFORMED_SET, t);
  });
  create_signals(KPT_REFERENCE_SET, r_names, r);
  create_signals(KPT_TRANSFORMED_SET, t_names, t);
  m_transformation_set.add_map(r, t, create_state_table_impl(table));
  undo.keep();
  return true;
}

// A replica that the map refuses stays in the transformed set, because the
// register exists in the netlist.
bool KPT_KEYPOINTS_DB_IMPL::set_replicated_registers(std::string_view t_name, std::string_view replica_name) {
  KPT_REGISTER_KEYPOINT_IMPL* existing = m_transformed_set.get_register(t_name);
  if (existing == nullptr) {
    kpt_msg_debug("%s does not exist in T", text(t_name).c_str());
    return false;
  }
  const KPT_REGISTER_TEXTS texts(replica_name);
  if (m_transformed_set.get_register(texts) != nullptr) {
    kpt_msg_debug("%s already exists in T", text(replica_name).c_str());
    return false;
  }
  const LINE_NAME existing_name(t_name, *existing);
  KPT_REGISTER_KEYPOINT_IMPL* replica = create(KPT_TRANSFORMED_SET, texts);
  KPT_UNDO undo([&] { take_back(KPT_TRANSFORMED_SET, {replica}); });
  m_transformation_set.make_replica_room(replica);
  KPT_TRANSFORMATION_IMPL* map = m_transformation_set.get_map_of_t_keypoint(existing);
  const bool is_replicated = map != nullptr && map->add_replicated_register(existing, replica);
  undo.keep();
  if (!is_replicated) {
    return false;
  }
  m_transformation_set.record_replicated_keypoint_map(replica, map);
  kpt_msg_debug("Replicated register: %s is a replicate of %s", replica->get_element_name().c_str(),
                existing_name.c_str());
  return true;
}

bool KPT_KEYPOINTS_DB_IMPL::set_merged_registers(std::string_view kept_name, std::string_view merged_name) {
  KPT_REGISTER_KEYPOINT_IMPL* kept = m_transformed_set.get_register(kept_name);
  const KPT_REGISTER_TEXTS texts(merged_name);
  KPT_REGISTER_KEYPOINT_IMPL* merged = m_transformed_set.get_register(texts);
  if (kept == nullptr || merged == nullptr) {
    kpt_msg_debug("Error: Can't find %s in T set", text(kept == nullptr ? kept_name : merged_name).c_str());
    return false;
  }
  const LINE_NAME of_kept(kept_name, *kept);
  const LINE_NAME of_merged(merged_name, *merged);
  const bool recorded = m_transformation_set.merge_keypoints(kept, merged) && m_transformed_set.delete_register(texts);
  kpt_msg_debug("Merged registers: %s <- %s", of_kept.c_str(), of_merged.c_str());  // whatever the result
  return recorded;
}

bool KPT_KEYPOINTS_DB_IMPL::set_inverter_retimed_register(std::string_view t_name) {
  KPT_REGISTER_KEYPOINT_IMPL* retimed = m_transformed_set.get_register(t_name);
  if (retimed == nullptr) {
    kpt_msg_debug("Error: Can't find %s in T set", text(t_name).c_str());
    return false;
  }
  kpt_msg_debug("Inverter retimed register %s", text(t_name).c_str());
  return m_transformation_set.set_inverter_retimed_register(retimed);
}

bool KPT_KEYPOINTS_DB_IMPL::set_eliminated_register_stuck_at_zero(std::string_view t_name) {
  kpt_msg_debug("Eliminated register stuck_at_zero %s", text(t_name).c_str());
  return set_eliminated_register(t_name, KPT_STUCK_AT_ZERO);
}

bool KPT_KEYPOINTS_DB_IMPL::set_eliminated_register_stuck_at_one(std::string_view t_name) {
  kpt_msg_debug("Eliminated register stuck_at_one %s", text(t_name).c_str());
  return set_eliminated_register(t_name, KPT_STUCK_AT_ONE);
}

bool KPT_KEYPOINTS_DB_IMPL::set_eliminated_register_no_fanout(std::string_view t_name) {
  kpt_msg_debug("Eliminated register no_fanout %s", text(t_name).c_str());
  return set_eliminated_register(t_name, KPT_NO_FANOUT);
}

bool KPT_KEYPOINTS_DB_IMPL::set_eliminated_register(std::string_view t_name) {
  kpt_msg_debug("Eliminated register %s", text(t_name).c_str());
  return set_eliminated_register(t_name, KPT_ELIMINATED);
}

// The register leaves the transformed set. Its map says what became of it.
bool KPT_KEYPOINTS_DB_IMPL::set_eliminated_register(std::string_view t_name, KPT_ELIM_ENUM kind) {
  const KPT_REGISTER_TEXTS texts(t_name);
  KPT_REGISTER_KEYPOINT_IMPL* eliminated = m_transformed_set.get_register(texts);
  return eliminated != nullptr && m_transformation_set.set_eliminated_map(eliminated, kind) &&
         m_transformed_set.delete_register(texts);
}
