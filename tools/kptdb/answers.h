// What two databases answer of the same registers, and where they differ.
//
// Ownership: everything is a value of the caller; handles are read during the call only.
#ifndef KPTDB_ANSWERS_H
#define KPTDB_ANSWERS_H

#include "db/kpt/kpt.h"

namespace kptdb {

/// A line for every kind of difference, with a count and an example: what a union answers, and
/// what its stages say together.
KPT_STRING_VECTOR differing_answers(const KPT_KEYPOINTS_DB& united, const KPT_KEYPOINTS_DB& exact);

}  // namespace kptdb

#endif
