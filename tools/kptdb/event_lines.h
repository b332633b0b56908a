// Writes a database as the lines of an event file. `record` makes a database from
// them that gives the same answers.
//
// Ownership: arguments are read only during the call.
#ifndef KPTDB_EVENT_LINES_H
#define KPTDB_EVENT_LINES_H

#include <cstddef>
#include <functional>
#include <string_view>

#include "db/kpt/kpt.h"

namespace kptdb {

using LINE_SINK = std::function<void(std::string_view line)>;

/// Gives every line to `sink`, with its line end. Returns the number of map entries that were
/// left out because no register has their ids. FAILURE for a text that no event can hold.
std::size_t write_event_lines(const KPT_KEYPOINTS_DB& db, const LINE_SINK& sink);

}  // namespace kptdb

#endif
