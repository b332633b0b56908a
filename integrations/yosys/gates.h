// Netlists as gates and registers alone, to be simulated or compared.
//
// Ownership: texts and simulations are the caller's; modules are read during the call only.
#ifndef GATES_H
#define GATES_H

#include <string>

#include "simulation.h"

namespace kpt_yosys {

/// The module and those below it as RTLIL. The text holds no identifier of Yosys: one that is held is
/// not given anew, and later passes would see their objects in another order.
std::string text_of_modules(RTLIL::Module* top);

/// To be called in a process of its own only: the passes that make the gates leave identifiers behind.
/// A memory above 1,024 words stays: what is read of it is never known. `top` as Yosys spells it.
SIMULATION gates_of(const std::string& text, const std::string& top);

}  // namespace kpt_yosys

#endif
