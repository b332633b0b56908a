#include "database.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <new>
#include <unordered_set>

#include "files.h"
#include "host/kpt_host.h"
#include "host_lines.h"
#include "input.h"
#include "outcome.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

// The messages of a load: the problem, the lines for the host, and the number of unexpected elements.
struct TOLD {
  KPT_LOAD_PROBLEM problem;
  std::string reason;
  std::size_t unexpected = 0;
};

// The library reports elements that do not belong as internal errors, and continues.
KPT_UNREGISTERED_DB read(INPUT& input, OUTLINE* outline, TOLD& told) {
  const HOST_LINES lines;
  kpt_host::set_internal_error_sink([&](const char*, const char*, const char*, int) { ++told.unexpected; });
  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::load(input, input.shown(), &told.problem, outline);
  kpt_host::set_internal_error_sink({});
  told.reason = lines.reason();
  return db;
}

// Reads the input a second time for the lines of the messages, if it can be read a second time.
void look_again(INPUT& input, OUTLINE& outline) {
  TOLD ignored;
  if (input.rewind()) {
    read(input, &outline, ignored);
  }
}

[[noreturn]] void refuse(const INPUT& input, std::size_t line, std::string_view reason) {
  throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:{}: {}", input.shown(), line, reason));
}

[[noreturn]] void refuse_something_else(const INPUT& input) {
  refuse(input, 1, "not a keypoint database: its root element is not kpt_db");
}

[[noreturn]] void refuse(const INPUT& input, const TOLD& told, const OUTLINE& outline) {
  switch (told.problem.kind) {
    case KPT_LOAD_PROBLEM::OUT_OF_MEMORY:
      throw std::bad_alloc();
    case KPT_LOAD_PROBLEM::NO_NAME:
    case KPT_LOAD_PROBLEM::NOT_COMPLETE:
      if (outline.is_something_else()) {
        refuse_something_else(input);
      }
      told.problem.kind == KPT_LOAD_PROBLEM::NO_NAME
          ? refuse(input, 1, "the database has no name")
          : refuse(input, outline.line_behind_transformations(), "something follows the transformations");
    default:
      throw FAILURE(EXIT_UNREADABLE, told.reason.empty() ? input.shown() + ": not a well-formed file" : told.reason);
  }
}

void refuse_what_is_no_document(const INPUT& input) {
  if (!input.problem().empty()) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}: {}", input.shown(), input.problem()));
  }
  if (input.is_empty()) {
    refuse(input, 1, "the file is empty");
  }
  if (input.begins_like_events()) {
    throw FAILURE(EXIT_UNREADABLE, input.shown() + ": this is an event file: use kptdb record");
  }
}

std::uint64_t entries_claimed(const DATABASE& db) {
  std::uint64_t entries = 0;
  for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
    if (map.has_fsm()) {
      const KPT_STATE_TABLE table = map.get_state_table();
      entries += std::uint64_t{table.get_number_of_states()} *
                 (std::uint64_t{table.get_state_reference_size()} + table.get_state_transformed_size());
    }
  }
  return entries;
}

bool has_registers(const DATABASE& db) {
  return db.registers(KPT_REFERENCE_SET).size() + db.registers(KPT_TRANSFORMED_SET).size() != 0;
}

}  // namespace

DATABASE DATABASE::create(const std::string& name) { return DATABASE(KPT_UNREGISTERED_DB::create(name)); }

// An input that can be read only once goes to an outline while it is read. Any other input is read a
// second time when there is something to report. A file that claims more table entries than it has
// bytes is refused: the library stores only the set entries, but the commands would write all of them.
DATABASE DATABASE::load(const std::string& path, OUTLINE* outline) {
  INPUT input(path);
  const bool is_read_once = !input.rewind();
  input.show_progress("reading " + input.shown(), is_read_once ? 1 : 2);
  OUTLINE own;
  OUTLINE& shape = outline == nullptr ? own : *outline;
  const bool is_shown = is_read_once || outline != nullptr;
  if (is_read_once) {
    shape.on_read_once();
  }
  const auto see_shape = [&] {
    if (!is_shown) {
      look_again(input, own);
    }
  };
  TOLD told;
  DATABASE db(read(input, is_shown ? &shape : nullptr, told));
  if (db.m_db.is_null()) {
    refuse_what_is_no_document(input);
    see_shape();
    refuse(input, told, shape);
  }
  const std::uint64_t claimed = entries_claimed(db);
  if (claimed > input.bytes_read()) {
    see_shape();
    refuse(input, shape.line_of_largest_table(),
           fmt::format("the state tables claim {} entries, more than the file can list", claimed));
  }
  if (!has_registers(db)) {
    see_shape();
    if (shape.is_something_else()) {
      refuse_something_else(input);
    }
  }
  for (; told.unexpected > 0; --told.unexpected) {
    fmt::print(stderr, "kptdb: {}: warning: an unexpected element is read as transformations\n", input.shown());
  }
  db.handle().move_id_counters_past_own_ids();
  return db;
}

void DATABASE::refuse_ids_that_do_not_survive(const std::string& path) const {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    std::unordered_set<long> ids;
    ids.reserve(registers(side).size());
    for (const KPT_REGISTER_KEYPOINT& reg : registers(side)) {
      const long id = reg.get_id();
      if (id > std::numeric_limits<int>::max() || !ids.insert(id).second) {
        throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: register {} has the id {}, which is {}", path,
                                              printable(reg.get_name()), id,
                                              id > std::numeric_limits<int>::max() ? "too large" : "taken"));
      }
    }
  }
}

void DATABASE::save_plainly(const std::string& path, const std::string& shown) const {
  const HOST_LINES lines;
  PROGRESS progress("writing " + shown);
  if (!m_db.save_atomically(path, &progress)) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND,
                  fmt::format("{}: not written: {}", shown, reason.empty() ? "it cannot be saved" : reason));
  }
}

// The library writes files. A result that is compressed, or goes to standard
// output, is written to a private file first.
void DATABASE::save(const std::string& path) const {
  refuse_ids_that_do_not_survive(path);
  if (path != "-" && !is_packed_name(path)) {
    save_plainly(path, path);
    return;
  }
  RESULT_FILE out(path);
  const SCRATCH_FOLDER folder;
  const std::string plain = folder.path() + "/database.xml";
  save_plainly(plain, out.shown());
  INPUT input(plain);
  PROGRESS progress("writing " + out.shown(), file_size(plain));
  std::string block(std::size_t{1} << 18, '\0');
  for (std::ptrdiff_t count = 0; (count = input.read(block.data(), block.size())) > 0;) {
    out.write(std::string_view(block).substr(0, static_cast<std::size_t>(count)));
    progress.at(input.bytes_read());
  }
  out.finish();
}

}  // namespace kptdb
