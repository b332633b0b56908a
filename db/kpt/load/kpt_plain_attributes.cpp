#include "db/kpt/load/kpt_plain_attributes.h"

#include <algorithm>

#include "db/kpt/files/kpt_plain_characters.h"

using namespace kpt_plain;

std::string_view KPT_PLAIN_ATTRIBUTES::value(std::string_view name) const {
  for (const ATTRIBUTE& attribute : m_attributes) {
    if (attribute.name == name) {
      return attribute.is_as_is ? attribute.value : replaced(attribute.value);
    }
  }
  return {};
}

// A few are compared with each other, many are sorted.
bool KPT_PLAIN_ATTRIBUTES::several_are_unique() {
  constexpr std::size_t FEW = 8;
  if (m_attributes.size() <= FEW) {
    for (auto attribute = m_attributes.begin(); attribute != m_attributes.end(); ++attribute) {
      if (std::any_of(m_attributes.begin(), attribute, [&](const ATTRIBUTE& a) { return a.name == attribute->name; })) {
        return false;
      }
    }
    return true;
  }
  m_sorted.clear();
  for (const ATTRIBUTE& attribute : m_attributes) {
    m_sorted.push_back(attribute.name);
  }
  std::sort(m_sorted.begin(), m_sorted.end());
  return std::adjacent_find(m_sorted.begin(), m_sorted.end()) == m_sorted.end();
}

// Each blank becomes a space, and the two characters of a line end become one. A
// blank that a reference names is not replaced.
std::string_view KPT_PLAIN_ATTRIBUTES::replaced(std::string_view value) const {
  m_replaced.clear();
  while (!value.empty()) {
    std::size_t taken = 1;
    if (value.front() == '&') {
      char out[4];
      std::size_t size = 0;
      taken = reference_length(value, out, size);
      m_replaced.append(out, size);
    } else if (is(value.front(), BLANK)) {
      taken = value.starts_with("\r\n") ? 2 : 1;
      m_replaced += ' ';
    } else {
      m_replaced += value.front();
    }
    value.remove_prefix(taken);
  }
  return m_replaced;
}
