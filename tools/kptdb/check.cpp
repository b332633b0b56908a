// check: everything that a careful reader would object to.
#include <fmt/format.h>

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <memory>
#include <optional>

#include "codes.h"
#include "colour.h"
#include "commands.h"
#include "coverage.h"
#include "file_findings.h"
#include "files.h"
#include "model.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

class CHECK {
 public:
  CHECK(const DATABASE& db, const FILE_FINDINGS& file) : m_db(db), m_file(file), m_findings(file.all()) {
    m_listed.reserve(register_count());
  }

  std::vector<FINDING> run() {
    check_names();
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

  std::size_t line_of(const REGISTER& reg) const { return m_file.line_of(reg.side, reg.keypoint.get_id()); }

  void check_name(const REGISTER& reg, std::string_view what, std::string_view name) {
    if (name.empty() || !kpt_file_can_hold(name)) {
      object_to_name(line_of(reg), what, name);
    }
  }
  void object_to_name(std::size_t line, std::string_view what, std::string_view name) {
    if (name.empty()) {
      warning(line, "name-empty", fmt::format("the {} is empty", what));
    } else if (!kpt_file_can_hold(name)) {
      error(line, "name-unreadable",
            fmt::format("no file that is saved can hold the {} \"{}\"", what, printable(name)));
    }
  }

  void check_names() {
    object_to_name(1, "database's name", m_db.name());
    PROGRESS progress("checking names", register_count(), PROGRESS::REGISTERS);
    std::size_t done = 0;
    const KPT_REGISTER_TRANSFORMATION no_map;
    for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
      for (const KPT_REGISTER_KEYPOINT& reg : m_db.registers(side)) {
        progress.at(++done);
        check_name({side, reg, no_map}, "register's name", reg.get_name());
        if (!reg.is_signal()) {
          check_name({side, reg, no_map}, "entity", reg.get_entity_name());
          check_name({side, reg, no_map}, "register type", reg.get_type());
        }
      }
    }
  }

  std::size_t register_count() const {
    return m_db.registers(KPT_REFERENCE_SET).size() + m_db.registers(KPT_TRANSFORMED_SET).size();
  }

  void check_registers() {
    PROGRESS progress("checking registers", register_count(), PROGRESS::REGISTERS);
    std::size_t done = 0;
    for_each_register(m_db, [&](const REGISTER& reg) {
      progress.at(++done);
      check_register(reg);
    });
  }

  void check_register(const REGISTER& reg) {
    const auto repeated = m_repeated.find(reg.keypoint);
    if (!reg.map.is_null() && repeated == m_repeated.end()) {
      return;
    }
    const std::string who = fmt::format("{} register {}", side_word(reg.side), label(reg.keypoint));
    if (reg.map.is_null()) {
      warning(line_of(reg), "register-unmapped", who + " has no map");
    }
    if (repeated != m_repeated.end()) {
      warning(line_of(reg), "register-repeated",
              fmt::format("{} is listed {} times, where one map says what became of it", who, repeated->second));
    }
  }

  void check_maps() {
    PROGRESS progress("checking maps", m_db.maps().size(), PROGRESS::MAPS);
    const std::vector<std::size_t>& lines = m_file.map_lines();
    std::size_t k = 0;
    for (const KPT_REGISTER_TRANSFORMATION& map : m_db.maps()) {
      check_map(k < lines.size() ? lines[k] : 1, map);
      progress.at(++k);
    }
  }

  // Registers of one side alone are related too: compositions keep what they
  // know of them. A single register needs a reason, or the mark of lost copies.
  static bool says_nothing(const KPT_REGISTER_TRANSFORMATION& map) {
    return !map.has_fsm() && reason_word(map).empty() && map.get_attribute("partial").empty();
  }

  // Most registers are listed once: what lists them is kept for the others alone.
  std::size_t count_listed(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
    std::size_t count = 0;
    for_each_place(map, side, [&](std::size_t, bool, const KPT_REGISTER_KEYPOINT& reg) {
      if (!reg.is_null()) {
        ++count;
        if (!m_listed.insert(reg).second) {
          ++m_repeated.try_emplace(reg, std::size_t{1}).first->second;
        }
      }
    });
    return count;
  }

  void check_map(std::size_t line, const KPT_REGISTER_TRANSFORMATION& map) {
    const std::size_t r_count = count_listed(map, KPT_REFERENCE_SET);
    const std::size_t t_count = count_listed(map, KPT_TRANSFORMED_SET);
    if (r_count + t_count == 0) {
      warning(line, "map-empty", "the map lists no register");
    } else if (r_count + t_count == 1 && says_nothing(map)) {
      warning(line, "map-one-sided",
              r_count == 0 ? "the map lists no reference register"
                           : "the map lists no transformed register and gives no reason");
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
    check_codes(line, table);
    for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
      if (!table.is_in_canonical_form(side)) {
        warning(line, "table-not-canonical",
                fmt::format("two {} columns of the state table are equal or opposite in every state", side_word(side)));
      }
    }
  }

  void check_codes(std::size_t line, const KPT_STATE_TABLE& table) {
    STATE_CODES codes;
    for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
      codes.emplace_back(code_of(table, KPT_REFERENCE_SET, s), code_of(table, KPT_TRANSFORMED_SET, s));
    }
    const std::string contradiction = contradiction_in(std::move(codes));
    if (!contradiction.empty()) {
      error(line, "table-contradictory", contradiction);
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
  const FILE_FINDINGS& m_file;
  std::vector<FINDING> m_findings;
  boost::unordered_flat_set<KPT_REGISTER_KEYPOINT, std::hash<KPT_REGISTER_KEYPOINT>> m_listed;
  boost::unordered_flat_map<KPT_REGISTER_KEYPOINT, std::size_t, std::hash<KPT_REGISTER_KEYPOINT>> m_repeated;
};

// A database, and the faults of its file. A file in which a register takes the place of another one is
// read twice.
struct LOADED {
  explicit LOADED(const std::string& path) {
    load(path, FILE_FINDINGS::WITHOUT_NAMES);
    if (findings->misses_names(*db)) {
      load(path, FILE_FINDINGS::WITH_NAMES);
    }
  }

  std::unique_ptr<FILE_FINDINGS> findings;
  std::optional<DATABASE> db;

 private:
  void load(const std::string& path, FILE_FINDINGS::NAMES names) {
    db.reset();
    findings = std::make_unique<FILE_FINDINGS>(names);
    db.emplace(DATABASE::load(path, findings.get()));
  }
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
  JSON result = new_result();
  result["findings"] = std::move(list);
  return result;
}

}  // namespace

EXIT_CODE run_check(const CHECK_OPTIONS& options) {
  const LOADED loaded(options.file);
  const DATABASE& db = *loaded.db;
  const std::vector<FINDING> findings = CHECK(db, *loaded.findings).run();
  RESULT_FILE out("");
  if (options.json) {
    out.write(json_text(json_of(options.file, findings)) + "\n");
  } else if (findings.empty()) {
    out.write(options.file + ": no findings\n");
  } else {
    for (const FINDING& f : findings) {
      out.write(fmt::format("{}:{}: {} [{}] {}\n", options.file, f.line,
                            painted(severity(f), f.is_error ? RED : YELLOW), f.code, f.text));
    }
  }
  out.finish();
  const EXIT_CODE coverage = judge_coverage(db, options.file, options.fail_under);
  return findings.empty() ? coverage : EXIT_FOUND;
}

}  // namespace kptdb
