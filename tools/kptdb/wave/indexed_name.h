// Names that end in the index of a bit.
//
// Ownership: views point into the name.
#ifndef KPTDB_INDEXED_NAME_H
#define KPTDB_INDEXED_NAME_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace kptdb {

/// "data[7]" as "data" and 7; empty for a name without an index at its end.
struct INDEXED_NAME {
  std::string_view base;
  std::int64_t index = 0;
};
std::optional<INDEXED_NAME> split_index(std::string_view name);

}  // namespace kptdb

#endif
