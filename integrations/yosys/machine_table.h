// The codes of a state machine as they are recorded: for each register of each side, its value in each state.
//
// Ownership: plain values.
#ifndef MACHINE_TABLE_H
#define MACHINE_TABLE_H

#include <optional>
#include <vector>

namespace kpt_yosys {

struct MACHINE_TABLE {
  struct COLUMN {
    int m_register = -1;  // by the caller's numbers for the registers of a side
    std::vector<bool> m_values;
  };
  std::vector<COLUMN> m_reference;
  std::vector<COLUMN> m_transformed;
  std::size_t m_states = 0;
  std::size_t m_members = 0;  // the columns of m_reference that the codes of the source have
};

/// Whether a register of the netlist holds a bit of both machines.
bool share_register(const MACHINE_TABLE& a, const MACHINE_TABLE& b);

/// Both machines as one, whose states are those that both can be in together.
/// Empty when there are none, or more than a database holds.
std::optional<MACHINE_TABLE> joined(const MACHINE_TABLE& a, const MACHINE_TABLE& b);

}  // namespace kpt_yosys

#endif
