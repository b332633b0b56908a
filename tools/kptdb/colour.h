// Colours on a terminal, and plain text everywhere else.
//
// Ownership: plain values.
#ifndef KPTDB_COLOUR_H
#define KPTDB_COLOUR_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace kptdb {

enum COLOUR : std::uint8_t { RED, GREEN, YELLOW, BOLD };

/// "always", "never", or "auto": on a terminal, unless NO_COLOR is set or the terminal is a dumb one.
void set_colours(std::string_view when);

/// The text in that colour, if the stream shows colours.
std::string painted(std::string_view text, COLOUR colour, std::FILE* stream = stdout);

}  // namespace kptdb

#endif
