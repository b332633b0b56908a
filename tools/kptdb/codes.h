// Whether the codes of a state machine contradict each other.
//
// Ownership: values of the caller.
#ifndef KPTDB_CODES_H
#define KPTDB_CODES_H

#include <string>
#include <utility>
#include <vector>

namespace kptdb {

/// The codes of the states: of the reference registers, and of the transformed ones.
using STATE_CODES = std::vector<std::pair<std::string, std::string>>;

/// Tells of the first code of one side that faces several of the other, so that the one value of the
/// one registers means several of the others; empty when there is none. The same pair twice is none.
std::string contradiction_in(STATE_CODES codes);

}  // namespace kptdb

#endif
