// The codes of a state machine as they are recorded: by register of each side, its value in each state.
//
// Ownership: plain values.
#ifndef MACHINE_TABLE_H
#define MACHINE_TABLE_H

#include <optional>
#include <vector>

namespace kpt_yosys {

struct MACHINE_TABLE {
  struct COLUMN {
    int m_register = -1;  // as the caller numbers the registers of a side
    std::vector<bool> m_values;
  };
  std::vector<COLUMN> m_reference;
  std::vector<COLUMN> m_transformed;
  std::size_t m_states = 0;
  std::size_t m_members = 0;  // of m_reference, registers that the codes of the source name
};

/// Whether a register of the netlist holds a bit of both.
bool share_register(const MACHINE_TABLE& a, const MACHINE_TABLE& b);

/// Both as one machine: its states are those in which both can be together. Nothing when there are none, or more of
/// them than a database holds.
std::optional<MACHINE_TABLE> joined(const MACHINE_TABLE& a, const MACHINE_TABLE& b);

}  // namespace kpt_yosys

#endif
