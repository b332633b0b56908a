// Replays an event file into a database, line by line.
//
// Ownership: the caller owns the database, which outlives the replay; texts are values.
#ifndef KPTDB_EVENT_REPLAY_H
#define KPTDB_EVENT_REPLAY_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "db/kpt/kpt.h"
#include "events.h"
#include "host_lines.h"

namespace kptdb {

/// Empty when the event was recorded. Also refuses a machine whose codes contradict each other.
std::string record_event(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines);

class EVENT_REPLAY {
 public:
  /// Why a line was not recorded. When `event` is empty, the line is not an event.
  struct REFUSAL {
    std::string event;
    std::string reason;
  };

  explicit EVENT_REPLAY(const KPT_KEYPOINTS_DB& db) : m_db(db) {}

  /// Records the event of a line that is not blank.
  std::optional<REFUSAL> take(std::string_view line, HOST_LINES& host_lines);
  /// What is doubtful about the line that was taken last; empty when nothing is.
  const std::string& warning() const { return m_warning; }
  std::size_t recorded() const { return m_recorded; }
  /// Whether the file's end has been read; nothing may follow it.
  bool has_ended() const { return m_has_ended; }

 private:
  void refuse_behind_end() const;
  void take_end(const END& end);

  KPT_KEYPOINTS_DB m_db;
  std::uint64_t m_events = 0;
  std::size_t m_recorded = 0;
  bool m_has_ended = false;
  std::string m_warning;
};

}  // namespace kptdb

#endif
