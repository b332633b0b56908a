// What a pass of Yosys may do to registers, according to its name.
//
// Ownership: plain values.
#ifndef PASS_KINDS_H
#define PASS_KINDS_H

#include <string>
#include <vector>

namespace kpt_yosys {

/// The only passes that remove a register because it drives nothing. Other passes
/// that remove registers make them part of something else.
bool removes_unused(const std::string& pass);

/// Passes that make nets anew and give each net its old name. After any other pass,
/// a name that existed before proves nothing, because another net may have it.
bool keeps_names(const std::string& pass);

/// Passes that remove a reader of a register only if that changes nothing, and passes that only call others.
/// Any other pass may make a register part of something else, and leave the register without readers.
bool only_simplifies(const std::string& pass);

/// Passes that replace flip-flops by technology cells.
bool maps_to_technology(const std::string& pass);

/// Passes that make all registers anew, which can be identified only by their functions.
bool makes_registers_anew(const std::string& pass, const std::vector<std::string>& args);

}  // namespace kpt_yosys

#endif
