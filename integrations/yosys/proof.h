// Makes two modules ready to be proven equal, by what a keypoint database says: every register of
// the gold module gets its value in the gate module, under a name that both sides share.
//
// Ownership: database, modules and stream are used during the call only; both modules are changed.
#ifndef PROOF_H
#define PROOF_H

#include <ostream>
#include <string>

#include "db/kpt/kpt.h"
#include "kernel/yosys.h"

namespace kpt_yosys {

struct PROOF_SUMMARY {
  std::size_t m_registers = 0;  // of the gold module, with a register of the gate module
  std::size_t m_constants = 0;
  std::size_t m_machines = 0;
  std::size_t m_no_fanout = 0;
  std::size_t m_hidden = 0;   // names of the gate module that mean something else in the gold one
  std::size_t m_missing = 0;  // registers and state bits that a module does not have
};

/// The net, on both sides, of a register of the reference, and of the state machine whose first such
/// register in the gold module that is.
std::string net_of_register(const std::string& name);
std::string net_of_machine(const std::string& first);

/// Writes the codes of state machines to `codes`, as equiv_make reads them.
PROOF_SUMMARY prepare_proof(const KPT_KEYPOINTS_DB& db, Yosys::RTLIL::Module* gold, Yosys::RTLIL::Module* gate,
                            std::ostream& codes);

}  // namespace kpt_yosys

#endif
