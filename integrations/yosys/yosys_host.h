// What the host services of this plugin share: Yosys' log behind plain functions.
//
// Ownership: arguments are read during the call only; results are values of the caller.
#ifndef YOSYS_HOST_H
#define YOSYS_HOST_H

namespace kpt_yosys {

/// Whether Yosys shows debug output.
bool debug_is_shown();
/// Puts a line into Yosys' log; says whether it was shown.
bool show_debug(const char* tag, const char* text);
void show_warning(const char* tag, const char* text);

}  // namespace kpt_yosys

#endif
