// State machines in the module that equiv_make makes, for values that the source leaves undefined.
//
// The next state of a machine may be undefined in the source, and the netlist may then go to a state without
// a code. While it is in such a state, the state of the source is undefined, and so is what it decides.
//
// Ownership: the module owns cells and nets, and outlives them.
#ifndef OPEN_MACHINES_H
#define OPEN_MACHINES_H

#include <vector>

#include "kernel/yosys.h"

namespace kpt_yosys {

struct OPEN_MACHINE {
  std::vector<Yosys::RTLIL::Cell*> m_states;  // the comparisons of the bits of the gold module's state
  Yosys::RTLIL::Cell* m_code = nullptr;       // the comparison that demands a code; its B input tells that there is one
};

/// The machines whose state all registers of the gold module hold. While the netlist is in a state without a
/// code, its logic then reads this state itself, and no longer a code for the state of the gold module.
std::vector<OPEN_MACHINE> find_open_machines(Yosys::RTLIL::Module* equiv);

}  // namespace kpt_yosys

#endif
