// What an optimisation pass does to the transformed side of a map. When an
// operation fails, its earlier edits stay.
#include <algorithm>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/msg_kpt.h"

bool KPT_TRANSFORMATION_IMPL::add_replicated_register(KPT_REGISTER_KEYPOINT_IMPL* existing,
                                                      KPT_REGISTER_KEYPOINT_IMPL* replica) {
  bool found = false;
  const unsigned short index = find_index_in_t_vector(existing, &found);
  if (!found) {
    return false;
  }
  const GROUP group = keypoint_is_in_t_n_group_of_map(existing, index) ? N_GROUP : I_GROUP;
  return add_keypoint(KPT_TRANSFORMED_SET, group, replica, index);
}

bool KPT_TRANSFORMATION_IMPL::set_inverter_retimed_register(KPT_KEYPOINT* retimed) {
  bool found = false;
  const unsigned short index = find_index_in_t_vector(retimed, &found);
  if (!found) {
    kpt_msg_debug("Error: Could not find retimed_kp in t_vector");
    return false;
  }
  if (change_t_group(retimed, N_GROUP, I_GROUP, index) || change_t_group(retimed, I_GROUP, N_GROUP, index)) {
    return true;
  }
  kpt_msg_debug("Error: Neither in t_n nor in t_i groups of map");
  return false;
}

// When the keypoint is not in `from`: false, and nothing changes. The table gets
// the index unchanged, because flipping counts columns from 0.
bool KPT_TRANSFORMATION_IMPL::change_t_group(KPT_KEYPOINT* keypoint, GROUP from, GROUP to, unsigned short index) {
  if (!keypoint_is_in(KPT_TRANSFORMED_SET, from, keypoint, index)) {
    return false;
  }
  if (map_has_fsm_transformation()) {
    state_table_to_edit().make_room_to_flip();  // the flip comes last and must not fail
  }
  const bool before = t_representative_is_in_n_group_of_map(index);
  add_keypoint(KPT_TRANSFORMED_SET, to, keypoint, index);
  delete_t_keypoint(from, keypoint, index);
  const bool after = t_representative_is_in_n_group_of_map(index);
  if (map_has_fsm_transformation() && before != after) {
    state_table_to_edit().flip_bits_of_t_column(index);
  }
  return true;
}

bool KPT_TRANSFORMATION_IMPL::set_eliminated(KPT_KEYPOINT* keypoint, KPT_ELIM_ENUM status) {
  bool found = false;
  const unsigned short index = find_index_in_t_vector(keypoint, &found);
  if (!found) {
    kpt_msg_debug("Error: Couldn't find index in t_vector");
    return false;
  }
  switch (status) {
    case KPT_STUCK_AT_ZERO:
    case KPT_STUCK_AT_ONE:
      return set_stuck_at(keypoint, index, status);
    case KPT_NO_FANOUT:
      return set_no_fanout(keypoint, index);
    default:
      return false;
  }
}

// Stores the status as soon as the register is removed, even when others of its
// group stay: they have the same constant. Readers of the map rely on it, even
// when removing the index then fails.
bool KPT_TRANSFORMATION_IMPL::set_stuck_at(const KPT_KEYPOINT* keypoint, unsigned short index, KPT_ELIM_ENUM status) {
  const bool last = is_last_t_register(keypoint, index);
  if (!delete_eliminated(keypoint, index)) {
    return false;
  }
  m_elim_status = status;
  return !last || !map_has_fsm_transformation() || erase_entry_in_t_state_vector(index);
}

// When only inverted registers of a machine's bit stay, the column keeps the
// value of the register that is gone, because flows compare the tables. A reader
// cannot see this, so an attribute says that the table is not to be read.
//
// The table gets the index, which counts from 0, as a column, which counts from
// 1. The search finds only index 0, and column 0 means the first column. Flows
// compare the columns that remain, so the index is passed unchanged, whatever it
// is.
bool KPT_TRANSFORMATION_IMPL::set_no_fanout(const KPT_KEYPOINT* keypoint, unsigned short index) {
  const bool last = is_last_t_register(keypoint, index);
  if (last && map_has_fsm_transformation() && m_t_vector.size() >= 2) {
    const bool removed = state_table_to_edit().remove_t_column(index);
    m_elim_status = KPT_NO_FANOUT;
    return removed && erase_entry_in_t_state_vector(index);
  }
  if (!last && map_has_fsm_transformation() && is_last_of_representatives(keypoint, index)) {
    add_attribute(KPT_PARTIAL, KPT_PARTIAL_TABLE);
  }
  if (!delete_eliminated(keypoint, index)) {
    return false;
  }
  if (last) {
    m_elim_status = KPT_NO_FANOUT;
  }
  return true;
}

bool KPT_TRANSFORMATION_IMPL::is_last_t_register(const KPT_KEYPOINT* keypoint, unsigned long index) const {
  const auto is_it = [&](const KPT_KEYPOINT* listed) { return listed == keypoint; };
  const KEYPOINTS own = representative_group(KPT_TRANSFORMED_SET, index);
  const KEYPOINTS opposite = opposite_group(KPT_TRANSFORMED_SET, index);
  return std::all_of(own.begin(), own.end(), is_it) && std::all_of(opposite.begin(), opposite.end(), is_it);
}

bool KPT_TRANSFORMATION_IMPL::is_last_of_representatives(const KPT_KEYPOINT* keypoint, unsigned long index) const {
  const KEYPOINTS own = representative_group(KPT_TRANSFORMED_SET, index);
  return std::all_of(own.begin(), own.end(), [&](const KPT_KEYPOINT* listed) { return listed == keypoint; });
}

bool KPT_TRANSFORMATION_IMPL::delete_eliminated(const KPT_KEYPOINT* keypoint, unsigned long index) {
  if (delete_t_keypoint(N_GROUP, keypoint, index) || delete_t_keypoint(I_GROUP, keypoint, index)) {
    return true;
  }
  kpt_msg_debug("Error: Didn't set elim status");
  return false;
}

bool KPT_TRANSFORMATION_IMPL::erase_entry_in_t_state_vector(unsigned short index) {
  if (index >= m_t_vector.size()) {
    return false;
  }
  m_t_vector.erase(m_t_vector.begin() + index);
  return true;
}

bool KPT_TRANSFORMATION_IMPL::interchange_registers_in_n_i_groups_of_map(KPT_SET_ENUM set) {
  if (set != KPT_REFERENCE_SET && set != KPT_TRANSFORMED_SET) {
    kpt_msg_debug("Error: Unknown set Type");
    return false;
  }
  for (NI_PAIR& pair : vec(set)) {
    pair.first.swap(pair.second);
  }
  return true;
}

void KPT_TRANSFORMATION_IMPL::interchange_groups_of_both_sides() {
  interchange_registers_in_r_n_i_groups_of_map();
  interchange_registers_in_t_n_i_groups_of_map();
}

bool KPT_TRANSFORMATION_IMPL::update_state_table(unsigned short a, unsigned short b) {
  KPT_STATE_TABLE_IMPL& table = state_table_to_edit();
  return table.remove_invalid_rows(a, b) && table.remove_t_column(b);
}
