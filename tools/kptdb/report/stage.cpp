#include "stage.h"

#include "../model.h"

namespace kptdb {

namespace {

constexpr std::array SIDES{KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

REGISTER_KEY key_of(const KPT_REGISTER_KEYPOINT_IMPL& reg) {
  return {reg.get_element_name(), reg.get_entity_name(), reg.get_register_type(), reg.register_is_signal()};
}

template <class OWNER>
ATTRIBUTES attributes_of(const OWNER& owner) {
  ATTRIBUTES result;
  for (const std::string_view name : {"note", "pass", "stage", "status", "transitions"}) {
    const KPT_STRING value = owner.get_attribute(name);
    if (!value.empty()) {
      result.emplace_back(name, std::string_view(value));
    }
  }
  return result;
}

MAP_REASON reason_of(const KPT_TRANSFORMATION_IMPL& map) {
  switch (map.get_elim_status()) {
    case KPT_STUCK_AT_ZERO:
      return REASON_ZERO;
    case KPT_STUCK_AT_ONE:
      return REASON_ONE;
    case KPT_NO_FANOUT:
      return REASON_NO_FANOUT;
    case KPT_ELIMINATED:
      return REASON_ELIMINATED;
    default:
      return NO_REASON;
  }
}

std::vector<STAGE_MEMBER> members_of(const DATABASE& db, KPT_SET_ENUM side, const KPT_TRANSFORMATION_IMPL& map,
                                     const KPT_KEYPOINT_LIST& group) {
  std::vector<STAGE_MEMBER> result;
  for (const KPT_KEYPOINT* keypoint : group) {
    const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(keypoint);
    if (reg == nullptr) {
      result.push_back({{}, false, false});
    } else {
      result.push_back({key_of(*reg), true, map_of(db, side, keypoint) == &map});
    }
  }
  return result;
}

void read_side(const DATABASE& db, unsigned side, const KPT_TRANSFORMATION_IMPL& map, STAGE_MAP& result) {
  for (const NI_PAIR& pair : side_of(map, SIDES[side])) {
    result.sides[side].push_back(
        {members_of(db, SIDES[side], map, pair.first), members_of(db, SIDES[side], map, pair.second)});
  }
}

void read_table(const KPT_STATE_TABLE_IMPL& table, STAGE_MAP& result) {
  result.states = table.get_num_states();
  result.columns = {table.get_num_reference_registers(), table.get_num_transformed_registers()};
  result.bit = [&table](unsigned side, unsigned state, unsigned column) {
    return static_cast<unsigned>(
        table.get_entry(SIDES[side], static_cast<unsigned short>(state + 1), static_cast<unsigned short>(column + 1)));
  };
}

}  // namespace

std::size_t STAGE::size(unsigned side) const { return m_db.registers(SIDES[side]).size(); }

void STAGE::for_each_register(unsigned side,
                              const std::function<void(const REGISTER_KEY&, const ATTRIBUTES&)>& visit) const {
  m_db.registers(SIDES[side]).for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* reg) {
    visit(key_of(*reg), attributes_of(*reg));
    return true;
  });
}

void STAGE::for_each_map(const std::function<void(const STAGE_MAP&)>& visit) const {
  for (const KPT_TRANSFORMATION_IMPL* map : m_db.maps().get_list_of_register_transformations()) {
    STAGE_MAP result;
    result.is_machine = map->map_has_fsm_transformation();
    result.reason = reason_of(*map);
    result.attributes = attributes_of(*map);
    read_side(m_db, 0, *map, result);
    read_side(m_db, 1, *map, result);
    if (result.is_machine) {
      read_table(map->state_table(), result);
    }
    visit(result);
  }
}

}  // namespace kptdb
