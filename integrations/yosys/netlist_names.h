// How registers are called in a database: by the name of a net as the designer wrote it, with the
// path of instances before it and the bit behind it: "fifo.count[3]". Flattening, splitting nets
// and reading a netlist back keep that text, while they replace the nets.
//
// None of this creates an identifier in Yosys: that would change the order in which later passes
// see their objects, and with it the netlist.
//
// Ownership: nets are read during the call only; results are values of the caller.
#ifndef NETLIST_NAMES_H
#define NETLIST_NAMES_H

#include <string>

#include "kernel/yosys.h"

namespace kpt_yosys {

namespace RTLIL = Yosys::RTLIL;

/// An identifier as text: without its mark, and alike before and after flattening.
std::string text_of(const RTLIL::IdString& id);
std::string text_of_spelling(const std::string& id);

/// A bit of a wire as text: the name alone for a wire of one bit, else with the index that the
/// design uses.
std::string text_of(const RTLIL::Wire& wire, int bit);

/// Whether the designer gave the name.
inline bool is_public(const RTLIL::IdString& id) { return id.c_str()[0] == '\\'; }

/// Whether `a` is the better of two wires to name a register after: a given name before a made one,
/// a short one before a long one.
bool names_better(const RTLIL::Wire& a, const RTLIL::Wire& b);

}  // namespace kpt_yosys

#endif
