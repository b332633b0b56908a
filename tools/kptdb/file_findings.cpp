#include "file_findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// A number in the writer's form, in the range of the library's ids and counts.
std::optional<int> number(std::string_view text) {
  int value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

}  // namespace

bool FILE_FINDINGS::misses_names(const DATABASE& db) const {
  return !m_names && (db.registers(KPT_REFERENCE_SET).size() != m_read.at(KPT_REFERENCE_SET) ||
                      db.registers(KPT_TRANSFORMED_SET).size() != m_read.at(KPT_TRANSFORMED_SET));
}

std::size_t FILE_FINDINGS::line_of(KPT_SET_ENUM side, long id) const {
  return std::max<std::size_t>(m_lines.find(side, id), 1);
}

void FILE_FINDINGS::error(std::size_t line, std::string_view code, std::string text) {
  m_findings.push_back({line, true, code, std::move(text)});
}

void FILE_FINDINGS::warning(std::size_t line, std::string_view code, std::string text) {
  m_findings.push_back({line, false, code, std::move(text)});
}

void FILE_FINDINGS::on_unexpected(std::size_t line, std::string_view name) {
  error(line, "element-unexpected", fmt::format("element {} does not belong here", printable(name)));
}

void FILE_FINDINGS::on_key_point(const KEY_POINT& k) {
  if (!k.is_read()) {
    warning(k.line, "keypoint-ignored",
            fmt::format("keypoint {} is not read: it is neither a signal nor a block instance",
                        printable(k.name.value_or(""))));
    return;
  }
  check_id(k);
  ++m_read.at(static_cast<std::size_t>(k.side));
  if (m_names) {
    check_name(k, *m_names);
  }
}

void FILE_FINDINGS::check_name(const KEY_POINT& k, NAME_TABLE& names) {
  // A length separates the name from the type after it.
  const std::string_view name = k.name ? std::string_view(*k.name) : std::string_view();
  m_name = k.side == KPT_REFERENCE_SET ? 'r' : 't';
  m_name += std::to_string(name.size());
  m_name += ' ';
  m_name += name;
  if (k.reg_type.has_value()) {
    m_name += '\n';
    m_name += *k.reg_type;
  }
  if (!names.insert(m_name)) {
    error(k.line, "name-duplicate",
          fmt::format("{} register {} takes the place of an earlier one", side_word(k.side),
                      printable(k.name.value_or(""))));
  }
}

void FILE_FINDINGS::check_id(const KEY_POINT& k) {
  const std::optional<int> id = number(k.id);
  if (!id) {
    error(k.line, "id-invalid", fmt::format("\"{}\" is not an id", printable(k.id)));
    return;
  }
  const std::size_t earlier = m_lines.find(k.side, *id);
  if (earlier == 0) {
    m_lines.add(k.side, *id, k.line);
  } else {
    error(k.line, "id-duplicate", fmt::format("{} id {} is taken since line {}", side_word(k.side), *id, earlier));
  }
}

void FILE_FINDINGS::on_map(std::size_t line, std::string_view elim_type) {
  m_map_lines.push_back(line);
  const bool is_known = std::find(KPT_ELIM_WORDS.begin(), KPT_ELIM_WORDS.end(), elim_type) != KPT_ELIM_WORDS.end();
  if (!elim_type.empty() && !is_known) {
    warning(line, "elimination-unknown", fmt::format("\"{}\" is no reason for an elimination", printable(elim_type)));
  }
}

// The registers come before the maps, because a set after them ends the load.
void FILE_FINDINGS::on_entry(std::size_t line, KPT_SET_ENUM side, std::string_view text) {
  const std::optional<int> id = number(text);
  if (!id) {
    error(line, "id-invalid", fmt::format("\"{}\" is not an id", printable(text)));
  } else if (m_lines.find(side, *id) == 0) {
    error(line, "id-unresolved", fmt::format("no {} register has the id {} that is listed here", side_word(side), *id));
  }
}

void FILE_FINDINGS::on_table(const TABLE& table) {
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

}  // namespace kptdb
