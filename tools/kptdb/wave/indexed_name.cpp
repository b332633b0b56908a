#include "indexed_name.h"

#include <charconv>

namespace kptdb {

std::optional<INDEXED_NAME> split_index(std::string_view name) {
  const std::size_t bracket = name.rfind('[');
  if (bracket == std::string_view::npos || bracket == 0 || name.back() != ']') {
    return std::nullopt;
  }
  INDEXED_NAME split{name.substr(0, bracket), 0};
  const char* const end = name.data() + name.size() - 1;
  const auto [stop, problem] = std::from_chars(name.data() + bracket + 1, end, split.index);
  const bool is_index = problem == std::errc() && stop == end && split.index > -(std::int64_t{1} << 40) &&
                        split.index < (std::int64_t{1} << 40);
  return is_index ? std::optional(split) : std::nullopt;
}

}  // namespace kptdb
