// What the rest of the flow asks of its own services.
//
// Ownership: none.
#ifndef EXAMPLES_OWN_HOST_HOST_H
#define EXAMPLES_OWN_HOST_HOST_H

namespace flow {

/// The blocks that the library holds now.
long live_blocks();
/// Whether the log takes the library's debug lines.
void set_verbose(bool on);

}  // namespace flow

#endif
