// What became of a register, in five words.
//
// Ownership: plain values.
#ifndef KPT_FATE_H
#define KPT_FATE_H

#include "db/kpt/kpt_types.h"

/// An earlier value in this list takes precedence: a register that is constant
/// counts as constant even if a copy of it still exists.
enum KPT_FATE_ENUM : int {
  KPT_FATE_CONSTANT = 0,
  KPT_FATE_MACHINE = 1,
  KPT_FATE_MAPPED = 2,
  KPT_FATE_WITHOUT_FANOUT = 3,
  KPT_FATE_UNKNOWN = 4
};

/// What the map says of the reference registers of an index. Unknown when the
/// map is null or lacks the index, or its machine's table has another size.
KPT_EXPORT KPT_FATE_ENUM kpt_fate(const KPT_TRANSFORMATION_IMPL* map, unsigned long r_index);
/// "constant", "machine", "mapped", "without fanout" or "unknown".
KPT_EXPORT const char* kpt_fate_word(KPT_FATE_ENUM fate);

#endif
