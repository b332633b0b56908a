#include "database.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_set>

#include "files.h"
#include "host/kpt_host.h"
#include "host_lines.h"
#include "outcome.h"
#include "outline.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

// Every entry takes many bytes in a file. A file that claims more entries than it has bytes would
// only be given memory for them, at worst all there is.
void refuse_tables_beyond_file(const std::string& path) {
  const std::string text = read_file(path);
  const TABLE_CLAIMS claims = table_claims(text);
  if (claims.entries > text.size()) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:{}: the state tables claim {} entries, more than the file can list",
                                               path, claims.line_of_largest, claims.entries));
  }
}

[[noreturn]] void refuse_root(const std::string& path) {
  throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:1: not a keypoint database: its root element is not kpt_db", path));
}

// Databases whose root goes by another name are read like any other; whatever has no set of
// registers either is something else.
bool is_something_else(const OUTLINE& outline) {
  return !outline.root.empty() && outline.root != "kpt_db" && !outline.has_register_set;
}

// Whatever is no set of registers ends the transformations, so an element that does not belong is
// the place to look first.
std::size_t line_behind_transformations(const OUTLINE& outline) {
  return outline.unexpected.empty() ? std::max<std::size_t>(outline.end_of_maps, 1) : outline.unexpected.front().line;
}

[[noreturn]] void refuse(const std::string& path, const KPT_LOAD_PROBLEM& problem, const std::string& reason) {
  if (problem.kind == KPT_LOAD_PROBLEM::NOT_WELL_FORMED) {
    throw FAILURE(EXIT_UNREADABLE, reason.empty() ? path + ": not a well-formed file" : reason);
  }
  const OUTLINE outline = outline_of(read_file(path));
  if (is_something_else(outline)) {
    refuse_root(path);
  }
  if (problem.kind == KPT_LOAD_PROBLEM::NO_NAME) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:1: the database has no name", path));
  }
  throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:{}: something follows the transformations", path,
                                             line_behind_transformations(outline)));
}

// The library tells of elements that do not belong as internal errors, and reads on.
KPT_UNREGISTERED_DB read(const std::string& path, std::size_t& unexpected) {
  const HOST_LINES lines;
  kpt_host::set_internal_error_sink([&](const char*, const char*, const char*, int) { ++unexpected; });
  KPT_LOAD_PROBLEM problem;
  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::load(path, &problem);
  kpt_host::set_internal_error_sink({});
  if (db.is_null()) {
    refuse(path, problem, lines.reason());
  }
  return db;
}

}  // namespace

DATABASE DATABASE::create(const std::string& name) { return DATABASE(KPT_UNREGISTERED_DB::create(name)); }

DATABASE DATABASE::load(const std::string& path) {
  refuse_unless_regular(path);
  const PROGRESS progress("reading " + path, file_size(path));
  refuse_tables_beyond_file(path);
  std::size_t unexpected = 0;
  DATABASE db(read(path, unexpected));
  const bool has_registers = db.registers(KPT_REFERENCE_SET).size() + db.registers(KPT_TRANSFORMED_SET).size() != 0;
  if (!has_registers && is_something_else(outline_of(read_file(path)))) {
    refuse_root(path);
  }
  for (; unexpected > 0; --unexpected) {
    fmt::print(stderr, "kptdb: {}: warning: an unexpected element is read as transformations\n", path);
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

void DATABASE::save(const std::string& path) const {
  refuse_ids_that_do_not_survive(path);
  HOST_LINES lines;
  if (!m_db.save_atomically(path)) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: {}", path, reason.empty() ? "it cannot be saved" : reason));
  }
}

}  // namespace kptdb
