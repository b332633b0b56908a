// Names that stay when a netlist is written. In Verilog and other formats, Yosys
// replaces private names, which have a dollar.
//
// Ownership: the tracker is used only during the call.
#ifndef LASTING_NAMES_H
#define LASTING_NAMES_H

#include <cstddef>

#include "tracker.h"

namespace kpt_yosys {

/// The number of present registers with a private name.
std::size_t count_private_names(const TRACKER& tracker);

/// Gives the wires and technology cells of these registers a public name such as "_kpt_17_", with a
/// free number. Tell the tracker afterwards that the netlist changed, and do not use its view before.
void give_lasting_names(const TRACKER& tracker);

}  // namespace kpt_yosys

#endif
