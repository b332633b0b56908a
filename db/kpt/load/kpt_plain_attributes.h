// The attributes of one start tag of a plain file, as they are written in the tag.
//
// Ownership: owns nothing. The names and values are parts of the window, and are
// valid until the window moves on.
#ifndef KPT_PLAIN_ATTRIBUTES_H
#define KPT_PLAIN_ATTRIBUTES_H

#include <string_view>
#include <vector>

#include "db/kpt/kpt_element_attributes.h"
#include "db/kpt/kpt_types.h"

class KPT_PLAIN_ATTRIBUTES final : public KPT_ELEMENT_ATTRIBUTES {
 public:
  void clear() { m_attributes.clear(); }
  /// `is_as_is`: the value has neither a reference nor a blank that is to be replaced.
  void add(std::string_view name, std::string_view value, bool is_as_is) {
    m_attributes.emplace_back(name, value, is_as_is);
  }
  /// Whether no two have the same name.
  bool are_unique() { return m_attributes.size() < 2 || several_are_unique(); }

  std::string_view value(std::string_view name) const override;

 private:
  // Constructed in its place: a copy would wait for the stores of the parts.
  struct ATTRIBUTE {
    ATTRIBUTE(std::string_view n, std::string_view v, bool as_is) : name(n), value(v), is_as_is(as_is) {}

    std::string_view name;
    std::string_view value;
    bool is_as_is;
  };
  bool several_are_unique();
  std::string_view replaced(std::string_view value) const;

  std::vector<ATTRIBUTE, MEM_STL_ALLOCATOR<ATTRIBUTE>> m_attributes;
  std::vector<std::string_view, MEM_STL_ALLOCATOR<std::string_view>> m_sorted;
  mutable KPT_STRING m_replaced;
};

#endif
