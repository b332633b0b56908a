#include "stage.h"

#include <climits>
#include <memory>

namespace kptdb {

namespace {

constexpr std::array SIDES{KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

REGISTER_KEY key_of(const KPT_REGISTER_KEYPOINT& reg) {
  return {reg.get_name(), reg.get_entity_name(), reg.get_type(), reg.is_signal()};
}

template <class OWNER>
ATTRIBUTES attributes_of(const OWNER& owner) {
  ATTRIBUTES result;
  for (const auto& [name, value] : owner.get_attributes()) {
    result.emplace_back(std::string_view(name), std::string_view(value));
  }
  return result;
}

MAP_REASON reason_of(const KPT_REGISTER_TRANSFORMATION& map) {
  switch (map.get_elimination()) {
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

std::vector<STAGE_MEMBER> members_of(const KPT_KEYPOINTS_DB& db, unsigned side, const KPT_REGISTER_TRANSFORMATION& map,
                                     std::size_t index, bool inverted) {
  std::vector<STAGE_MEMBER> result;
  for (const KPT_REGISTER_KEYPOINT reg : map.get_group(SIDES.at(side), index, inverted)) {
    if (reg.is_null()) {
      result.push_back({{}, false, false});
      continue;
    }
    const KPT_REGISTER_TRANSFORMATION found =
        side == 0 ? db.get_reference_register_transformation(reg) : db.get_transformed_register_transformation(reg);
    result.push_back({key_of(reg), true, found == map});
  }
  return result;
}

void read_side(const KPT_KEYPOINTS_DB& db, unsigned side, const KPT_REGISTER_TRANSFORMATION& map, STAGE_MAP& result) {
  const std::size_t count = map.get_number_of_indices(SIDES.at(side));
  for (std::size_t index = 0; index < count; ++index) {
    const bool has_fate = side == 0 && index <= USHRT_MAX;
    result.sides.at(side).push_back({members_of(db, side, map, index, false), members_of(db, side, map, index, true),
                                     has_fate ? map.get_fate(static_cast<unsigned short>(index)) : KPT_FATE_UNKNOWN});
  }
}

void read_table(const KPT_REGISTER_TRANSFORMATION& map, STAGE_MAP& result) {
  const auto table = std::make_shared<const KPT_STATE_TABLE>(map.get_state_table());
  result.states = table->get_number_of_states();
  result.columns = {table->get_state_reference_size(), table->get_state_transformed_size()};
  result.bit = [table](unsigned side, unsigned state, unsigned column) {
    const auto row = static_cast<unsigned short>(state + 1);
    const auto at = static_cast<unsigned short>(column + 1);
    return static_cast<unsigned>(side == 0 ? table->get_reference_entry(row, at)
                                           : table->get_transformed_entry(row, at));
  };
}

}  // namespace

std::size_t STAGE::size(unsigned side) const { return m_db.get_set(SIDES.at(side)).size(); }

void STAGE::for_each_register(unsigned side,
                              const std::function<void(const REGISTER_KEY&, const ATTRIBUTES&)>& visit) const {
  for (const KPT_REGISTER_KEYPOINT& reg : m_db.get_set(SIDES.at(side))) {
    visit(key_of(reg), attributes_of(reg));
  }
}

void STAGE::for_each_map(const std::function<void(const STAGE_MAP&)>& visit) const {
  for (const KPT_REGISTER_TRANSFORMATION& map : m_db.get_transformation_set()) {
    STAGE_MAP result;
    result.is_machine = map.has_fsm();
    result.reason = reason_of(map);
    result.attributes = attributes_of(map);
    read_side(m_db, 0, map, result);
    read_side(m_db, 1, map, result);
    if (result.is_machine) {
      read_table(map, result);
    }
    visit(result);
  }
}

}  // namespace kptdb
