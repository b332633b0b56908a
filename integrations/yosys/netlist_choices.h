// Proofs of netlists that were synthesised with the freedom of undefined values.
//
// Where the source leaves a value undefined, each netlist may choose it. In the module that
// equiv_make makes, a value of the gold side is compared with a value of the gate side. Beside the
// gold value, logic is added that tells whether it is undefined, as each gate of the gold side tells
// it from its inputs. Where it is, the gold side takes the gate side's value. A register of the
// gold side that took a choice holds it, and all its readers read it. Call write_down_choices() first.
//
// Ownership: modules are used only during the calls.
#ifndef NETLIST_CHOICES_H
#define NETLIST_CHOICES_H

#include <cstddef>

#include "kernel/yosys.h"

namespace kpt_yosys {

/// Returns the number of compared values that the gold side may take from the gate side. The gold side
/// consists of gates and of flip-flops with only a clock; what other cells give counts as defined. An
/// undefined constant on the gate side may be any value, at each place another one.
std::size_t take_choices(Yosys::RTLIL::Module* equiv);

}  // namespace kpt_yosys

#endif
