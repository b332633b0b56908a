// What differs between the versions of Yosys that the plugin can be built for. The rest of the plugin
// says what all of them understand: of a constant `size()` and `[]`, which is a vector in some only.
//
// Ownership: types alone.
#ifndef YOSYS_VERSION_H
#define YOSYS_VERSION_H

#include "kernel/yosys.h"

namespace kpt_yosys {

// Declared alone: the type in which the first kind of connection names its port.
template <class PORT>
PORT port_of(void (Yosys::RTLIL::Monitor::*)(Yosys::RTLIL::Cell*, PORT, const Yosys::RTLIL::SigSpec&,
                                             const Yosys::RTLIL::SigSpec&));

/// How a monitor of connections is told of the port: by reference in earlier versions, by value in later ones.
using CONNECTED_PORT = decltype(port_of(&Yosys::RTLIL::Monitor::notify_connect));

}  // namespace kpt_yosys

#endif
