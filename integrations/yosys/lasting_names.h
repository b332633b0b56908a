// Names that stay when a netlist is written: Yosys gives private names (with a dollar) anew in Verilog
// and other formats.
//
// Ownership: the tracker is used during the call only.
#ifndef LASTING_NAMES_H
#define LASTING_NAMES_H

#include <cstddef>

#include "tracker.h"

namespace kpt_yosys {

/// How many of the registers that are there now have a private name.
std::size_t count_private_names(const TRACKER& tracker);

/// Gives the wires and technology cells of those a public name, "_kpt_17_" by a number that is free.
/// The tracker has to be told that the netlist changed, and its view asked for no more before that.
void give_lasting_names(const TRACKER& tracker);

}  // namespace kpt_yosys

#endif
