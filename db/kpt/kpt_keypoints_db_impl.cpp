#include "db/kpt/kpt_keypoints_db_impl.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "db/kpt/kpt_id_counter.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"

long KPT_KEYPOINTS_DB_IMPL::s_r_id = 0;
long KPT_KEYPOINTS_DB_IMPL::s_t_id = 0;

KPT_KEYPOINTS_DB_IMPL::KPT_KEYPOINTS_DB_IMPL(std::string_view name)
    : m_reference_set(KPT_REFERENCE_SET), m_transformed_set(KPT_TRANSFORMED_SET), m_db_name(name) {}

long KPT_KEYPOINTS_DB_IMPL::get_next_r_id() { return kpt_id_counter::take(s_r_id); }

long KPT_KEYPOINTS_DB_IMPL::get_next_t_id() { return kpt_id_counter::take(s_t_id); }

KPT_KEYPOINTS_DB_IMPL::~KPT_KEYPOINTS_DB_IMPL() {
  if (m_forget != nullptr) {
    m_forget(this);
  }
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_register_set(KPT_SET_ENUM set, long id,
                                                                       std::string_view name) {
  return set_of(set).add_register(id, name);
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_register_set(KPT_SET_ENUM set, long id, std::string_view name,
                                                                       std::string_view entity,
                                                                       std::string_view register_type) {
  return set_of(set).add_register(id, name, entity, register_type);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_transformation_set(const NI_PAIR_VECTOR& r,
                                                                          const NI_PAIR_VECTOR& t,
                                                                          const KPT_STATE_TABLE_IMPL& table,
                                                                          KPT_ELIM_ENUM status) {
  return m_transformation_set.add_map(r, t, table, status);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_transformation_set(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t,
                                                                          KPT_STATE_TABLE_IMPL&& table,
                                                                          KPT_ELIM_ENUM status) {
  return m_transformation_set.add_map(std::move(r), std::move(t), std::move(table), status);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_transformation_set(const NI_PAIR_VECTOR& r,
                                                                          const NI_PAIR_VECTOR& t,
                                                                          KPT_ELIM_ENUM status) {
  return m_transformation_set.add_map(r, t, status);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_to_transformation_set(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t,
                                                                          KPT_ELIM_ENUM status) {
  return m_transformation_set.add_map(std::move(r), std::move(t), status);
}

KPT_STATE_TABLE_IMPL KPT_KEYPOINTS_DB_IMPL::create_state_table_impl(const KPT_STATE_TABLE& table) const {
  const unsigned states = table.get_number_of_states();
  const unsigned r_width = table.get_state_reference_size();
  const unsigned t_width = table.get_state_transformed_size();
  const auto narrow = [](unsigned value) { return static_cast<unsigned short>(value); };
  KPT_STATE_TABLE_IMPL result(narrow(states), narrow(r_width), narrow(t_width));
  for (unsigned s = 1; s <= states; ++s) {
    for (unsigned b = 1; b <= r_width; ++b) {
      result.set_reference_entry(narrow(s), narrow(b), table.get_reference_entry(narrow(s), narrow(b)) != 0);
    }
  }
  for (unsigned s = 1; s <= states; ++s) {
    for (unsigned b = 1; b <= t_width; ++b) {
      result.set_transformed_entry(narrow(s), narrow(b), table.get_transformed_entry(narrow(s), narrow(b)) != 0);
    }
  }
  return result;
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::get_reference_register_transformation(std::string_view name) const {
  return m_transformation_set.get_map_of_slot(KPT_REFERENCE_SET, m_reference_set.get_slot(name));
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::get_transformed_register_transformation(std::string_view name) const {
  return m_transformation_set.get_map_of_slot(KPT_TRANSFORMED_SET, m_transformed_set.get_slot(name));
}

void KPT_KEYPOINTS_DB_IMPL::move_id_counters_past_own_ids() {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    long& counter = id_counter(side);
    set_of(side).for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
      const long id = keypoint->get_kpid();
      kpt_id_counter::raise(counter, id == std::numeric_limits<long>::max() ? id : id + 1);
      return true;
    });
  }
}
