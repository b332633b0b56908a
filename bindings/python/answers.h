// What a map says of one of its registers. What it does not say for certain is
// unknown. When a map has several indices and no state machine, nobody knows
// which of them belong together. A machine whose table has another size than its
// sides says nothing.
//
// Ownership: answers point into the database and are valid until it changes.
#ifndef KPT_PYTHON_ANSWERS_H
#define KPT_PYTHON_ANSWERS_H

#include <memory>
#include <optional>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_python {

/// The position of a register on a side of a map.
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

/// The registers of a group, without null handles.
KEYPOINTS registers_of(const KPT_REGISTER_GROUP& group);
/// The registers of the other side that hold the value of the one at `place`, or the inverse.
KEYPOINTS counterparts(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse);
/// The same for the other registers of its own side.
KEYPOINTS twins(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place, bool inverse,
                const KPT_REGISTER_KEYPOINT& self);
/// Whether the representative of the other side holds the inverse. Empty when that is not known.
std::optional<bool> is_inverted(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// That representative; null when there is none, or when it is not known to be the successor.
KPT_REGISTER_KEYPOINT counterpart(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// The value of a register that is always the same.
std::optional<bool> constant_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// What became of a reference register, or where a transformed one comes from.
KPT_FATE_ENUM fate_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place);
/// "constant", "machine", "mapped", "without_fanout" or "unknown".
const char* fate_word(KPT_FATE_ENUM fate);
/// A copy of the table of a machine; null when its size does not fit the sides, and without a machine.
std::shared_ptr<const KPT_STATE_TABLE> table_of(const KPT_REGISTER_TRANSFORMATION& map);

}  // namespace kpt_python

#endif
