// The parts that the host services of this plugin share: plain functions for the log of Yosys.
//
// Ownership: arguments are read only during the call; the caller owns the results.
#ifndef YOSYS_HOST_H
#define YOSYS_HOST_H

namespace kpt_yosys {

/// Whether Yosys shows debug output.
bool debug_is_shown();
/// Writes a line to the log of Yosys, and returns whether it was shown.
bool show_debug(const char* tag, const char* text);
void show_warning(const char* tag, const char* text);

}  // namespace kpt_yosys

#endif
