// What the rest of the flow needs from its own services.
//
// Ownership: none.
#ifndef EXAMPLES_OWN_HOST_HOST_H
#define EXAMPLES_OWN_HOST_HOST_H

namespace flow {

/// The number of blocks that the library has now.
long live_blocks();
/// Whether the log shows the library's debug lines.
void set_verbose(bool on);

}  // namespace flow

#endif
