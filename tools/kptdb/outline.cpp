#include "outline.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "h/gen_sys.h"

namespace kptdb {

namespace {

// Walks the tags of a well-formed text, and tells of each with its line.
template <class VISITOR>
class SCANNER {
 public:
  SCANNER(std::string_view text, VISITOR& visitor) : m_text(text), m_visitor(visitor) {}

  void run() {
    while (m_at < m_text.size()) {
      const std::size_t open = std::min(m_text.find('<', m_at), m_text.size());
      m_visitor.characters(m_text.substr(m_at, open - m_at));
      move_to(open);
      if (open < m_text.size()) {
        markup();
      }
    }
  }

 private:
  void markup() {
    if (starts_with("<!--")) {
      move_behind("-->");
    } else if (starts_with("<![CDATA[")) {
      const std::size_t begin = m_at + std::strlen("<![CDATA[");
      move_behind("]]>");
      m_visitor.characters(m_text.substr(begin, std::max(begin, m_at - std::strlen("]]>")) - begin));
    } else if (starts_with("<?")) {
      move_behind("?>");
    } else if (starts_with("<!")) {
      document_type();
    } else {
      tag();
    }
  }

  // An internal subset stands in brackets and has declarations of its own.
  void document_type() {
    const std::size_t bracket = m_text.find('[', m_at);
    const std::size_t end = m_text.find('>', m_at);
    if (bracket < end) {
      move_to(bracket);
      move_behind("]");
    }
    move_behind(">");
  }

  void tag() {
    const std::size_t end = tag_end();
    std::string_view inside = m_text.substr(m_at + 1, end - m_at - 1);
    const std::size_t line = m_line;
    const bool closes = !inside.empty() && inside.front() == '/';
    const bool empty = !inside.empty() && inside.back() == '/';
    if (!closes) {
      inside.remove_suffix(empty ? 1 : 0);
      m_visitor.start(inside.substr(0, inside.find_first_of(" \t\r\n")), inside, line);
    }
    move_to(std::min(end + 1, m_text.size()));
    if (closes || empty) {
      m_visitor.end(line);
    }
  }

  // A ">" within quotes ends nothing.
  std::size_t tag_end() const {
    char quote = '\0';
    for (std::size_t k = m_at; k < m_text.size(); ++k) {
      const char c = m_text[k];
      if (quote != '\0') {
        quote = c == quote ? '\0' : quote;
      } else if (c == '"' || c == '\'') {
        quote = c;
      } else if (c == '>') {
        return k;
      }
    }
    return m_text.size();
  }

  bool starts_with(std::string_view text) const { return m_text.substr(m_at).starts_with(text); }
  void move_behind(std::string_view text) {
    const std::size_t found = m_text.find(text, m_at);
    move_to(found == std::string_view::npos ? m_text.size() : found + text.size());
  }
  void move_to(std::size_t to) {
    m_line += static_cast<std::size_t>(std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_at),
                                                  m_text.begin() + static_cast<std::ptrdiff_t>(to), '\n'));
    m_at = to;
  }

  std::string_view m_text;
  VISITOR& m_visitor;
  std::size_t m_at = 0;
  std::size_t m_line = 1;
};

std::string attribute(std::string_view tag, std::string_view name) {
  std::size_t at = 0;
  while ((at = tag.find(name, at)) != std::string_view::npos) {
    const bool begins = at > 0 && std::strchr(" \t\r\n", tag[at - 1]) != nullptr;
    const std::size_t equals = tag.find_first_not_of(" \t\r\n", at + name.size());
    at += name.size();
    if (!begins || equals == std::string_view::npos || tag[equals] != '=') {
      continue;
    }
    const std::size_t open = tag.find_first_of("\"'", equals);
    if (open == std::string_view::npos) {
      break;
    }
    return std::string(tag.substr(open + 1, tag.find(tag[open], open + 1) - open - 1));
  }
  return {};
}

KPT_SET_ENUM side_named(std::string_view type) { return type == "reference" ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET; }

// Goes by depth, as a load does: it looks at hardly any names.
class OUTLINER {
 public:
  void start(std::string_view name, std::string_view tag, std::size_t line) {
    ++m_depth;
    m_field = nullptr;
    switch (m_depth) {
      case 1:
        m_outline.root = name;
        break;
      case 2:
        part(name, tag, line);
        break;
      case 3:
        m_in_registers ? key_point(name, tag, line) : map(name, tag, line);
        break;
      case 4:
        m_in_registers ? field(name) : part_of_map(name, tag, line);
        break;
      default:
        below(name, tag, line);
    }
  }

  void end(std::size_t line) {
    --m_depth;
    m_field = nullptr;
    if (m_depth == 1 && m_in_maps && m_outline.end_of_maps == 0) {
      m_outline.end_of_maps = line;
    }
  }

  void characters(std::string_view text) {
    if (m_field != nullptr) {
      m_field->append(text);
    }
  }

  OUTLINE take() { return std::move(m_outline); }

 private:
  void expect(bool expected, std::string_view name, std::size_t line) {
    if (!expected) {
      m_outline.unexpected.push_back({line, std::string(name)});
    }
  }

  void part(std::string_view name, std::string_view tag, std::size_t line) {
    expect(name == "key_points_set" || name == "transformations_set", name, line);
    m_in_registers = name == "key_points_set";
    m_in_maps = name == "transformations_set";
    m_outline.has_register_set |= m_in_registers;
    m_side = side_named(attribute(tag, "type"));
  }

  void key_point(std::string_view name, std::string_view tag, std::size_t line) {
    expect(name == "key_point", name, line);
    m_outline.key_points.push_back({line, m_side, attribute(tag, "id"), attribute(tag, "type"), {}, {}, {}});
  }

  void field(std::string_view name) {
    OUTLINE::KEY_POINT& k = m_outline.key_points.back();
    auto* field = name == "name" ? &k.name : name == "entity" ? &k.entity : name == "reg_type" ? &k.reg_type : nullptr;
    if (field != nullptr && !field->has_value()) {
      m_field = &field->emplace();
    }
  }

  void map(std::string_view name, std::string_view tag, std::size_t line) {
    expect(name == "transformation", name, line);
    m_outline.maps.push_back({line, attribute(tag, "elim_type"), {}, {}});
  }

  void part_of_map(std::string_view name, std::string_view tag, std::size_t line) {
    const std::string type = attribute(tag, "type");
    m_in_table = name == "state_table" && type.empty();
    m_side = side_named(type);
    expect(m_in_table || name == "kp_set" || name == "attribute", name, line);
    OUTLINE::MAP& map = m_outline.maps.back();
    m_in_table = m_in_table && !map.table.has_value();
    if (m_in_table) {
      map.table = OUTLINE::TABLE{line,
                                 attribute(tag, "num_states"),
                                 attribute(tag, "num_reference_registers"),
                                 attribute(tag, "num_transformed_registers"),
                                 0,
                                 0};
    }
  }

  void below(std::string_view name, std::string_view tag, std::size_t line) {
    if (m_in_registers || m_outline.maps.empty()) {
      return;
    }
    OUTLINE::MAP& map = m_outline.maps.back();
    if (m_in_table && map.table.has_value()) {
      map.table->states_listed += m_depth == 5 ? 1U : 0U;
      map.table->values_listed += m_depth == 7 && name == "value" ? 1U : 0U;
    } else if (m_depth == 7) {
      map.entries.push_back({line, m_side, attribute(tag, "id")});
    }
  }

  OUTLINE m_outline;
  int m_depth = 0;
  bool m_in_registers = false;
  bool m_in_maps = false;
  bool m_in_table = false;
  KPT_SET_ENUM m_side = KPT_REFERENCE_SET;
  std::string* m_field = nullptr;  // where text goes; none is added to its list meanwhile
};

// Adds up what the tables claim.
class CLAIMS {
 public:
  void start(std::string_view name, std::string_view tag, std::size_t line) {
    if (name != "state_table") {
      return;
    }
    const auto number = [&](std::string_view key) -> std::uint64_t {
      return static_cast<unsigned short>(gen_atoi(MEM_STRING(std::string_view(attribute(tag, key)))));
    };
    const std::uint64_t entries =
        number("num_states") * (number("num_reference_registers") + number("num_transformed_registers"));
    m_claims.entries += entries;
    if (entries > m_most) {
      m_most = entries;
      m_claims.line_of_largest = line;
    }
  }
  void end(std::size_t) {}
  void characters(std::string_view) {}

  const TABLE_CLAIMS& get() const { return m_claims; }

 private:
  TABLE_CLAIMS m_claims;
  std::uint64_t m_most = 0;
};

}  // namespace

// Most files have no table at all, which is soon seen.
TABLE_CLAIMS table_claims(std::string_view text) {
  if (text.find("<state_table") == std::string_view::npos) {
    return {};
  }
  CLAIMS claims;
  SCANNER<CLAIMS>(text, claims).run();
  return claims.get();
}

OUTLINE outline_of(const std::string& text) {
  OUTLINER outliner;
  SCANNER<OUTLINER>(text, outliner).run();
  return outliner.take();
}

}  // namespace kptdb
