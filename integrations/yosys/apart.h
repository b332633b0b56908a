// Runs work in a process of its own, so that it changes nothing in this process.
//
// Ownership: the caller owns the result.
#ifndef APART_H
#define APART_H

#include <functional>
#include <vector>

namespace kpt_yosys {

/// Runs `work` in a copy of this process, which then ends, and returns the result. Throws when
/// the system cannot start a process, or when `work` throws; `what` names the work in the text.
std::vector<int> done_apart(const char* what, const std::function<std::vector<int>()>& work);

}  // namespace kpt_yosys

#endif
