#include "event_replay.h"

#include <fmt/format.h>

#include "codes.h"
#include "replay.h"
#include "text.h"

namespace kptdb {

std::string record_event(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines) {
  const auto* machine = std::get_if<ASSOCIATE_FSM>(&event.what);
  const std::string reason = machine == nullptr ? std::string() : contradiction_in(machine->states);
  return reason.empty() ? replay(db, event, lines) : reason;
}

std::optional<EVENT_REPLAY::REFUSAL> EVENT_REPLAY::take(std::string_view line, HOST_LINES& host_lines) {
  try {
    const EVENT event = parse_event(line);
    refuse_behind_end();
    if (const END* const end = std::get_if<END>(&event.what)) {
      take_end(*end);
      return std::nullopt;
    }
    ++m_events;
    const std::string reason = record_event(m_db, event, host_lines);
    if (!reason.empty()) {
      return REFUSAL{describe(event), reason};
    }
    ++m_recorded;
    return std::nullopt;
  } catch (const EVENT_ERROR& problem) {
    return REFUSAL{"", problem.what()};
  }
}

void EVENT_REPLAY::take_end(const END& end) {
  m_has_ended = true;
  if (end.events != m_events) {
    throw EVENT_ERROR(fmt::format("the end tells of {}, and {} before it", counted(end.events, "event"),
                                  m_events == 1 ? "1 stands" : fmt::format("{} stand", m_events)));
  }
}

void EVENT_REPLAY::refuse_behind_end() const {
  if (m_has_ended) {
    throw EVENT_ERROR("the file goes on behind its end");
  }
}

}  // namespace kptdb
