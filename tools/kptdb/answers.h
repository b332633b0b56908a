// Compares the answers of two databases for the same registers.
//
// Ownership: the caller owns everything; handles are read only during the call.
#ifndef KPTDB_ANSWERS_H
#define KPTDB_ANSWERS_H

#include "db/kpt/kpt.h"

namespace kptdb {

/// One line for every kind of difference, with a count and an example: the answer
/// of the union, and what the stages say together.
KPT_STRING_VECTOR differing_answers(const KPT_KEYPOINTS_DB& united, const KPT_KEYPOINTS_DB& exact);

}  // namespace kptdb

#endif
