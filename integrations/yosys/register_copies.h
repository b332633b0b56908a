// Registers of one netlist that load the same value at each edge, as far as random values tell.
//
// Ownership: modules are used only during the call.
#ifndef REGISTER_COPIES_H
#define REGISTER_COPIES_H

#include <utility>
#include <vector>

#include "kernel/yosys.h"

namespace kpt_yosys {

/// A bit of the output of a flip-flop.
using REGISTER_BIT = std::pair<Yosys::RTLIL::Cell*, int>;

/// Classes of registers. When the registers of each class hold the same value, they do so after each edge too.
/// That is tried with random values and not proven. A class has at least two registers. Cells that are neither
/// gates nor flip-flops give any value. Empty when the netlist has loops.
std::vector<std::vector<REGISTER_BIT>> registers_alike(Yosys::RTLIL::Module* module);

}  // namespace kpt_yosys

#endif
