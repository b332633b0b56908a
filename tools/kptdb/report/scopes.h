// The hierarchy in the names of a netlist.
//
// Ownership: refers to the names, which outlive it.
#ifndef KPTDB_REPORT_SCOPES_H
#define KPTDB_REPORT_SCOPES_H

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kptdb {

/// Scopes, numbered so that each comes after the scope that contains it. Scope 0 is the whole design.
class SCOPES {
 public:
  struct SCOPE {
    std::string_view name;  // with its separator; the joined names of a path are the path's text
    std::uint32_t parent = 0;
  };

  SCOPES() { m_all.push_back({}); }
  /// The scope of a register. "." and "/" separate scopes, but not within brackets and not at an end.
  std::uint32_t scope_of(std::string_view name);
  const std::vector<SCOPE>& all() const { return m_all; }

 private:
  std::vector<SCOPE> m_all;
  // By the text of the whole path.
  std::unordered_map<std::string_view, std::uint32_t> m_numbers;
  std::string_view m_last_path;  // most names of one scope follow each other
  std::uint32_t m_last = 0;
};

}  // namespace kptdb

#endif
