// What some columns of a state table say of others: finds the codes of a machine
// by the known columns.
//
// Ownership: plain values.
#ifndef KPTDB_COLUMN_CODES_H
#define KPTDB_COLUMN_CODES_H

#include <boost/unordered/unordered_flat_map.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "../facts.h"
#include "vcd_reader.h"

namespace kptdb {

class COLUMN_CODES {
 public:
  /// Codes of the source's columns by the given columns of the target's; columns count from 0.
  COLUMN_CODES(const std::vector<CODE_PAIR>& codes, const std::vector<std::uint32_t>& known_columns);

  /// The reference code, with x where several states have the given bits and
  /// differ; null for a code that no state has.
  const std::string* reference_code(const std::string& known_bits) const;
  /// All codes, in no particular order.
  const auto& all() const { return m_codes; }

 private:
  boost::unordered_flat_map<std::string, std::string, TEXT_HASH, std::equal_to<>> m_codes;
};

}  // namespace kptdb

#endif
