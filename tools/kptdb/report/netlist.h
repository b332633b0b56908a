// The registers of one netlist of a report, numbered in the order in which they are added.
//
// Ownership: a NETLIST refers to texts of the databases, which outlive it. It owns its columns.
#ifndef KPTDB_REPORT_NETLIST_H
#define KPTDB_REPORT_NETLIST_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kptdb {

/// The key that identifies a register in its netlist. Entity and type are empty for a signal.
struct REGISTER_KEY {
  std::string_view name;
  std::string_view entity;
  std::string_view type;
  bool is_signal = true;
  bool operator==(const REGISTER_KEY&) const = default;
};

struct REGISTER_KEY_HASH {
  std::size_t operator()(const REGISTER_KEY& key) const;
};

/// Entity and type of block instances, numbered from 1; 0 is a signal.
class KINDS {
 public:
  std::uint32_t number(const REGISTER_KEY& key);
  const std::vector<std::pair<std::string, std::string>>& all() const { return m_all; }

 private:
  std::map<std::pair<std::string, std::string>, std::uint32_t> m_numbers;
  std::vector<std::pair<std::string, std::string>> m_all;
};

/// Attributes of a register or a map: names and values, in order of name.
using ATTRIBUTES = std::vector<std::pair<std::string, std::string>>;

/// The different sets of attributes; 0 is the empty one.
class ATTRIBUTE_SETS {
 public:
  ATTRIBUTE_SETS() { number({}); }
  std::uint32_t number(const ATTRIBUTES& attributes);
  const std::vector<ATTRIBUTES>& all() const { return m_all; }

 private:
  std::map<ATTRIBUTES, std::uint32_t> m_numbers;
  std::vector<ATTRIBUTES> m_all;
};

class NETLIST {
 public:
  static constexpr std::uint32_t NO_MAP = 0;

  struct ROW {
    REGISTER_KEY key;
    std::uint32_t attributes = 0;
    std::uint32_t map_as_reference = NO_MAP;  // the map's number in its stage, plus 1
    std::uint32_t map_as_transformed = NO_MAP;
  };

  void reserve(std::size_t count);
  /// The number of the register, which may be new or known from the stage before.
  std::uint32_t add(const REGISTER_KEY& key);
  /// size() for a register that the netlist does not have.
  std::uint32_t find(const REGISTER_KEY& key) const;

  std::uint32_t size() const { return static_cast<std::uint32_t>(m_rows.size()); }
  ROW& row(std::uint32_t number) { return m_rows[number]; }
  const std::vector<ROW>& rows() const { return m_rows; }

 private:
  std::vector<ROW> m_rows;
  std::unordered_map<REGISTER_KEY, std::uint32_t, REGISTER_KEY_HASH> m_numbers;
};

}  // namespace kptdb

#endif
