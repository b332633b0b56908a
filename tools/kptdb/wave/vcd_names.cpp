#include "vcd_names.h"

#include <fmt/format.h>

#include "../outcome.h"
#include "../text.h"
#include "indexed_name.h"

namespace kptdb {

namespace {

constexpr std::size_t SCOPES_SHOWN = 8;

// A name as in the index: without the mark of an escaped name, wherever in the path the mark is.
std::string plain_name(std::string_view name, char divider) {
  std::string plain;
  bool begins = true;
  for (const char c : name) {
    if (c != '\\' || !begins) {
      plain += c;
    }
    begins = c == divider;
  }
  return plain;
}

}  // namespace

VCD_NAMES::VCD_NAMES(const VCD_READER& reader, const std::string& scope, char divider)
    : m_reader(reader), m_divider(divider), m_next(reader.variables().size(), NO_BIT) {
  index_variables(scope_of_path(scope));
}

// The path with dots, and with the marks of escaped names if wanted.
std::string VCD_NAMES::path_of_scope(std::uint32_t scope, bool with_marks) const {
  std::string path;
  for (; scope != 0; scope = m_reader.scopes()[scope].parent) {
    const VCD_SCOPE& here = m_reader.scopes()[scope];
    path.insert(0, path.empty() ? "" : ".").insert(0, here.name).insert(0, with_marks && here.is_escaped ? "\\" : "");
  }
  return path;
}

std::string VCD_NAMES::viewer_name(const VCD_BIT& bit) const {
  const VCD_VARIABLE& variable = m_reader.variables()[bit.variable];
  const bool is_vector = m_reader.width_of_signal(variable.signal) > 1;
  std::string name = is_vector ? "(" + std::to_string(bit.bit) + ")" : "";
  name += path_of_scope(variable.scope, true) + (variable.scope == 0 ? "" : ".");
  name += (variable.is_escaped ? "\\" : "") + variable.name;
  if (variable.index == BIT_INDEX) {
    name += "[" + std::to_string(variable.msb) + "]";
  } else if (variable.index == RANGE_INDEX && !variable.is_integer) {
    name += "[" + std::to_string(variable.msb) + ":" + std::to_string(variable.lsb) + "]";
  }
  return name;
}

std::uint32_t VCD_NAMES::scope_of_path(const std::string& path) const {
  std::string some;
  for (std::uint32_t scope = 0; scope < m_reader.scopes().size(); ++scope) {
    const std::string here = path_of_scope(scope, false);
    if (here == path) {
      return scope;
    }
    if (scope > 0 && scope <= SCOPES_SHOWN) {
      some += (some.empty() ? "" : ", ") + printable(here);
    }
  }
  throw FAILURE(EXIT_WRONG_USE, fmt::format("{}: no scope {}; the first ones are {}", m_reader.path(), printable(path),
                                            some.empty() ? "none" : some));
}

void VCD_NAMES::index_variables(std::uint32_t top) {
  const std::vector<VCD_SCOPE>& scopes = m_reader.scopes();
  // The text before the names of a scope. A parent comes before its children.
  std::vector<std::string> prefix(scopes.size());
  std::vector<bool> is_below(scopes.size(), false);
  is_below[top] = true;
  for (std::uint32_t scope = top + 1; scope < scopes.size(); ++scope) {
    if (is_below[scopes[scope].parent]) {
      is_below[scope] = true;
      prefix[scope] = prefix[scopes[scope].parent] + scopes[scope].name + m_divider;
    }
  }
  for (std::uint32_t k = 0; k < m_reader.variables().size(); ++k) {
    const VCD_VARIABLE& variable = m_reader.variables()[k];
    if (is_below[variable.scope] && !variable.is_number) {
      const auto [found, is_new] =
          m_first.try_emplace(plain_name(prefix[variable.scope] + variable.name, m_divider), k);
      if (!is_new) {
        m_next[k] = found->second;
        found->second = k;
      }
    }
  }
}

// The variables of that name that contain this bit: the bit at the index, or the only one.
void VCD_NAMES::look_at(std::string_view base, const std::int64_t* index, VCD_BIT& result) const {
  const auto found = m_first.find(base);
  for (std::uint32_t k = found == m_first.end() ? NO_BIT : found->second; k != NO_BIT; k = m_next[k]) {
    const VCD_VARIABLE& variable = m_reader.variables()[k];
    const std::uint32_t width = m_reader.width_of_signal(variable.signal);
    std::int64_t bit = 0;
    if (index == nullptr) {
      bit = width == 1 && variable.index != BIT_INDEX ? 0 : -1;
    } else if (variable.index != NO_INDEX) {
      bit = variable.msb >= variable.lsb ? variable.msb - *index : *index - variable.msb;
    } else {
      bit = -1;
    }
    if (bit < 0 || bit >= static_cast<std::int64_t>(width)) {
      continue;
    }
    const auto place = static_cast<std::uint32_t>(bit);
    if (result.finding == NOT_FOUND) {
      result = {FOUND, variable.signal, place, k};
    } else if (result.signal != variable.signal || result.bit != place) {
      result.finding = AMBIGUOUS;
    }
  }
}

VCD_BIT VCD_NAMES::find(std::string_view name) const {
  const std::string plain = plain_name(name, m_divider);
  VCD_BIT result;
  look_at(plain, nullptr, result);
  if (const auto split = split_index(plain)) {
    look_at(split->base, &split->index, result);
  }
  return result;
}

}  // namespace kptdb
