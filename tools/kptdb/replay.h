// Replays events through the public handle of a database.
//
// Ownership: none.
#ifndef KPTDB_REPLAY_H
#define KPTDB_REPLAY_H

#include <string>

#include "db/kpt/kpt.h"
#include "events.h"
#include "host_lines.h"

namespace kptdb {

/// Empty when the event was recorded. Otherwise why it was refused: the library's
/// own line or, when there is none, a reason that can be seen from outside.
std::string replay(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines);

}  // namespace kptdb

#endif
