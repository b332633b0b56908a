// Prepares two modules for a proof that they are equal, with a keypoint database: the
// value of every register of the gold module gets the same name in the gate module.
//
// Ownership: database, modules and stream are used only during the call, which changes both modules.
#ifndef PROOF_H
#define PROOF_H

#include <ostream>
#include <string>

#include "db/kpt/kpt.h"
#include "kernel/yosys.h"

namespace kpt_yosys {

struct PROOF_SUMMARY {
  std::size_t m_registers = 0;  // of the gold module that have a register of the gate module
  std::size_t m_constants = 0;
  std::size_t m_machines = 0;
  std::size_t m_no_fanout = 0;
  std::size_t m_copies = 0;   // registers of the gate module that seem to be copies of one that a map names
  std::size_t m_hidden = 0;   // names of the gate module with another meaning in the gold module
  std::size_t m_missing = 0;  // registers and state bits that a module does not have
};

/// The name of the net, in both modules, for a reference register, or for the
/// state machine whose first register in the gold module it is.
std::string net_of_register(const std::string& name);
std::string net_of_machine(const std::string& first);
/// Likewise for the net that is 1 while the machine of the gate module is in a state of the database.
std::string net_of_code(const std::string& first);

/// Writes the codes of state machines to `codes`, in the form that equiv_make reads.
PROOF_SUMMARY prepare_proof(const KPT_KEYPOINTS_DB& db, Yosys::RTLIL::Module* gold, Yosys::RTLIL::Module* gate,
                            std::ostream& codes);

}  // namespace kpt_yosys

#endif
