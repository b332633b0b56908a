// Work in a process of its own, so that it leaves no trace in this one.
//
// Ownership: the result is the caller's.
#ifndef APART_H
#define APART_H

#include <functional>
#include <vector>

namespace kpt_yosys {

/// What `work` gives, done in a copy of this process that then ends. Throws when the system does not
/// give what a process takes, or when `work` throws; `what` names it there.
std::vector<int> done_apart(const char* what, const std::function<std::vector<int>()>& work);

}  // namespace kpt_yosys

#endif
