// Times of dumps in units that can be compared.
//
// Ownership: the caller owns everything.
#ifndef KPTDB_TIMESCALE_H
#define KPTDB_TIMESCALE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kptdb {

/// Wide enough for every time of a dump in femtoseconds.
__extension__ typedef unsigned __int128 FEMTOSECONDS;

/// "100 ps" as 100,000; empty for a text that is not a timescale.
std::optional<std::uint64_t> timescale_of(std::string_view text);
/// "20ns" in femtoseconds. A number without a unit counts in `unit`. Empty for a text that is not a time.
std::optional<FEMTOSECONDS> time_of(std::string_view text, std::uint64_t unit);
/// The time in the largest unit in which it is a whole number: "35 ns".
std::string time_text(FEMTOSECONDS time);

}  // namespace kptdb

#endif
