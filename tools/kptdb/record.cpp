// record: makes a database file from event files.
#include <fmt/format.h>

#include "commands.h"
#include "database.h"
#include "event_replay.h"
#include "files.h"
#include "input.h"
#include "model.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

struct REFUSAL {
  std::string file;
  std::size_t line;
  std::string event;  // empty when the line is not an event
  std::string reason;
};

struct RECORDING {
  std::size_t recorded = 0;
  std::vector<REFUSAL> refusals;
  bool is_readable = true;
  bool is_complete = true;  // whether every file has the end that it has to have

  bool is_to_be_written(const RECORD_OPTIONS& options) const {
    return is_complete && (refusals.empty() || options.keep_going);
  }

  EXIT_CODE exit_code() const { return !is_readable ? EXIT_UNREADABLE : refusals.empty() ? EXIT_DONE : EXIT_FOUND; }
};

// The name of the first file, without folders, without ".gz" and without the part after its last dot.
std::string database_name(const RECORD_OPTIONS& options) {
  std::string name = options.name;
  const std::string& first = options.events.front();
  if (name.empty() && first == "-") {
    throw FAILURE(EXIT_WRONG_USE, "events from standard input need --name");
  }
  if (name.empty()) {
    name = first.substr(first.rfind('/') + 1);
    name.resize(name.size() - (is_packed_name(name) ? std::string_view(".gz").size() : 0));
    name = name.substr(0, name.rfind('.'));
  }
  if (name.empty() || !kpt_file_can_hold(name)) {
    throw FAILURE(EXIT_WRONG_USE, fmt::format("a database cannot be named \"{}\": use --name", printable(name)));
  }
  return name;
}

bool is_blank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

void report(const REFUSAL& refusal) {
  const std::string event = refusal.event.empty() ? "" : fmt::format("refused: {}: ", refusal.event);
  fmt::print(stderr, "kptdb: {}:{}: {}{}\n", refusal.file, refusal.line, event, refusal.reason);
}

// One event file, from its first line to its end.
class REPLAY {
 public:
  REPLAY(const KPT_KEYPOINTS_DB& db, const std::string& file) : m_file(file), m_reader(file), m_replay(db) {}

  /// False when a line was refused and the command has to stop there.
  bool run(bool keep_going, RECORDING& recording) {
    PROGRESS progress("recording " + m_file, file_size(m_file));
    std::string line;
    while (m_reader.next(line)) {
      progress.at(m_reader.bytes_read());
      if (!is_blank(line) && !take(line, recording) && !keep_going) {
        return false;
      }
    }
    return true;
  }
  /// Reports when the file lacks its end.
  void expect_end(RECORDING& recording) {
    if (!m_replay.has_ended()) {
      recording.is_complete = false;
      refuse(recording, "", "the file has no end event, so it may be incomplete");
    }
  }

 private:
  bool refuse(RECORDING& recording, const std::string& event, const std::string& reason) {
    recording.refusals.push_back({m_file, m_reader.line_number(), event, reason});
    recording.is_readable = recording.is_readable && !event.empty();
    report(recording.refusals.back());
    return false;
  }

  bool take(const std::string& line, RECORDING& recording) {
    const std::size_t before = m_replay.recorded();
    const std::optional<EVENT_REPLAY::REFUSAL> refusal = m_replay.take(line, m_lines);
    if (!m_replay.warning().empty() && !refusal) {
      fmt::print(stderr, "kptdb: {}:{}: warning: {}\n", m_file, m_reader.line_number(), m_replay.warning());
    }
    recording.recorded += m_replay.recorded() - before;
    return refusal ? refuse(recording, refusal->event, refusal->reason) : true;
  }

  const std::string& m_file;
  LINE_READER m_reader;
  EVENT_REPLAY m_replay;
  HOST_LINES m_lines;
};

RECORDING replay_files(const KPT_KEYPOINTS_DB& db, const RECORD_OPTIONS& options) {
  RECORDING recording;
  for (const std::string& file : options.events) {
    REPLAY replay(db, file);
    if (!replay.run(options.keep_going, recording)) {
      break;
    }
    if (options.complete) {
      replay.expect_end(recording);
    }
  }
  return recording;
}

JSON json_of(const RECORD_OPTIONS& options, const RECORDING& recording, bool written) {
  JSON refused = JSON::array();
  for (const REFUSAL& refusal : recording.refusals) {
    JSON entry;
    entry["file"] = refusal.file;
    entry["line"] = refusal.line;
    entry["event"] = refusal.event.empty() ? JSON(nullptr) : JSON(refusal.event);
    entry["reason"] = refusal.reason;
    refused.push_back(std::move(entry));
  }
  JSON result = new_result();
  result["recorded"] = recording.recorded;
  result["refused"] = std::move(refused);
  result["written"] = written ? JSON(options.output) : JSON(nullptr);
  return result;
}

}  // namespace

EXIT_CODE run_record(const RECORD_OPTIONS& options) {
  const DATABASE db = DATABASE::create(database_name(options));
  const RECORDING recording = replay_files(db.handle(), options);
  const bool write = recording.is_to_be_written(options);
  if (write) {
    db.save(options.output);
  }
  RESULT_FILE out = RESULT_FILE::beside(options.output);
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
