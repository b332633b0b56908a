// The union of two databases: what it does to the keypoint sets before and after
// the union of the maps.
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_steps.h"
#include "db/kpt/kpt_ticks.h"
#include "db/kpt/kpt_translation.h"
#include "db/kpt/msg_kpt.h"

// The second database is only read: its maps are translated to the keypoints of
// this database, and the union consumes the translation.
bool KPT_KEYPOINTS_DB_IMPL::unite_db(KPT_KEYPOINTS_DB_IMPL& db2, KPT_PROGRESS* progress) {
  kpt_msg_debug("TIME: Start unite at : %s", gen_get_current_time().c_str());
  const unsigned long start = gen_get_tick_count();
  KPT_TRANSLATION translation(m_transformed_set);
  const std::size_t starts_from = db2.m_reference_set.size();
  const std::size_t ends_in = db2.m_transformed_set.size();
  KPT_STEPS steps(progress, starts_from + ends_in + m_transformation_set.steps_of_union(db2.m_transformation_set));
  steps.begin(starts_from);
  make_complete_db(db2, translation, steps);
  steps.begin(ends_in);
  KPT_TRANSFORMATION_SET_IMPL second;
  const bool ok = m_transformed_set.make_union(db2.m_transformed_set, s_t_id, &translation.namesakes()) &&
                  second.translate_map_set(db2.m_transformation_set, translation) &&
                  m_transformation_set.unite(second, steps) && cleanup_reference_keypoint_set() &&
                  cleanup_transformed_keypoint_set();
  kpt_msg_debug("TIME: Unite time: %s", kpt_ticks_since(start).c_str());
  kpt_msg_debug("TIME: End unite at : %s", gen_get_current_time().c_str());
  if (ok) {
    steps.finish();
  }
  return ok;
}

bool KPT_KEYPOINTS_DB_IMPL::make_complete_db(KPT_KEYPOINTS_DB_IMPL& db2) {
  KPT_TRANSLATION translation(m_transformed_set);
  KPT_STEPS untold(nullptr, 0);
  return make_complete_db(db2, translation, untold);
}

// `t` is the last register that had to be added. It is kept from step to step: a
// register that this database already has is aligned against the pass-through
// map of `t`. Flows compare the groups that result from this. The result is that
// of the last step that did anything, so a later success hides an earlier
// failure.
bool KPT_KEYPOINTS_DB_IMPL::make_complete_db(KPT_KEYPOINTS_DB_IMPL& db2, KPT_TRANSLATION& translation,
                                             KPT_STEPS& steps) {
  bool ok = true;
  KPT_KEYPOINT* t = nullptr;
  db2.m_reference_set.for_each_keypoint([&](KPT_REGISTER_KEYPOINT_IMPL* k) {
    steps.next();
    m_transformed_set.fetch_namesakes_behind(*k, db2.m_reference_set);
    if (translation.of(*k, db2.m_reference_set) == nullptr) {
      ok = add_pass_through(*k);
      t = translation.of(k);
    }
    if (t != nullptr && ok) {
      align_pass_through(t, db2, k);
    }
    return true;
  });
  return ok;
}

bool KPT_KEYPOINTS_DB_IMPL::add_pass_through(const KPT_REGISTER_KEYPOINT_IMPL& k) {
  const KPT_STRING& n = k.get_element_name();
  if (k.register_is_signal()) {
    return associate_registers_signal_to_signal(n, n);
  }
  const KPT_STRING& entity = k.get_entity_name();
  const KPT_STRING& type = k.get_register_type();
  return associate_registers_instance_to_instance(n, entity, type, n, entity, type);
}

// A keypoint at an index above 0 does not count as in the non-inverting group.
void KPT_KEYPOINTS_DB_IMPL::align_pass_through(KPT_KEYPOINT* t, KPT_KEYPOINTS_DB_IMPL& db2, KPT_KEYPOINT* k) {
  KPT_TRANSFORMATION_IMPL* map1 = m_transformation_set.get_map_of_t_keypoint(t);
  KPT_TRANSFORMATION_IMPL* map2 = db2.m_transformation_set.get_map_of_r_keypoint(k);
  if (map1 != nullptr && map2 != nullptr &&
      map1->keypoint_is_in_t_n_group_of_map(t, 0) != map2->keypoint_is_in_r_n_group_of_map(k, 0)) {
    map1->interchange_groups_of_both_sides();
  }
}

bool KPT_KEYPOINTS_DB_IMPL::cleanup_reference_keypoint_set() { return cleanup_keypoint_set(KPT_REFERENCE_SET); }

bool KPT_KEYPOINTS_DB_IMPL::cleanup_transformed_keypoint_set() { return cleanup_keypoint_set(KPT_TRANSFORMED_SET); }

// Each deletion overwrites the result. So the result is that of the last
// deletion, and does not say whether every deletion succeeded.
bool KPT_KEYPOINTS_DB_IMPL::cleanup_keypoint_set(KPT_SET_ENUM set) {
  KPT_KEYPOINT_SET_IMPL& keypoints = set_of(set);
  bool ok = true;
  keypoints.for_each_keypoint([&](KPT_REGISTER_KEYPOINT_IMPL* k) {
    const KPT_TRANSFORMATION_IMPL* map = set == KPT_REFERENCE_SET ? m_transformation_set.get_map_of_r_keypoint(k)
                                                                  : m_transformation_set.get_map_of_t_keypoint(k);
    if (map == nullptr) {
      ok = keypoints.delete_namesake(*k);
    }
    return true;
  });
  return ok;
}
