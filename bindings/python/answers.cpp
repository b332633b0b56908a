#include "answers.h"

#include <limits>

namespace kpt_python {

namespace {

// Whether it is clear which index of one side belongs to which index of the other.
bool is_plain(const KPT_REGISTER_TRANSFORMATION& map) {
  return !map.has_fsm() && map.get_number_of_indices(KPT_REFERENCE_SET) <= 1 &&
         map.get_number_of_indices(KPT_TRANSFORMED_SET) <= 1;
}

bool has_group(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, bool inverted) {
  return !map.get_group(side, 0, inverted).empty();
}

// A status is the value of the first register, on the reference side if it has one.
bool first_is_inverted(const KPT_REGISTER_TRANSFORMATION& map) {
  const bool has_reference = has_group(map, KPT_REFERENCE_SET, false) || has_group(map, KPT_REFERENCE_SET, true);
  return !has_group(map, has_reference ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET, false);
}

bool is_constant(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  if (!map.is_stuck_at_zero() && !map.is_stuck_at_one()) {
    return false;
  }
  if (place.side == KPT_TRANSFORMED_SET) {
    return is_plain(map);
  }
  return place.index <= std::numeric_limits<unsigned short>::max() &&
         map.get_fate(static_cast<unsigned short>(place.index)) == KPT_FATE_CONSTANT;
}

KPT_FATE_ENUM fate_of_transformed(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  if (is_constant(map, place)) {
    return KPT_FATE_CONSTANT;
  }
  if (map.has_fsm()) {
    // The map has a transformed side, so its reference registers are unknown only if the table does not fit.
    return map.get_fate(0) == KPT_FATE_UNKNOWN ? KPT_FATE_UNKNOWN : KPT_FATE_MACHINE;
  }
  return counterpart(map, place).is_null() ? KPT_FATE_UNKNOWN : KPT_FATE_MAPPED;
}

}  // namespace

std::optional<PLACE> find_place(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side,
                                const KPT_REGISTER_KEYPOINT& keypoint) {
  const std::size_t end = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < end; ++index) {
    for (const bool inverted : {false, true}) {
      for (const KPT_REGISTER_KEYPOINT& listed : map.get_group(side, index, inverted)) {
        if (listed == keypoint) {
          return PLACE{side, index, inverted};
        }
      }
    }
  }
  return std::nullopt;
}

KEYPOINTS registers_of(const KPT_REGISTER_GROUP& group) {
  KEYPOINTS registers;
  registers.reserve(group.size());
  for (const KPT_REGISTER_KEYPOINT& keypoint : group) {
    if (!keypoint.is_null()) {
      registers.push_back(keypoint);
    }
  }
  return registers;
}

KEYPOINTS counterparts(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse) {
  if (!is_plain(map)) {
    return {};
  }
  return registers_of(map.get_group(across(place.side), 0, place.inverted != inverse));
}

KEYPOINTS twins(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse,
                const KPT_REGISTER_KEYPOINT& self) {
  KEYPOINTS registers = registers_of(map.get_group(place.side, place.index, place.inverted != inverse));
  std::erase(registers, self);
  return registers;
}

std::optional<bool> is_inverted(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  if (counterpart(map, place).is_null()) {
    return std::nullopt;
  }
  return has_group(map, across(place.side), false) == place.inverted;
}

KPT_REGISTER_KEYPOINT counterpart(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  const KPT_SET_ENUM side = across(place.side);
  return is_plain(map) ? map.get_group(side, 0, !has_group(map, side, false))[0] : KPT_REGISTER_KEYPOINT();
}

std::optional<bool> constant_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  if (!is_constant(map, place)) {
    return std::nullopt;
  }
  return map.is_stuck_at_one() != (place.inverted != first_is_inverted(map));
}

KPT_FATE_ENUM fate_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  if (place.side == KPT_TRANSFORMED_SET) {
    return fate_of_transformed(map, place);
  }
  return place.index <= std::numeric_limits<unsigned short>::max()
             ? map.get_fate(static_cast<unsigned short>(place.index))
             : KPT_FATE_UNKNOWN;
}

const char* fate_word(KPT_FATE_ENUM fate) {
  return fate == KPT_FATE_WITHOUT_FANOUT ? "without_fanout" : kpt_fate_word(fate);
}

std::shared_ptr<const KPT_STATE_TABLE> table_of(const KPT_REGISTER_TRANSFORMATION& map) {
  if (!map.has_fsm()) {
    return nullptr;
  }
  auto table = std::make_shared<const KPT_STATE_TABLE>(map.get_state_table());
  const bool fits = map.get_number_of_indices(KPT_REFERENCE_SET) == table->get_state_reference_size() &&
                    map.get_number_of_indices(KPT_TRANSFORMED_SET) == table->get_state_transformed_size();
  return fits ? table : nullptr;
}

}  // namespace kpt_python
