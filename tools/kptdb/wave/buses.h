// Joins the bits of vectors by their names: "data[7]" to "data[0]" are "data [7:0]".
//
// Ownership: the names outlive the result.
#ifndef KPTDB_BUSES_H
#define KPTDB_BUSES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kptdb {

struct BUS {
  std::string_view path;  // of instances, with the divider at its end
  std::string_view base;
  bool has_index = false;
  std::int64_t msb = 0;
  std::int64_t lsb = 0;
  std::vector<std::uint32_t> bits;  // positions among the names, from the left

  /// "[7:0]", "[3]" or nothing.
  std::string range() const;
};

/// Sorted by paths and names. Indices run down from left to right. A vector with
/// a gap becomes several vectors, because the bits in the gap are unknown.
std::vector<BUS> join_buses(const std::vector<std::string_view>& names, char divider);

}  // namespace kptdb

#endif
