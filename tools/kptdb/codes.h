// Checks whether the codes of a state machine contradict each other.
//
// Ownership: the caller owns the values.
#ifndef KPTDB_CODES_H
#define KPTDB_CODES_H

#include <string>
#include <utility>
#include <vector>

namespace kptdb {

/// The codes of the states: of the reference registers, and of the transformed ones.
using STATE_CODES = std::vector<std::pair<std::string, std::string>>;

/// A text about the first code of one side that belongs to several codes of the other side,
/// which is a contradiction; empty when there is none. The same pair may occur twice. A side without registers has no
/// code.
std::string contradiction_in(STATE_CODES codes);

}  // namespace kptdb

#endif
