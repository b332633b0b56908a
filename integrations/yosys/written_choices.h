// What the cells of a module leave undefined, written down in the module itself.
//
// Ownership: the module is used only during the call.
#ifndef WRITTEN_CHOICES_H
#define WRITTEN_CHOICES_H

#include "kernel/yosys.h"

namespace kpt_yosys {

/// Undefined values are then undefined constants that a multiplexer selects. Call it before gates are made
/// of the module. A $pmux with two active selects is undefined, and `===` with an undefined constant is
/// never true.
void write_down_choices(Yosys::RTLIL::Module* module);

}  // namespace kpt_yosys

#endif
