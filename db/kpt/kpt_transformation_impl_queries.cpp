// What a consumer asks a map: equivalents, unateness, the state table.
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/msg_kpt.h"

KPT_KEYPOINT_LIST KPT_TRANSFORMATION_IMPL::equivalents(KPT_SET_ENUM side, unsigned long index) const {
  KPT_KEYPOINT_LIST list;
  const KEYPOINTS own = representative_group(side, index);
  list.reserve(own.empty() ? 0 : own.size() - 1);
  for_each_equivalent(side, index, [&](KPT_KEYPOINT* keypoint) { list.push_back(keypoint); });
  return list;
}

KPT_KEYPOINT_LIST KPT_TRANSFORMATION_IMPL::inverted_equivalents(KPT_SET_ENUM side, unsigned long index) const {
  KPT_KEYPOINT_LIST list;
  list.reserve(opposite_group(side, index).size());
  for_each_inverted_equivalent(side, index, [&](KPT_KEYPOINT* keypoint) { list.push_back(keypoint); });
  return list;
}

KPT_KEYPOINT_LIST KPT_TRANSFORMATION_IMPL::registers_at_index(KPT_SET_ENUM side, unsigned long index) const {
  KPT_KEYPOINT_LIST list;
  list.reserve(representative_group(side, index).size() + opposite_group(side, index).size());
  for_each_register_at_index(side, index, [&](KPT_KEYPOINT* keypoint) { list.push_back(keypoint); });
  return list;
}

void KPT_TRANSFORMATION_IMPL::report_empty_index(KPT_SET_ENUM side) {
  kpt_msg_debug(side == KPT_REFERENCE_SET ? "Info: R side of map seems to be empty"
                                          : "Info: T side of map seems to be empty");
}

// The representatives are those of the given indices, but both must be at
// index 0, where the search looks. The table is then asked about its first
// columns.
bool KPT_TRANSFORMATION_IMPL::register_association_is_unate(unsigned long r_index, unsigned long t_index,
                                                            KPT_UNATE_ENUM unate) const {
  bool r_found = false;
  bool t_found = false;
  const unsigned short r_column = find_index(KPT_REFERENCE_SET, representative(KPT_REFERENCE_SET, r_index), &r_found);
  const unsigned short t_column =
      find_index(KPT_TRANSFORMED_SET, representative(KPT_TRANSFORMED_SET, t_index), &t_found);
  if (!r_found || !t_found) {
    return false;
  }
  if (m_fsm_flag) {
    return unate != KPT_POSITIVE_UNATE ? state_table().check_negative_unateness(r_column, t_column)
                                       : state_table().check_positive_unateness(r_column, t_column);
  }
  const bool both_n = representative_is_in_n_group(KPT_REFERENCE_SET, r_index) &&
                      representative_is_in_n_group(KPT_TRANSFORMED_SET, t_index);
  const bool both_i = representative_is_in_i_group(KPT_REFERENCE_SET, r_index) &&
                      representative_is_in_i_group(KPT_TRANSFORMED_SET, t_index);
  return unate == (both_n || both_i ? KPT_POSITIVE_UNATE : KPT_NEGATIVE_UNATE);
}

KPT_STATE_TABLE_IMPL KPT_TRANSFORMATION_IMPL::get_register_state_table() const { return state_table(); }
