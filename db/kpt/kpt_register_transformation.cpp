#include "db/kpt/kpt_register_transformation.h"

#include <cassert>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_transformation_list.h"

namespace {

KPT_TRANSFORMATION_IMPL& checked(KPT_TRANSFORMATION_IMPL* map) {
  assert(map != nullptr);
  return *map;
}

// A keypoint that is not a register has a null handle.
KPT_REGISTER_KEYPOINT handle(KPT_KEYPOINT* keypoint) { return KPT_REGISTER_GROUP::handle(keypoint); }

const NI_PAIR_VECTOR& side_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? map.r_vec() : map.t_vec();
}

enum RELATION { EQUIVALENT, INVERTED };

// The highest possible number of registers in the list, so that it is allocated once.
std::size_t room_for(const NI_PAIR_VECTOR& side, unsigned short index, RELATION relation) {
  if (index >= side.size()) {
    return 0;
  }
  const NI_PAIR& pair = side[index];
  if (relation == INVERTED) {
    return pair.first.empty() ? 0 : pair.second.size();
  }
  const KPT_KEYPOINT_LIST& own = pair.first.empty() ? pair.second : pair.first;
  return own.empty() ? 0 : own.size() - 1;
}

KPT_REGISTER_KEYPOINT_LIST list_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side, unsigned short index,
                                   RELATION relation) {
  KPT_REGISTER_KEYPOINT_LIST list;
  list.reserve(room_for(side_of(map, side), index, relation));
  const auto append = [&](KPT_KEYPOINT* keypoint) { list.push_back(handle(keypoint)); };
  if (relation == EQUIVALENT) {
    map.for_each_equivalent(side, index, append);
  } else {
    map.for_each_inverted_equivalent(side, index, append);
  }
  return list;
}

}  // namespace

std::uint32_t KPT_REGISTER_TRANSFORMATION::get_number() const {
  return KPT_TRANSFORMATION_LIST::position_of(checked(m_impl));
}

bool KPT_REGISTER_TRANSFORMATION::has_fsm() const { return checked(m_impl).map_has_fsm_transformation(); }

KPT_STATE_TABLE KPT_REGISTER_TRANSFORMATION::get_state_table() const {
  return KPT_STATE_TABLE(checked(m_impl).get_register_state_table());
}

KPT_REGISTER_KEYPOINT KPT_REGISTER_TRANSFORMATION::get_reference(unsigned short index) const {
  return handle(checked(m_impl).get_r_representative(index));
}

KPT_REGISTER_KEYPOINT KPT_REGISTER_TRANSFORMATION::get_transformed(unsigned short index) const {
  return handle(checked(m_impl).get_t_representative(index));
}

KPT_REGISTER_KEYPOINT_LIST KPT_REGISTER_TRANSFORMATION::get_reference_equivalents(unsigned short index) const {
  return list_of(checked(m_impl), KPT_REFERENCE_SET, index, EQUIVALENT);
}

KPT_REGISTER_KEYPOINT_LIST KPT_REGISTER_TRANSFORMATION::get_transformed_equivalents(unsigned short index) const {
  return list_of(checked(m_impl), KPT_TRANSFORMED_SET, index, EQUIVALENT);
}

KPT_REGISTER_KEYPOINT_LIST KPT_REGISTER_TRANSFORMATION::get_reference_inverted_equivalents(unsigned short index) const {
  return list_of(checked(m_impl), KPT_REFERENCE_SET, index, INVERTED);
}

KPT_REGISTER_KEYPOINT_LIST KPT_REGISTER_TRANSFORMATION::get_transformed_inverted_equivalents(
    unsigned short index) const {
  return list_of(checked(m_impl), KPT_TRANSFORMED_SET, index, INVERTED);
}

KPT_REGISTER_GROUP KPT_REGISTER_TRANSFORMATION::get_group(KPT_SET_ENUM side, std::size_t index, bool inverted) const {
  const NI_PAIR_VECTOR& pairs = side_of(checked(m_impl), side);
  if (index >= pairs.size()) {
    return {};
  }
  const KPT_KEYPOINT_LIST& group = inverted ? pairs[index].second : pairs[index].first;
  return {group.begin(), group.size()};
}

std::size_t KPT_REGISTER_TRANSFORMATION::get_number_of_indices(KPT_SET_ENUM side) const {
  return side_of(checked(m_impl), side).size();
}

bool KPT_REGISTER_TRANSFORMATION::is_positive_unate(unsigned short r_index, unsigned short t_index) const {
  return checked(m_impl).association_is_positive_unate(r_index, t_index);
}

bool KPT_REGISTER_TRANSFORMATION::is_negative_unate(unsigned short r_index, unsigned short t_index) const {
  return checked(m_impl).association_is_negative_unate(r_index, t_index);
}

unsigned short KPT_REGISTER_TRANSFORMATION::get_state_reference_size() const {
  return checked(m_impl).get_num_reference_registers();
}

unsigned short KPT_REGISTER_TRANSFORMATION::get_state_transformed_size() const {
  return checked(m_impl).get_num_transformed_registers();
}

unsigned short KPT_REGISTER_TRANSFORMATION::get_number_of_states() const {
  return checked(m_impl).get_number_of_states();
}

KPT_ELIM_ENUM KPT_REGISTER_TRANSFORMATION::get_elimination() const { return checked(m_impl).get_elim_status(); }

bool KPT_REGISTER_TRANSFORMATION::is_stuck_at_zero() const {
  return checked(m_impl).r_representative_is_stuck_at_zero();
}

bool KPT_REGISTER_TRANSFORMATION::is_stuck_at_one() const { return checked(m_impl).r_representative_is_stuck_at_one(); }

KPT_FATE_ENUM KPT_REGISTER_TRANSFORMATION::get_fate(unsigned short r_index) const { return kpt_fate(m_impl, r_index); }

bool KPT_REGISTER_TRANSFORMATION::has_no_fanout() const { return checked(m_impl).has_no_fanout(); }

bool KPT_REGISTER_TRANSFORMATION::add_attribute(std::string_view name, std::string_view value) const {
  return checked(m_impl).add_attribute(name, value);
}

bool KPT_REGISTER_TRANSFORMATION::remove_attribute(std::string_view name) const {
  return checked(m_impl).remove_attribute(name);
}

KPT_STRING KPT_REGISTER_TRANSFORMATION::get_attribute(std::string_view name) const {
  return checked(m_impl).get_attribute(name);
}

KPT_ATTRIBUTE_LIST KPT_REGISTER_TRANSFORMATION::get_attributes() const { return checked(m_impl).attributes().sorted(); }
