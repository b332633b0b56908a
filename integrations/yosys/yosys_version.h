// What differs between the versions of Yosys that the plugin can be built for. The rest of the plugin
// says what all of them understand.
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

// Declared alone: the type of the number of a constant's bit.
template <class STATE, class NUMBER>
NUMBER number_of(STATE (Yosys::RTLIL::Const::*)(NUMBER) const);

/// A bit of a constant, whose bits are a vector in some versions only.
inline Yosys::RTLIL::State bit_of(const Yosys::RTLIL::Const& constant, int bit) {
  return constant[static_cast<decltype(number_of(&Yosys::RTLIL::Const::operator[]))>(bit)];
}

}  // namespace kpt_yosys

#endif
