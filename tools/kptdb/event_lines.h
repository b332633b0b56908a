// A database as the lines of an event file, from which record makes one that answers every question in
// the same way.
//
// Ownership: arguments are read during the call only.
#ifndef KPTDB_EVENT_LINES_H
#define KPTDB_EVENT_LINES_H

#include <cstddef>
#include <functional>
#include <string_view>

#include "db/kpt/kpt.h"

namespace kptdb {

using LINE_SINK = std::function<void(std::string_view line)>;

/// Hands every line to `sink`, with its line end. Returns how many places of maps were left out, since
/// they name ids of no register. FAILURE for a text that no event can hold.
std::size_t write_event_lines(const KPT_KEYPOINTS_DB& db, const LINE_SINK& sink);

}  // namespace kptdb

#endif
