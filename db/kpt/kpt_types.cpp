#include "db/kpt/kpt_types.h"

// As signed char, even where char is unsigned: the value is the same on every machine.
std::size_t kpt_hash_bytes(std::size_t h, std::string_view text) noexcept {
  for (const char c : text) {
    h = h * 17 + static_cast<std::size_t>(static_cast<signed char>(c));
  }
  return h;
}
