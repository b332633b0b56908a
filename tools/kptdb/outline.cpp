#include "outline.h"

#include <algorithm>

#include "h/gen_sys.h"

namespace kptdb {

namespace {

KPT_SET_ENUM side_named(std::string_view type) { return type == "reference" ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET; }

// The number as the library reads it.
std::uint64_t count_of(const std::string& text) { return static_cast<unsigned short>(gen_atoi(MEM_STRING(text))); }

}  // namespace

std::size_t OUTLINE::line_behind_transformations() const {
  return m_line_of_unexpected != 0 ? m_line_of_unexpected : std::max<std::size_t>(m_end_of_maps, 1);
}

void OUTLINE::on_unexpected(std::size_t, std::string_view) {}
void OUTLINE::on_key_point(const KEY_POINT&) {}
void OUTLINE::on_map(std::size_t, std::string_view) {}
void OUTLINE::on_entry(std::size_t, KPT_SET_ENUM, std::string_view) {}
void OUTLINE::on_table(const TABLE&) {}

// Uses the depth, like a load, which looks at few names. In the content of an
// entity, a load reads only texts and values of tables.
void OUTLINE::start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  ++m_depth;
  if (m_references > 0 && !m_in_table) {
    return;
  }
  switch (m_depth) {
    case 1:
      m_root = name;
      break;
    case 2:
      start_part(name, attributes, line);
      break;
    case 3:
      m_in_registers ? start_key_point(name, attributes, line) : start_map(name, attributes, line);
      break;
    case 4:
      m_in_registers ? start_field(name) : start_part_of_map(name, attributes, line);
      break;
    default:
      start_below(name, attributes, line);
  }
}

void OUTLINE::end(std::size_t line) {
  if (m_references > 0) {
    --m_depth;
    return;
  }
  if (m_depth == 4) {
    m_field = nullptr;
    if (m_in_table) {
      m_in_table = false;
      on_table(m_table);
    }
  } else if (m_depth == 3 && m_in_registers) {
    on_key_point(m_key_point);
  } else if (m_depth == 2 && m_in_maps && m_end_of_maps == 0) {
    m_end_of_maps = line;
  }
  --m_depth;
}

void OUTLINE::text(std::string_view piece) {
  if (m_field != nullptr) {
    m_field->append(piece);
  }
}

void OUTLINE::expect(bool expected, std::string_view name, std::size_t line) {
  if (!expected) {
    m_line_of_unexpected = m_line_of_unexpected == 0 ? line : m_line_of_unexpected;
    on_unexpected(line, name);
  }
}

void OUTLINE::start_part(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  expect(name == "key_points_set" || name == "transformations_set", name, line);
  m_in_registers = name == "key_points_set";
  m_in_maps = name == "transformations_set";
  m_has_register_set |= m_in_registers;
  m_side = side_named(attributes.value("type"));
}

void OUTLINE::start_key_point(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  expect(name == "key_point", name, line);
  m_key_point.line = line;
  m_key_point.side = m_side;
  m_key_point.id = attributes.value("id");
  m_key_point.type = attributes.value("type");
  m_key_point.name.reset();
  m_key_point.entity.reset();
  m_key_point.reg_type.reset();
}

void OUTLINE::start_field(std::string_view name) {
  KEY_POINT& k = m_key_point;
  auto* field = name == "name" ? &k.name : name == "entity" ? &k.entity : name == "reg_type" ? &k.reg_type : nullptr;
  if (field != nullptr && !field->has_value()) {
    m_field = &field->emplace();
  }
}

void OUTLINE::start_map(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  expect(name == "transformation", name, line);
  m_has_table = false;
  on_map(line, attributes.value("elim_type"));
}

void OUTLINE::start_part_of_map(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  const std::string_view type = attributes.value("type");
  const bool is_table = name == "state_table" && type.empty();
  m_side = side_named(type);
  expect(is_table || name == "kp_set" || name == "attribute", name, line);
  if (is_table && !m_has_table) {
    start_table(attributes, line);
  }
}

void OUTLINE::start_table(const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  m_has_table = true;
  m_in_table = true;
  m_table.line = line;
  m_table.states = attributes.value("num_states");
  m_table.r_columns = attributes.value("num_reference_registers");
  m_table.t_columns = attributes.value("num_transformed_registers");
  m_table.states_listed = 0;
  m_table.values_listed = 0;
  const std::uint64_t claimed = count_of(m_table.states) * (count_of(m_table.r_columns) + count_of(m_table.t_columns));
  if (claimed > m_largest_table) {
    m_largest_table = claimed;
    m_line_of_largest_table = line;
  }
}

void OUTLINE::start_below(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) {
  if (m_in_registers) {
    return;
  }
  if (m_in_table) {
    m_table.states_listed += m_depth == 5 && m_references == 0 ? 1U : 0U;
    m_table.values_listed += m_depth >= 7 && name == "value" ? 1U : 0U;
  } else if (m_depth == 7) {
    on_entry(line, m_side, attributes.value("id"));
  }
}

}  // namespace kptdb
