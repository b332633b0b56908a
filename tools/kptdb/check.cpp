// check: everything that a careful reader would object to.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "commands.h"
#include "db/kpt/kpt_held_text.h"
#include "files.h"
#include "model.h"
#include "outline.h"
#include "text.h"

namespace kptdb {

namespace {

struct FINDING {
  std::size_t line;
  bool is_error;
  std::string_view code;
  std::string text;
};

// A number as the writer writes it, within what the library's ids and counts can be.
std::optional<int> number(const std::string& text) {
  int value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

class CHECK {
 public:
  CHECK(const DATABASE& db, const OUTLINE& outline) : m_db(db), m_outline(outline) {}

  std::vector<FINDING> run() {
    check_elements();
    check_key_points();
    check_names();
    check_entries();
    check_maps();
    check_registers();
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const FINDING& a, const FINDING& b) { return a.line < b.line; });
    return std::move(m_findings);
  }

 private:
  void error(std::size_t line, std::string_view code, std::string text) {
    m_findings.push_back({line, true, code, std::move(text)});
  }
  void warning(std::size_t line, std::string_view code, std::string text) {
    m_findings.push_back({line, false, code, std::move(text)});
  }

  // ---- What the text says ----

  void check_elements() {
    for (const OUTLINE::ELEMENT& element : m_outline.unexpected) {
      error(element.line, "element-unexpected",
            fmt::format("element {} does not belong here", printable(element.name)));
    }
    if (m_outline.maps.size() != m_db.maps().size()) {
      warning(1, "lines-unknown", "the file is not written as plain text, so lines are not known");
    }
  }

  void check_key_points() {
    std::set<std::tuple<KPT_SET_ENUM, std::string, std::string>> names;
    for (const OUTLINE::KEY_POINT& k : m_outline.key_points) {
      const std::string name = printable(k.name.value_or(""));
      if (!k.is_read()) {
        warning(k.line, "keypoint-ignored",
                fmt::format("keypoint {} is not read: it is neither a signal nor a block instance", name));
        continue;
      }
      check_id(k);
      const std::string type = k.reg_type.has_value() ? "instance " + *k.reg_type : "signal";
      if (!names.emplace(k.side, k.name.value_or(""), type).second) {
        error(k.line, "name-duplicate",
              fmt::format("{} register {} takes the place of an earlier one", side_word(k.side), name));
      }
    }
  }

  void check_id(const OUTLINE::KEY_POINT& k) {
    const std::optional<int> id = number(k.id);
    if (!id) {
      error(k.line, "id-invalid", fmt::format("\"{}\" is not an id", printable(k.id)));
      return;
    }
    const auto [entry, is_new] = m_lines.emplace(std::pair(k.side, *id), k.line);
    if (!is_new) {
      error(k.line, "id-duplicate",
            fmt::format("{} id {} is taken since line {}", side_word(k.side), *id, entry->second));
    }
  }

  void check_entries() {
    for (const OUTLINE::MAP& map : m_outline.maps) {
      const bool known = std::find(KPT_ELIM_WORDS.begin(), KPT_ELIM_WORDS.end(), map.elim_type) != KPT_ELIM_WORDS.end();
      if (!map.elim_type.empty() && !known) {
        warning(map.line, "elimination-unknown",
                fmt::format("\"{}\" is no reason for an elimination", printable(map.elim_type)));
      }
      for (const OUTLINE::ENTRY& entry : map.entries) {
        check_entry(entry);
      }
      if (map.table.has_value()) {
        check_counts(*map.table);
      }
    }
  }

  void check_entry(const OUTLINE::ENTRY& entry) {
    const std::optional<int> id = number(entry.id);
    if (!id) {
      error(entry.line, "id-invalid", fmt::format("\"{}\" is not an id", printable(entry.id)));
    } else if (m_lines.find({entry.side, *id}) == m_lines.end()) {
      error(entry.line, "id-unresolved",
            fmt::format("no {} register has the id {} that is listed here", side_word(entry.side), *id));
    }
  }

  void check_counts(const OUTLINE::TABLE& table) {
    const std::optional<int> states = number(table.states);
    const std::optional<int> r = number(table.r_columns);
    const std::optional<int> t = number(table.t_columns);
    constexpr int MOST = std::numeric_limits<unsigned short>::max();
    const auto fits = [](const std::optional<int>& count) { return count && *count >= 0 && *count <= MOST; };
    if (!fits(states) || !fits(r) || !fits(t)) {
      error(table.line, "table-invalid", "the table does not say how many states and registers it has");
      return;
    }
    const auto wanted = static_cast<std::size_t>(*states);
    const std::size_t values = wanted * (static_cast<std::size_t>(*r) + static_cast<std::size_t>(*t));
    if (table.states_listed != wanted || table.values_listed != values) {
      warning(table.line, "table-incomplete",
              fmt::format("{} and {} are listed, {} and {} claimed", counted(table.states_listed, "state"),
                          counted(table.values_listed, "value"), wanted, values));
    }
  }

  // ---- What the database says ----

  std::size_t line_of(const REGISTER& reg) const {
    const auto found = m_lines.find({reg.side, static_cast<int>(reg.keypoint.get_id())});
    return found == m_lines.end() ? 1 : found->second;
  }

  void check_name(std::size_t line, std::string_view what, std::string_view name) {
    if (name.empty()) {
      warning(line, "name-empty", fmt::format("the {} is empty", what));
    } else if (!kpt_file_can_hold(name)) {
      error(line, "name-unreadable",
            fmt::format("no file that is saved can hold the {} \"{}\"", what, printable(name)));
    }
  }

  void check_names() {
    check_name(1, "database's name", m_db.name());
    for (const REGISTER& reg : registers_of(m_db)) {
      check_name(line_of(reg), "register's name", reg.keypoint.get_name());
      if (!reg.keypoint.is_signal()) {
        check_name(line_of(reg), "entity", reg.keypoint.get_entity_name());
        check_name(line_of(reg), "register type", reg.keypoint.get_type());
      }
    }
  }

  void check_registers() {
    for (const REGISTER& reg : registers_of(m_db)) {
      const std::string who = fmt::format("{} register {}", side_word(reg.side), label(reg.keypoint));
      if (reg.map.is_null()) {
        warning(line_of(reg), "register-unmapped", who + " has no map");
      }
      const auto listed = m_listed.find(reg.keypoint);
      if (listed != m_listed.end() && listed->second > 1) {
        warning(line_of(reg), "register-repeated",
                fmt::format("{} is listed {} times, where one map says what became of it", who, listed->second));
      }
    }
  }

  void check_maps() {
    const bool lines_known = m_outline.maps.size() == m_db.maps().size();
    std::size_t k = 0;
    for (const KPT_REGISTER_TRANSFORMATION& map : m_db.maps()) {
      check_map(lines_known ? m_outline.maps[k].line : 1, map);
      ++k;
    }
  }

  void check_map(std::size_t line, const KPT_REGISTER_TRANSFORMATION& map) {
    const auto r = members(map, KPT_REFERENCE_SET);
    const auto t = members(map, KPT_TRANSFORMED_SET);
    for (const auto& side : {r, t}) {
      for (const KPT_REGISTER_KEYPOINT& keypoint : side) {
        ++m_listed[keypoint];
      }
    }
    if (r.empty() && t.empty()) {
      warning(line, "map-empty", "the map lists no register");
    } else if (r.empty()) {
      warning(line, "map-one-sided", "the map lists no reference register");
    } else if (t.empty() && reason_word(map).empty()) {
      warning(line, "map-one-sided", "the map lists no transformed register and gives no reason");
    }
    if (map.has_fsm()) {
      check_table(line, map);
    }
  }

  void check_table(std::size_t line, const KPT_REGISTER_TRANSFORMATION& map) {
    const KPT_STATE_TABLE table = map.get_state_table();
    for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
      check_width(line, side, map.get_number_of_indices(side), width_of(table, side));
    }
    if (table.get_number_of_states() == 0) {
      warning(line, "table-empty", "the state table has no states");
      return;
    }
    for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
      if (!table.is_in_canonical_form(side)) {
        warning(line, "table-not-canonical",
                fmt::format("two {} columns of the state table are equal or opposite in every state", side_word(side)));
      }
    }
  }

  void check_width(std::size_t line, KPT_SET_ENUM side, std::size_t indices, std::size_t columns) {
    if (indices != columns) {
      error(line, "table-width",
            fmt::format("the state table has {} for {} of its {} side", counted(columns, "column"),
                        indices == 1 ? "1 index" : fmt::format("{} indices", indices), side_word(side)));
    }
  }

  const DATABASE& m_db;
  const OUTLINE& m_outline;
  std::vector<FINDING> m_findings;
  std::map<std::pair<KPT_SET_ENUM, int>, std::size_t> m_lines;
  std::unordered_map<KPT_REGISTER_KEYPOINT, std::size_t> m_listed;
};

std::string_view severity(const FINDING& finding) { return finding.is_error ? "error" : "warning"; }

JSON json_of(const std::string& file, const std::vector<FINDING>& findings) {
  JSON list = JSON::array();
  for (const FINDING& finding : findings) {
    JSON entry;
    entry["code"] = finding.code;
    entry["severity"] = severity(finding);
    entry["file"] = file;
    entry["line"] = finding.line;
    entry["text"] = finding.text;
    list.push_back(std::move(entry));
  }
  return JSON{{"findings", std::move(list)}};
}

}  // namespace

EXIT_CODE run_check(const CHECK_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  const OUTLINE outline = outline_of(read_file(options.file));
  const std::vector<FINDING> findings = CHECK(db, outline).run();
  RESULT_FILE out("");
  if (options.json) {
    out.write(json_text(json_of(options.file, findings)) + "\n");
  } else if (findings.empty()) {
    out.write(options.file + ": nothing to object to\n");
  } else {
    for (const FINDING& f : findings) {
      out.write(fmt::format("{}:{}: {} [{}] {}\n", options.file, f.line, severity(f), f.code, f.text));
    }
  }
  out.finish();
  return findings.empty() ? EXIT_DONE : EXIT_FOUND;
}

}  // namespace kptdb
