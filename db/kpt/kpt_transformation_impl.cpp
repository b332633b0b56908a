// The map's structure: how it is made, copied and compared, and the groups of its
// two sides.
#include "db/kpt/kpt_transformation_impl.h"

#include <algorithm>
#include <utility>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/msg_kpt.h"

// Nearly every register has a map of its own, and a plain map needs no further allocation.
static_assert(sizeof(KPT_TRANSFORMATION_IMPL) <= 104);

namespace {

constexpr bool PLAIN = false;
constexpr bool FSM = true;

NI_PAIR_VECTOR single_pair(KPT_KEYPOINT* keypoint) {
  NI_PAIR_VECTOR side(1);
  side.front().first.push_back(keypoint);
  return side;
}

// One index for each register, in list order.
NI_PAIR_VECTOR pair_per_register(const KPT_KEYPOINT_LIST& registers) {
  NI_PAIR_VECTOR side(registers.size());
  auto pair = side.begin();
  for (KPT_KEYPOINT* keypoint : registers) {
    pair->first.push_back(keypoint);
    ++pair;
  }
  return side;
}

// State 1 is 0/0, state 2 is 1/1.
KPT_STATE_TABLE_IMPL identity_of_one_register() {
  KPT_STATE_TABLE_IMPL table(2, 1, 1);
  table.set_reference_entry(2, 1, true);
  table.set_transformed_entry(2, 1, true);
  return table;
}

// Made when the library is loaded, because a client may ask for it at process exit.
const KPT_STATE_TABLE_IMPL s_plain_table = identity_of_one_register();

template <class LIST>
auto position_in(LIST& group, const KPT_KEYPOINT* keypoint) {
  return std::find(group.begin(), group.end(), keypoint);
}

}  // namespace

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(KPT_KEYPOINT* reference, KPT_KEYPOINT* transformed)
    : m_r_vector(single_pair(reference)),
      m_t_vector(single_pair(transformed)),
      m_elim_status(KPT_NOT_ELIMINATED),
      m_fsm_flag(PLAIN) {}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(const KPT_KEYPOINT_LIST& reference_registers,
                                                 const KPT_KEYPOINT_LIST& transformed_registers,
                                                 const KPT_STATE_TABLE_IMPL& table)
    : KPT_TRANSFORMATION_IMPL(pair_per_register(reference_registers), pair_per_register(transformed_registers),
                              KPT_STATE_TABLE_IMPL(table), KPT_NOT_ELIMINATED) {}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(const NI_PAIR_VECTOR& r_vector, const NI_PAIR_VECTOR& t_vector,
                                                 KPT_ELIM_ENUM status)
    : KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR(r_vector), NI_PAIR_VECTOR(t_vector), status) {}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR&& r_vector, NI_PAIR_VECTOR&& t_vector,
                                                 KPT_ELIM_ENUM status)
    : m_r_vector(std::move(r_vector)), m_t_vector(std::move(t_vector)), m_elim_status(status), m_fsm_flag(PLAIN) {}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(const NI_PAIR_VECTOR& r_vector, const NI_PAIR_VECTOR& t_vector,
                                                 const KPT_STATE_TABLE_IMPL& table, KPT_ELIM_ENUM status)
    : KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR(r_vector), NI_PAIR_VECTOR(t_vector), KPT_STATE_TABLE_IMPL(table), status) {
}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR&& r_vector, NI_PAIR_VECTOR&& t_vector,
                                                 KPT_STATE_TABLE_IMPL&& table, KPT_ELIM_ENUM status)
    : m_r_vector(std::move(r_vector)),
      m_t_vector(std::move(t_vector)),
      m_elim_status(status),
      m_fsm_flag(FSM),
      m_state_table(std::make_unique<KPT_STATE_TABLE_IMPL>(std::move(table))) {}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(const KPT_TRANSFORMATION_IMPL& other)
    : KPT_ZEROED(other),
      m_r_vector(other.m_r_vector),
      m_t_vector(other.m_t_vector),
      m_elim_status(other.m_elim_status),
      m_fsm_flag(other.m_fsm_flag),
      m_state_table(other.m_state_table == nullptr ? nullptr
                                                   : std::make_unique<KPT_STATE_TABLE_IMPL>(*other.m_state_table)) {}

KPT_TRANSFORMATION_IMPL::~KPT_TRANSFORMATION_IMPL() = default;

bool KPT_TRANSFORMATION_IMPL::operator==(const KPT_TRANSFORMATION_IMPL& other) const {
  return m_fsm_flag == other.m_fsm_flag && state_table() == other.state_table() && m_r_vector == other.m_r_vector &&
         m_t_vector == other.m_t_vector;
}

const KPT_STATE_TABLE_IMPL& KPT_TRANSFORMATION_IMPL::state_table() const {
  return m_state_table == nullptr ? s_plain_table : *m_state_table;
}

KPT_STATE_TABLE_IMPL& KPT_TRANSFORMATION_IMPL::state_table_to_edit() {
  if (m_state_table == nullptr) {
    m_state_table = std::make_unique<KPT_STATE_TABLE_IMPL>(s_plain_table);
  }
  return *m_state_table;
}

unsigned short KPT_TRANSFORMATION_IMPL::get_number_of_states() const {
  return map_has_fsm_transformation() ? state_table().get_num_states() : s_plain_table.get_num_states();
}

KPT_KEYPOINT_LIST* KPT_TRANSFORMATION_IMPL::group_to_edit(KPT_SET_ENUM side, GROUP group, unsigned long index) {
  NI_PAIR_VECTOR& pairs = vec(side);
  if (index >= pairs.size()) {
    return nullptr;
  }
  return group == N_GROUP ? &pairs[index].first : &pairs[index].second;
}

KPT_KEYPOINT* KPT_TRANSFORMATION_IMPL::get_representative_kp(KPT_SET_ENUM set, unsigned long index) const {
  if (set != KPT_REFERENCE_SET && set != KPT_TRANSFORMED_SET) {
    kpt_msg_debug("Error: unknown set type");
    return nullptr;
  }
  return representative(set, index);
}

bool KPT_TRANSFORMATION_IMPL::representative_is_in_n_group(KPT_SET_ENUM side, unsigned long index) const {
  return !group(side, N_GROUP, index).empty();
}

bool KPT_TRANSFORMATION_IMPL::representative_is_in_i_group(KPT_SET_ENUM side, unsigned long index) const {
  return group(side, N_GROUP, index).empty() && !group(side, I_GROUP, index).empty();
}

bool KPT_TRANSFORMATION_IMPL::add_keypoint(KPT_SET_ENUM side, GROUP group, KPT_KEYPOINT* keypoint,
                                           unsigned long index) {
  KPT_KEYPOINT_LIST* keypoints = group_to_edit(side, group, index);
  if (keypoints == nullptr) {
    return false;
  }
  keypoints->push_back(keypoint);
  return true;
}

bool KPT_TRANSFORMATION_IMPL::delete_t_keypoint(GROUP group, const KPT_KEYPOINT* keypoint, unsigned long index) {
  KPT_KEYPOINT_LIST* keypoints = group_to_edit(KPT_TRANSFORMED_SET, group, index);
  if (keypoints == nullptr) {
    return false;
  }
  const auto position = position_in(*keypoints, keypoint);
  if (position == keypoints->end()) {
    return false;
  }
  keypoints->erase(position);
  return true;
}
