// What a map says of one of its registers. Whatever it does not say for certain is
// unknown: of a map with several indices and no state machine it is open which of
// them belongs to which, and a machine whose table has not the size of its sides
// says nothing.
//
// Ownership: answers point into the database and are good until it changes.
#ifndef KPT_PYTHON_ANSWERS_H
#define KPT_PYTHON_ANSWERS_H

#include <memory>
#include <optional>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_python {

/// Where a side of a map lists a register.
struct PLACE {
  KPT_SET_ENUM side;
  std::size_t index;
  bool inverted;
};
std::optional<PLACE> find_place(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side,
                                const KPT_REGISTER_KEYPOINT& keypoint);

inline KPT_SET_ENUM across(KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET;
}

using KEYPOINTS = std::vector<KPT_REGISTER_KEYPOINT>;

/// The registers of a group, without what is no register.
KEYPOINTS registers_of(const KPT_REGISTER_GROUP& group);
/// The registers of the other side that carry the value of the one at `place`, or its inverse.
KEYPOINTS counterparts(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse);
/// The same for the other registers of its own side.
KEYPOINTS twins(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse,
                const KPT_REGISTER_KEYPOINT& self);
/// Whether the representative of the other side carries the inverse. Empty when that is not known.
std::optional<bool> is_inverted(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// That representative; null when there is none, or none that is known to be its successor.
KPT_REGISTER_KEYPOINT counterpart(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// The value of a register that is always the same.
std::optional<bool> constant_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// What became of a reference register, or where a transformed one comes from.
KPT_FATE_ENUM fate_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// "constant", "machine", "mapped", "without_fanout" or "unknown".
const char* fate_word(KPT_FATE_ENUM fate);
/// A copy of the table of a machine; null where it has not the size of the sides, and without a machine.
std::shared_ptr<const KPT_STATE_TABLE> table_of(const KPT_REGISTER_TRANSFORMATION& map);

}  // namespace kpt_python

#endif
