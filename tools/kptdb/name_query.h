// The names that a command gets: exact, with * and ?, as regular expressions,
// without regard to case, or in a file.
//
// Ownership: owns its texts and compiled expressions.
#ifndef KPTDB_NAME_QUERY_H
#define KPTDB_NAME_QUERY_H

#include <regex.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kptdb {

struct NAME_OPTIONS {
  std::vector<std::string> names;
  std::string from;       // a file with a name on each line; "-" for standard input; empty: none
  bool is_regex = false;  // the names are extended regular expressions, which need not match all of a name
  bool any_case = false;  // whether the case of ASCII letters is ignored
  bool is_glob = false;   // all names are patterns, also those without * and ?
};

class NAME_QUERY {
 public:
  /// FAILURE for a wrong expression, and for a file that cannot be read.
  explicit NAME_QUERY(const NAME_OPTIONS& options);

  /// The given names, in order, each once.
  const std::vector<std::string>& names() const { return m_names; }

  /// Calls visit(k) for every given name that the text matches; k is its position in `names`.
  template <class VISIT>
  void for_each_match(std::string_view text, VISIT visit) const {
    const std::string folded = m_any_case ? fold(text) : std::string();
    const std::string_view looked_up = m_any_case ? std::string_view(folded) : text;
    const auto exact = m_exact.find(looked_up);
    if (exact != m_exact.end()) {
      visit(exact->second);
    }
    for (const PATTERN& pattern : m_patterns) {
      if (matches(pattern, looked_up)) {
        visit(pattern.number);
      }
    }
  }
  bool matches_any(std::string_view text) const;

 private:
  struct FREE {
    void operator()(regex_t* regex) const;
  };
  struct PATTERN {
    std::size_t number;
    std::string glob;
    std::unique_ptr<regex_t, FREE> regex;  // null: a glob
  };
  struct HASH {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  static std::string fold(std::string_view text);
  static bool matches(const PATTERN& pattern, std::string_view text);
  void add(const std::string& name, const NAME_OPTIONS& options);
  PATTERN compiled(const std::string& name) const;

  bool m_any_case;
  std::vector<std::string> m_names;
  boost::unordered_flat_map<std::string, std::size_t, HASH, std::equal_to<>>
      m_exact;  // in lower case when case is ignored
  std::vector<PATTERN> m_patterns;
};

}  // namespace kptdb

#endif
