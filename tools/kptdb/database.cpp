#include "database.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_set>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_parser.h"
#include "db/kpt/kpt_xml_reader.h"
#include "files.h"
#include "h/gen_sys.h"
#include "host/kpt_host.h"
#include "host_lines.h"
#include "outcome.h"
#include "outline.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

struct TABLE_CLAIMS {
  std::uint64_t entries = 0;
  int largest = 0;  // which table of the document, from 0
};

// What the state tables of a document claim to hold, by the numbers that the library goes by.
TABLE_CLAIMS table_claims(const KPT_XML_ELEMENT& root) {
  bool ok = true;
  const KPT_XML_ELEMENT tables = root.get_child_elements("state_table", &ok);
  TABLE_CLAIMS claims;
  std::uint64_t most = 0;
  const int count = tables.size();
  for (int k = 0; k < count; ++k) {
    const KPT_XML_ELEMENT table = tables.item(k, &ok);
    const auto number = [&](std::string_view name) -> std::uint64_t {
      return static_cast<unsigned short>(gen_atoi(table.get_attribute_by_name(name)));
    };
    const std::uint64_t entries =
        number("num_states") * (number("num_reference_registers") + number("num_transformed_registers"));
    claims.entries += entries;
    if (entries > most) {
      most = entries;
      claims.largest = k;
    }
  }
  return claims;
}

// The line of the n-th start tag of that name, 1 when there are not so many.
std::size_t line_of_tag(const std::string& path, std::string_view tag, int n) {
  const std::string text = read_file(path);
  std::size_t at = text.find(tag);
  for (; n > 0 && at != std::string::npos; --n) {
    at = text.find(tag, at + 1);
  }
  return at == std::string::npos ? 1
                                 : 1 + static_cast<std::size_t>(std::count(
                                           text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

// Every entry takes many bytes in a file. A file that claims more entries than it has bytes would
// only be given memory for them, at worst all there is.
void refuse_tables_beyond_file(const std::string& path, const KPT_XML_ELEMENT& root) {
  const TABLE_CLAIMS claims = table_claims(root);
  if (claims.entries > file_size(path)) {
    throw FAILURE(EXIT_UNREADABLE,
                  fmt::format("{}:{}: the state tables claim {} entries, more than the file can list", path,
                              line_of_tag(path, "<state_table", claims.largest), claims.entries));
  }
}

// Reports every syntax error as the library does: with file, line and column.
std::unique_ptr<KPT_XML_PARSER> parse(const std::string& path) {
  HOST_LINES lines;
  auto parser = std::make_unique<KPT_XML_PARSER>(path);
  if (!parser->ok()) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_UNREADABLE, reason.empty() ? path + ": not a well-formed file" : reason);
  }
  return parser;
}

KPT_XML_ELEMENT root_of(const KPT_XML_PARSER& parser, const std::string& path) {
  bool ok = true;
  KPT_XML_ELEMENT root = parser.root_element("kpt_db", &ok);
  // Databases whose root goes by another name are read like any other; whatever has no set of
  // registers is something else.
  bool has_registers = ok;
  root.get_single_child_element("key_points_set", &has_registers);
  if (!ok || (!has_registers && !root.has_name("kpt_db"))) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:1: not a keypoint database: its root element is not kpt_db", path));
  }
  return root;
}

// Whatever is no set of registers ends the transformations, so an element that does not belong is
// the place to look first.
std::size_t line_behind_transformations(const std::string& path) {
  const OUTLINE outline = outline_of(read_file(path));
  return outline.unexpected.empty() ? line_of_tag(path, "</transformations_set", 0) : outline.unexpected.front().line;
}

// The library tells of elements that do not belong as internal errors, and reads on.
bool fill(KPT_KEYPOINTS_DB_IMPL& db, KPT_XML_ELEMENT& root, const std::string& path) {
  kpt_host::set_internal_error_sink([&](const char*, const char*, const char*, int) {
    fmt::print(stderr, "kptdb: {}: warning: an unexpected element is read as transformations\n", path);
  });
  const bool loaded = db.load_db(root);
  kpt_host::set_internal_error_sink({});
  return loaded;
}

}  // namespace

DATABASE DATABASE::create(const std::string& name) {
  return DATABASE(KPT_KEYPOINTS_MANAGER::get_instance()->create_keypoints_db_impl(name));
}

DATABASE DATABASE::load(const std::string& path) {
  refuse_unless_regular(path);
  const PROGRESS progress("reading " + path, file_size(path));
  const KPT_XML_READER parser_in_use;  // the XML parser works while a reader lives
  const std::unique_ptr<KPT_XML_PARSER> parser = parse(path);
  KPT_XML_ELEMENT root = root_of(*parser, path);
  const KPT_STRING name = root.get_attribute_by_name("name");
  if (name.empty()) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:1: the database has no name", path));
  }
  refuse_tables_beyond_file(path, root);
  DATABASE db(KPT_KEYPOINTS_MANAGER::get_instance()->create_keypoints_db_impl(name));
  if (!fill(db.impl(), root, path)) {
    throw FAILURE(EXIT_UNREADABLE,
                  fmt::format("{}:{}: something follows the transformations", path, line_behind_transformations(path)));
  }
  db.move_counters_past_own_ids();
  return db;
}

KPT_KEYPOINT_SET_IMPL& DATABASE::registers(KPT_SET_ENUM side) const {
  return side == KPT_REFERENCE_SET ? *m_db->get_reference_set() : *m_db->get_transformed_set();
}

// A load leaves each counter at the highest id of a signal, so the next register would share it,
// and a file tells registers apart by nothing else.
void DATABASE::move_counters_past_own_ids() const {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    long& counter = side == KPT_REFERENCE_SET ? KPT_KEYPOINTS_DB_IMPL::s_r_id : KPT_KEYPOINTS_DB_IMPL::s_t_id;
    registers(side).for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
      counter = std::max(counter, k->get_kpid() + 1);
      return true;
    });
  }
}

void DATABASE::refuse_ids_that_do_not_survive(const std::string& path) const {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    std::unordered_set<long> ids;
    ids.reserve(registers(side).size());
    registers(side).for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
      const long id = k->get_kpid();
      if (id > std::numeric_limits<int>::max() || !ids.insert(id).second) {
        throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: register {} has the id {}, which is {}", path,
                                              printable(k->get_element_name()), id,
                                              id > std::numeric_limits<int>::max() ? "too large" : "taken"));
      }
      return true;
    });
  }
}

void DATABASE::save(const std::string& path) const {
  refuse_ids_that_do_not_survive(path);
  HOST_LINES lines;
  if (!m_db->save_atomically(path)) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: {}", path, reason.empty() ? "it cannot be saved" : reason));
  }
}

}  // namespace kptdb
