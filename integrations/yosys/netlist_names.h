// The names of registers in a database: the name of a net as the designer wrote it, with
// the path of instances before it and the bit after it: "fifo.count[3]". Flattening,
// splitting nets and reading a netlist back keep this text, although they replace the nets.
//
// Nothing here creates an identifier in Yosys. That would change the order in
// which later passes see their objects, and so the netlist.
//
// Ownership: nets are read only during the call; the caller owns the results.
#ifndef NETLIST_NAMES_H
#define NETLIST_NAMES_H

#include <string>

#include "kernel/yosys.h"

namespace kpt_yosys {

namespace RTLIL = Yosys::RTLIL;

/// An identifier as text, without its mark; the same before and after flattening.
std::string text_of(const RTLIL::IdString& id);
std::string text_of_spelling(const std::string& id);

/// A bit of a wire as text: only the name for a wire of one bit, otherwise with
/// the index that the design uses.
std::string text_of(const RTLIL::Wire& wire, int bit);

/// Whether the designer gave the name.
inline bool is_public(const RTLIL::IdString& id) { return id.c_str()[0] == '\\'; }

/// Whether `a` is the better of two wires for the name of a register: a given
/// name is better than a made one, and a short one is better than a long one.
bool names_better(const RTLIL::Wire& a, const RTLIL::Wire& b);

}  // namespace kpt_yosys

#endif
