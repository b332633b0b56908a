// Netlists of only gates and registers, for simulations and comparisons.
//
// Ownership: the caller owns texts and simulations; modules are read only during the call.
#ifndef GATES_H
#define GATES_H

#include <string>

#include "simulation.h"

namespace kpt_yosys {

/// The module and the modules below it as RTLIL. A text holds no identifier object of Yosys. Such
/// an object would keep its number, and later passes would see their objects in another order.
std::string text_of_modules(RTLIL::Module* top);

/// Call it only in a process of its own, because the passes that make the gates create identifiers. A
/// memory of more than 1,024 words stays, and its values are never known. `top` is Yosys' spelling.
SIMULATION gates_of(const std::string& text, const std::string& top);

}  // namespace kpt_yosys

#endif
