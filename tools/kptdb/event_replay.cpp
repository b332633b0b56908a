#include "event_replay.h"

#include <fmt/format.h>

#include "codes.h"
#include "replay.h"
#include "text.h"

namespace kptdb {

namespace {

// A map may list codes that contradict each other, because a database may: a composition leaves out registers that told
// the states apart. So such a map is recorded, with a warning.
std::string contradiction_in_map(const EVENT& event) {
  const MAP* const map = std::get_if<MAP>(&event.what);
  return map == nullptr || !map->table ? std::string() : contradiction_in(map->table->states);
}

std::string contradiction_in_machine(const EVENT& event) {
  const auto* const machine = std::get_if<ASSOCIATE_FSM>(&event.what);
  return machine == nullptr ? std::string() : contradiction_in(machine->states);
}

}  // namespace

std::string record_event(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines) {
  const std::string reason = contradiction_in_machine(event);
  return reason.empty() ? replay(db, event, lines) : reason;
}

std::optional<EVENT_REPLAY::REFUSAL> EVENT_REPLAY::take(std::string_view line, HOST_LINES& host_lines) {
  m_warning.clear();
  try {
    const EVENT event = parse_event(line);
    refuse_behind_end();
    if (const END* const end = std::get_if<END>(&event.what)) {
      take_end(*end);
      return std::nullopt;
    }
    ++m_events;
    m_warning = contradiction_in_map(event);
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
    throw EVENT_ERROR(
        fmt::format("the end event counts {}, but the file has {}", counted(end.events, "event"), m_events));
  }
}

void EVENT_REPLAY::refuse_behind_end() const {
  if (m_has_ended) {
    throw EVENT_ERROR("there is a line after the end event");
  }
}

}  // namespace kptdb
