// record: an event file becomes a database file.
#include <fmt/format.h>

#include "commands.h"
#include "database.h"
#include "db/kpt/kpt_held_text.h"
#include "events.h"
#include "files.h"
#include "host_lines.h"
#include "model.h"
#include "progress.h"
#include "replay.h"
#include "text.h"

namespace kptdb {

namespace {

struct REFUSAL {
  std::size_t line;
  std::string event;  // empty when the line is no event
  std::string reason;
};

struct RECORDING {
  std::size_t recorded = 0;
  std::vector<REFUSAL> refusals;
  bool is_readable = true;

  EXIT_CODE exit_code() const { return !is_readable ? EXIT_UNREADABLE : refusals.empty() ? EXIT_DONE : EXIT_FOUND; }
};

// The file's own name without folders and without what follows its last dot.
std::string database_name(const RECORD_OPTIONS& options) {
  std::string name = options.name;
  if (name.empty() && options.events == "-") {
    throw FAILURE(EXIT_WRONG_USE, "events from standard input need --name");
  }
  if (name.empty()) {
    name = options.events.substr(options.events.rfind('/') + 1);
    name = name.substr(0, name.rfind('.'));
  }
  if (name.empty() || !kpt_file_can_hold(name)) {
    throw FAILURE(EXIT_WRONG_USE, fmt::format("a database cannot be named \"{}\": use --name", printable(name)));
  }
  return name;
}

bool is_blank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

void report(const RECORD_OPTIONS& options, const REFUSAL& refusal) {
  const std::string event = refusal.event.empty() ? "" : fmt::format("refused: {}: ", refusal.event);
  fmt::print(stderr, "kptdb: {}:{}: {}{}\n", options.events, refusal.line, event, refusal.reason);
}

// What is against the line; nothing when it was recorded.
std::optional<REFUSAL> replay_line(const KPT_KEYPOINTS_DB& db, const LINE_READER& reader, const std::string& line,
                                   HOST_LINES& lines) {
  try {
    const EVENT event = parse_event(line);
    const std::string reason = replay(db, event, lines);
    return reason.empty() ? std::nullopt : std::optional(REFUSAL{reader.line_number(), describe(event), reason});
  } catch (const EVENT_ERROR& problem) {
    return REFUSAL{reader.line_number(), "", problem.what()};
  }
}

RECORDING replay_file(const KPT_KEYPOINTS_DB& db, const RECORD_OPTIONS& options) {
  RECORDING result;
  LINE_READER reader(options.events);
  PROGRESS progress("recording " + options.events, file_size(options.events));
  HOST_LINES lines;
  std::string line;
  while (reader.next(line)) {
    progress.at(reader.bytes_read());
    if (is_blank(line)) {
      continue;
    }
    std::optional<REFUSAL> refusal = replay_line(db, reader, line, lines);
    if (!refusal) {
      ++result.recorded;
      continue;
    }
    report(options, *refusal);
    result.is_readable = result.is_readable && !refusal->event.empty();
    result.refusals.push_back(std::move(*refusal));
    if (!options.keep_going) {
      break;
    }
  }
  return result;
}

JSON json_of(const RECORD_OPTIONS& options, const RECORDING& recording, bool written) {
  JSON refused = JSON::array();
  for (const REFUSAL& refusal : recording.refusals) {
    JSON entry;
    entry["file"] = options.events;
    entry["line"] = refusal.line;
    entry["event"] = refusal.event.empty() ? JSON(nullptr) : JSON(refusal.event);
    entry["reason"] = refusal.reason;
    refused.push_back(std::move(entry));
  }
  JSON result;
  result["recorded"] = recording.recorded;
  result["refused"] = std::move(refused);
  result["written"] = written ? JSON(options.output) : JSON(nullptr);
  return result;
}

}  // namespace

EXIT_CODE run_record(const RECORD_OPTIONS& options) {
  const DATABASE db = DATABASE::create(database_name(options));
  const RECORDING recording = replay_file(db.handle(), options);
  const bool write = recording.refusals.empty() || options.keep_going;
  if (write) {
    db.save(options.output);
  }
  RESULT_FILE out("");
  if (options.json) {
    out.write(json_text(json_of(options, recording, write)) + "\n");
  } else if (write) {
    out.write(fmt::format("{}: {} recorded{}\n", options.output, counted(recording.recorded, "event"),
                          recording.refusals.empty() ? "" : fmt::format(", {} refused", recording.refusals.size())));
  }
  out.finish();
  return recording.exit_code();
}

}  // namespace kptdb
