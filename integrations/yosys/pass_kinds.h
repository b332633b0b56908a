// What a pass of Yosys may do to registers, by its name.
//
// Ownership: plain values.
#ifndef PASS_KINDS_H
#define PASS_KINDS_H

#include <string>
#include <vector>

namespace kpt_yosys {

/// The only passes that remove a register because it drives nothing. Others that make registers
/// vanish put them into something else.
bool removes_unused(const std::string& pass);

/// Passes that make nets anew and give each the name that it bore. After all others, a name that was
/// borne before proves nothing: it may have been given anew.
bool keeps_names(const std::string& pass);

/// Passes that take a reader from a register only where that makes no difference, and passes that
/// only call others. All others may put a register into something else, and leave it behind unread.
bool only_simplifies(const std::string& pass);

/// Passes that put cells of the technology in place of flip-flops.
bool maps_to_technology(const std::string& pass);

/// Passes that make new registers of all, of which what they compute tells which is which.
bool makes_registers_anew(const std::string& pass, const std::vector<std::string>& args);

}  // namespace kpt_yosys

#endif
