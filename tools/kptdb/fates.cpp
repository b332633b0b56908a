#include "fates.h"

#include <fmt/format.h>

namespace kptdb {

namespace {

bool is_constant(const KPT_REGISTER_TRANSFORMATION& map) { return map.is_stuck_at_zero() || map.is_stuck_at_one(); }

// In a machine, the status is about the first reference index alone, and all other columns have the same fate.
KPT_FATE_ENUM fate_at(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index) {
  const bool is_other_column = map.has_fsm() && (side == KPT_TRANSFORMED_SET || index > 0);
  const std::size_t told = is_other_column ? map.get_number_of_indices(KPT_REFERENCE_SET) - 1 : index;
  const KPT_FATE_ENUM fate = map.get_fate(static_cast<unsigned short>(told));
  return is_other_column && fate == KPT_FATE_CONSTANT ? KPT_FATE_MACHINE : fate;
}

}  // namespace

std::string_view fate_word(KPT_FATE_ENUM fate) {
  return fate == KPT_FATE_WITHOUT_FANOUT ? "without_fanout" : kpt_fate_word(fate);
}

std::string fate_text(const FATE& fate) {
  return fate.word == KPT_FATE_CONSTANT ? fmt::format("constant {}", fate.value ? 1 : 0) : kpt_fate_word(fate.word);
}

// The status is the value of the map's first register, which is inverted only when no other is there.
bool constant_at(const KPT_REGISTER_TRANSFORMATION& map, bool inverting) {
  const KPT_SET_ENUM told = has_members(map, KPT_REFERENCE_SET) ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
  const bool of_inverse = map.get_group(told, 0, false).empty();
  return map.is_stuck_at_one() != (of_inverse != inverting);
}

FATE FATES::of(const REGISTER& reg) {
  if (reg.map.is_null() || reg.map.get_number_of_indices(KPT_REFERENCE_SET) == 0) {
    return {};
  }
  if (!reg.map.has_fsm() && !is_constant(reg.map) && reg.map.get_number_of_indices(reg.side) <= 1) {
    return {fate_at(reg.map, reg.side, 0)};
  }
  if (m_read.insert(reg.map).second) {
    remember(reg.map);
  }
  const auto found = m_fates.find(reg.keypoint);
  return found == m_fates.end() ? FATE() : found->second;
}

// A register that stands in several places has the fate of the first one.
void FATES::remember(const KPT_REGISTER_TRANSFORMATION& map) {
  const bool values[] = {is_constant(map) && constant_at(map, false), is_constant(map) && constant_at(map, true)};
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for_each_place(map, side, [&](std::size_t index, bool inverting, const KPT_REGISTER_KEYPOINT& reg) {
      m_fates.try_emplace(reg, FATE{fate_at(map, side, index), values[inverting ? 1 : 0]});
    });
  }
}

void put_parts(JSON_LINE& line, const REGISTER& reg, const FATE& fate) {
  line.add("side", side_word(reg.side));
  line.add("id", reg.keypoint.get_id());
  line.add("kind", register_kind_word(reg.keypoint));
  put_parts(line, reg.keypoint);
  line.add("fate", fate_word(fate.word));
}

void put(JSON_LINE& line, const REGISTER& reg, const FATE& fate) {
  line.open_object();
  put_parts(line, reg, fate);
  line.close_object();
}

}  // namespace kptdb
