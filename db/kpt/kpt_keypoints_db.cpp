#include "db/kpt/kpt_keypoints_db.h"

#include <cassert>

#include "db/kpt/kpt_keypoint_set.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_transformation_set.h"

KPT_KEYPOINTS_DB_IMPL& KPT_KEYPOINTS_DB::impl() const {
  assert(m_impl != nullptr);
  return *m_impl;
}

bool KPT_KEYPOINTS_DB::associate_registers_signal_to_signal(std::string_view r_name, std::string_view t_name) const {
  return impl().associate_registers_signal_to_signal(r_name, t_name);
}

bool KPT_KEYPOINTS_DB::associate_registers_signal_to_instance(std::string_view r_name, std::string_view t_name,
                                                              std::string_view t_entity,
                                                              std::string_view t_register_type) const {
  return impl().associate_registers_signal_to_instance(r_name, t_name, t_entity, t_register_type);
}

bool KPT_KEYPOINTS_DB::associate_registers_instance_to_signal(std::string_view r_name, std::string_view r_entity,
                                                              std::string_view r_register_type,
                                                              std::string_view t_name) const {
  return impl().associate_registers_instance_to_signal(r_name, r_entity, r_register_type, t_name);
}

bool KPT_KEYPOINTS_DB::associate_registers_instance_to_instance(std::string_view r_name, std::string_view r_entity,
                                                                std::string_view r_register_type,
                                                                std::string_view t_name, std::string_view t_entity,
                                                                std::string_view t_register_type) const {
  return impl().associate_registers_instance_to_instance(r_name, r_entity, r_register_type, t_name, t_entity,
                                                         t_register_type);
}

bool KPT_KEYPOINTS_DB::associate_registers_fsm_signals(const KPT_STRING_VECTOR& r_names,
                                                       const KPT_STRING_VECTOR& t_names,
                                                       const KPT_STATE_TABLE& table) const {
  return impl().associate_registers_fsm_signals(r_names, t_names, table);
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                               KPT_ELIM_ENUM status) const {
  return KPT_REGISTER_TRANSFORMATION(impl().associate_groups(r, t, nullptr, status));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                               const KPT_STATE_TABLE& table,
                                                               KPT_ELIM_ENUM status) const {
  return KPT_REGISTER_TRANSFORMATION(impl().associate_groups(r, t, &table, status));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::add_groups_as_they_are(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                                     const KPT_STATE_TABLE* table,
                                                                     KPT_ELIM_ENUM status) const {
  return KPT_REGISTER_TRANSFORMATION(impl().add_groups_as_they_are(r, t, table, status));
}

KPT_REGISTER_KEYPOINT KPT_KEYPOINTS_DB::add_register_without_map(KPT_SET_ENUM side,
                                                                 const KPT_REGISTER_NAME& name) const {
  return KPT_REGISTER_KEYPOINT(impl().add_register_without_map(side, name));
}

bool KPT_KEYPOINTS_DB::compose(const KPT_KEYPOINTS_DB_LIST& stages, const KPT_COMPOSITION_OPTIONS& options,
                               KPT_COMPOSITION_REPORT* report) const {
  KPT_COMPOSITION::STAGES impls;
  for (const KPT_KEYPOINTS_DB& stage : stages) {
    impls.push_back(&stage.impl());
  }
  KPT_COMPOSITION composition(std::move(impls), options);
  const bool ok = composition.compose(impl());
  if (report != nullptr) {
    *report = composition.report();
  }
  return ok;
}

bool KPT_KEYPOINTS_DB::set_replicated_registers(std::string_view t_name, std::string_view replica_name) const {
  return impl().set_replicated_registers(t_name, replica_name);
}

bool KPT_KEYPOINTS_DB::set_merged_registers(std::string_view kept_name, std::string_view merged_name) const {
  return impl().set_merged_registers(kept_name, merged_name);
}

bool KPT_KEYPOINTS_DB::set_inverter_retimed_register(std::string_view t_name) const {
  return impl().set_inverter_retimed_register(t_name);
}

bool KPT_KEYPOINTS_DB::set_eliminated_register_stuck_at_zero(std::string_view t_name) const {
  return impl().set_eliminated_register_stuck_at_zero(t_name);
}

bool KPT_KEYPOINTS_DB::set_eliminated_register_stuck_at_one(std::string_view t_name) const {
  return impl().set_eliminated_register_stuck_at_one(t_name);
}

bool KPT_KEYPOINTS_DB::set_eliminated_register_no_fanout(std::string_view t_name) const {
  return impl().set_eliminated_register_no_fanout(t_name);
}

bool KPT_KEYPOINTS_DB::set_eliminated_register(std::string_view t_name) const {
  return impl().set_eliminated_register(t_name);
}

KPT_TRANSFORMATION_SET KPT_KEYPOINTS_DB::get_transformation_set() const {
  return KPT_TRANSFORMATION_SET(impl().get_transformation_set());
}

const KPT_STRING& KPT_KEYPOINTS_DB::get_name() const { return impl().get_db_name(); }

KPT_KEYPOINT_SET KPT_KEYPOINTS_DB::get_reference_set() const { return KPT_KEYPOINT_SET(impl().get_reference_set()); }

KPT_KEYPOINT_SET KPT_KEYPOINTS_DB::get_transformed_set() const {
  return KPT_KEYPOINT_SET(impl().get_transformed_set());
}

bool KPT_KEYPOINTS_DB::unite(const KPT_KEYPOINTS_DB& other, KPT_PROGRESS* progress) const {
  return impl().unite_db(other.impl(), progress);
}

bool KPT_KEYPOINTS_DB::save(std::string_view file_name) const { return impl().save(file_name); }

bool KPT_KEYPOINTS_DB::save_atomically(std::string_view file_name, KPT_PROGRESS* progress) const {
  return impl().save_atomically(file_name, progress);
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::get_reference_register_transformation(std::string_view name) const {
  return KPT_REGISTER_TRANSFORMATION(impl().get_reference_register_transformation(name));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::get_transformed_register_transformation(std::string_view name) const {
  return KPT_REGISTER_TRANSFORMATION(impl().get_transformed_register_transformation(name));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::get_reference_register_transformation(
    const KPT_REGISTER_KEYPOINT& keypoint) const {
  return KPT_REGISTER_TRANSFORMATION(impl().get_transformation_set()->get_map_of_r_keypoint(keypoint.m_impl));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::get_transformed_register_transformation(
    const KPT_REGISTER_KEYPOINT& keypoint) const {
  return KPT_REGISTER_TRANSFORMATION(impl().get_transformation_set()->get_map_of_t_keypoint(keypoint.m_impl));
}

KPT_REGISTER_TRANSFORMATION KPT_KEYPOINTS_DB::get_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const {
  const auto side = keypoint.is_null() ? std::nullopt : keypoint.get_side();
  if (!side.has_value()) {
    return KPT_REGISTER_TRANSFORMATION();
  }
  return *side == KPT_REFERENCE_SET ? get_reference_register_transformation(keypoint)
                                    : get_transformed_register_transformation(keypoint);
}

KPT_KEYPOINT_SET KPT_KEYPOINTS_DB::get_set(KPT_SET_ENUM side) const {
  return side == KPT_REFERENCE_SET ? get_reference_set() : get_transformed_set();
}

void KPT_KEYPOINTS_DB::move_id_counters_past_own_ids() const { impl().move_id_counters_past_own_ids(); }

bool KPT_KEYPOINTS_DB::delete_keypoints_db() {
  KPT_KEYPOINTS_DB_IMPL* const db = m_impl;
  delete db;
  // The manager has done so already when this is its entry, at which other
  // threads may be looking.
  if (m_impl != nullptr) {
    m_impl = nullptr;
  }
  return db != nullptr;
}
