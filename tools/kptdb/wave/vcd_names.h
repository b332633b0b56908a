// Finds the bits of a dump by the names that registers have in a netlist.
//
// A flattened netlist has the path of instances in its names, "\u1.u2.q ", and any other
// netlist in its scopes. Both are the name "u1.u2.q" here. A name that two signals have
// is ambiguous and finds neither, because nobody knows which of them the register is.
//
// Ownership: the reader outlives the names.
#ifndef KPTDB_VCD_NAMES_H
#define KPTDB_VCD_NAMES_H

#include <string>
#include <string_view>
#include <vector>

#include "vcd_reader.h"

namespace kptdb {

enum VCD_FINDING { FOUND, NOT_FOUND, AMBIGUOUS };

/// A bit of a signal, counted from its first one.
struct VCD_BIT {
  VCD_FINDING finding = NOT_FOUND;
  std::uint32_t signal = 0;
  std::uint32_t bit = 0;
  std::uint32_t variable = 0;
};

class VCD_NAMES {
 public:
  /// The names below a scope, "tb.dut"; empty for the whole dump. FAILURE when there is no such scope.
  VCD_NAMES(const VCD_READER& reader, const std::string& scope, char divider);

  VCD_BIT find(std::string_view name) const;
  /// GTKWave's name of the bit: "tb.dut.q", or "(3)tb.dut.data[7:0]", counted from the left.
  std::string viewer_name(const VCD_BIT& bit) const;

 private:
  std::string path_of_scope(std::uint32_t scope, bool with_marks) const;
  std::uint32_t scope_of_path(const std::string& path) const;
  void index_variables(std::uint32_t top);
  void look_at(std::string_view base, const std::int64_t* index, VCD_BIT& result) const;

  const VCD_READER& m_reader;
  char m_divider;
  boost::unordered_flat_map<std::string, std::uint32_t, TEXT_HASH, std::equal_to<>> m_first;  // variable by name
  std::vector<std::uint32_t> m_next;                                                          // with the same name
};

}  // namespace kptdb

#endif
