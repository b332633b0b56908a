// State tables as Python sees them: rows and columns count from 0, and each side is an object.
//
// Ownership: a table is a value that never changes; its two sides share it.
#ifndef KPT_PYTHON_STATE_TABLE_H
#define KPT_PYTHON_STATE_TABLE_H

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_python {

/// The codes of one state: character k is the bit of column k.
using CODE_PAIR = std::pair<std::string, std::string>;
using CODES = std::vector<CODE_PAIR>;

/// One side: a value of 0 or 1 for each state and column. It has a buffer of
/// bytes for numpy, which the first request makes.
class BITS {
 public:
  BITS(std::shared_ptr<const KPT_STATE_TABLE> table, KPT_SET_ENUM side) : m_table(std::move(table)), m_side(side) {}

  std::size_t states() const { return m_table->get_number_of_states(); }
  std::size_t columns() const;
  /// Does not check bounds.
  bool at(std::size_t state, std::size_t column) const;
  pybind11::buffer_info buffer();

 private:
  std::shared_ptr<const KPT_STATE_TABLE> m_table;
  KPT_SET_ENUM m_side;
  std::vector<unsigned char> m_bytes;
};

class TABLE {
 public:
  explicit TABLE(std::shared_ptr<const KPT_STATE_TABLE> table) : m_table(std::move(table)) {}
  /// ValueError when the codes are not a table.
  explicit TABLE(const CODES& codes);

  const KPT_STATE_TABLE& get() const { return *m_table; }
  BITS side(KPT_SET_ENUM side) const { return {m_table, side}; }
  CODES codes() const;

 private:
  std::shared_ptr<const KPT_STATE_TABLE> m_table;
};

/// A StateTable, or pairs of codes.
TABLE to_table(pybind11::handle states);

void bind_state_table(pybind11::module_& module);

}  // namespace kpt_python

#endif
