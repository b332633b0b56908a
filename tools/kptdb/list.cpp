// list: one line for each register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

#include "commands.h"
#include "fates.h"
#include "files.h"
#include "find.h"
#include "name_query.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr std::size_t MOST_PARTNERS_SHOWN = 4;

// "top/u1" is above "top/u1/q" and "top/u1.q", and not above "top/u10/q".
bool is_under(std::string_view name, std::string_view prefix) {
  constexpr std::string_view SEPARATORS = "./";
  return prefix.empty() ||
         (name.starts_with(prefix) &&
          (SEPARATORS.find(prefix.back()) != std::string_view::npos ||
           (name.size() > prefix.size() && SEPARATORS.find(name[prefix.size()]) != std::string_view::npos)));
}

// A composed map lists the passes of all stages, separated by commas.
bool is_by_pass(const KPT_REGISTER_TRANSFORMATION& map, std::string_view pass) {
  if (pass.empty()) {
    return true;
  }
  const KPT_STRING passes = map.is_null() ? KPT_STRING() : map.get_attribute("pass");
  std::string_view rest = passes;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(", "), rest.size());
    if (rest.substr(0, end) == pass) {
      return true;
    }
    rest.remove_prefix(std::min(end + 2, rest.size()));
  }
  return false;
}

// The registers that pass the filters. They may be walked several times.
class WANTED {
 public:
  WANTED(const DATABASE& db, const LIST_OPTIONS& options) : m_db(db), m_options(options), m_names(options.names) {}

  bool has_names() const { return !m_names.names().empty(); }
  std::string names() const { return fmt::format("{}", fmt::join(m_names.names(), " or ")); }

  template <class VISIT>
  void for_each(VISIT visit) const {
    FATES fates;
    for (const KPT_SET_ENUM side : sides_named(m_options.side)) {
      for_each_register(m_db, side, [&](const REGISTER& reg) {
        if (includes(reg, fates)) {
          visit(reg, fates);
        }
      });
    }
  }

 private:
  bool includes(const REGISTER& reg, FATES& fates) const {
    const std::string_view kind = register_kind_word(reg.keypoint);
    const std::string_view name = reg.keypoint.get_name();
    return (m_options.kind.empty() || m_options.kind == kind) && is_under(name, m_options.under) &&
           (m_names.names().empty() || m_names.matches_any(name)) &&
           (m_options.fate.empty() || m_options.fate == fate_word(fates.of(reg).word)) &&
           is_by_pass(reg.map, m_options.pass);
  }

  const DATABASE& m_db;
  const LIST_OPTIONS& m_options;
  NAME_QUERY m_names;
};

// The registers on the other sides of the maps. Registers of a group follow each
// other, so the text of the last map is kept.
class PARTNERS {
 public:
  const std::string& in_short(const REGISTER& reg) {
    if (reg.map != m_map || reg.side != m_side) {
      m_map = reg.map;
      m_side = reg.side;
      m_text = reg.map.is_null() ? std::string() : text_of(reg);
    }
    return m_text;
  }

 private:
  static std::string text_of(const REGISTER& reg) {
    std::vector<std::string> names;
    const auto others = members(reg.map, other_side(reg.side));
    for (std::size_t k = 0; k < std::min(others.size(), MOST_PARTNERS_SHOWN); ++k) {
      names.push_back(label(others[k]));
    }
    if (others.size() > MOST_PARTNERS_SHOWN) {
      names.push_back(fmt::format("and {} more", others.size() - MOST_PARTNERS_SHOWN));
    }
    return fmt::format("{}", fmt::join(names, ", "));
  }

  KPT_REGISTER_TRANSFORMATION m_map;
  KPT_SET_ENUM m_side = KPT_REFERENCE_SET;
  std::string m_text;
};

void put_entry(JSON_LINE& line, const REGISTER& reg, const FATE& fate) {
  line.open_object();
  put_parts(line, reg, fate);
  if (!reg.map.is_null()) {
    line.add("map", kind_word(kind_of(reg.map)));
    put_elimination(line, reg.map);
  }
  line.key("partners");
  line.open_list();
  if (!reg.map.is_null()) {
    for_each_member(reg.map, other_side(reg.side), [&](const KPT_REGISTER_KEYPOINT& k) { put(line, k); });
  }
  line.close_list();
  line.close_object();
}

// One register at a time, because the text of all registers of a netlist is too large.
std::size_t write_json(RESULT_FILE& out, const WANTED& wanted) {
  out.write("{\"format\": 1, \"registers\": [");
  std::size_t count = 0;
  JSON_LINE line;
  wanted.for_each([&](const REGISTER& reg, FATES& fates) {
    line.clear();
    put_entry(line, reg, fates.of(reg));
    out.write(count++ == 0 ? "\n  " : ",\n  ");
    out.write(line.text());
  });
  out.write("\n]}\n");
  return count;
}

// All columns but the last, whose width is not limited.
using COLUMNS = std::array<std::string_view, 5>;

COLUMNS columns_of(const REGISTER& reg, const FATE& fate, std::string& name) {
  name = label(reg.keypoint);
  return {side_word(reg.side), register_kind_word(reg.keypoint), fate_word(fate.word),
          reg.map.is_null() ? "-" : kind_word(kind_of(reg.map)), name};
}

class LINES {
 public:
  explicit LINES(RESULT_FILE& out) : m_out(out) {}

  void widen(const COLUMNS& columns) {
    for (std::size_t k = 0; k < columns.size(); ++k) {
      m_widths[k] = std::max(m_widths[k], columns[k].size());
    }
  }

  void write(const COLUMNS& columns, std::string_view last) {
    m_line.clear();
    for (std::size_t k = 0; k < columns.size(); ++k) {
      m_line += columns[k];
      m_line.append(m_widths[k] - columns[k].size() + 2, ' ');
    }
    m_line += last;
    m_line.erase(m_line.find_last_not_of(' ') + 1);
    m_line += '\n';
    m_out.write(m_line);
  }

 private:
  RESULT_FILE& m_out;
  std::array<std::size_t, 5> m_widths{};
  std::string m_line;
};

// Walks twice: for the widths of the columns, and for the lines.
std::size_t write_text(RESULT_FILE& out, const WANTED& wanted) {
  const COLUMNS header{"side", "kind", "fate", "map", "register"};
  LINES lines(out);
  std::string name;
  std::size_t count = 0;
  lines.widen(header);
  wanted.for_each([&](const REGISTER& reg, FATES& fates) {
    lines.widen(columns_of(reg, fates.of(reg), name));
    ++count;
  });
  if (count == 0 && wanted.has_names()) {
    return 0;
  }
  lines.write(header, "across");
  PARTNERS partners;
  wanted.for_each([&](const REGISTER& reg, FATES& fates) {
    const FATE fate = fates.of(reg);
    const std::string& names = partners.in_short(reg);
    const bool is_constant = fate.word == KPT_FATE_CONSTANT && names.empty();
    lines.write(columns_of(reg, fate, name), is_constant ? fate.value ? "always 1" : "always 0" : names);
  });
  return count;
}

}  // namespace

// A given name is expected to exist; all other filters may leave nothing.
EXIT_CODE run_list(const LIST_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  const WANTED wanted(db, options);
  RESULT_FILE out("");
  const std::size_t count = options.json ? write_json(out, wanted) : write_text(out, wanted);
  out.finish();
  if (count == 0 && wanted.has_names()) {
    throw FAILURE(EXIT_FOUND, fmt::format("{}: no register matches {}", options.file, printable(wanted.names())));
  }
  return EXIT_DONE;
}

}  // namespace kptdb
