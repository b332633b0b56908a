// Any bytes as a database file: loads it, asks for every register in it,
// saves it, and loads what was saved. A sanitizer must not find an
// error.
#include <cstddef>
#include <cstdint>

#include "fuzz/database.h"

// A larger file would not reach other code.
constexpr std::uint64_t MOST_SAVED_BITS = std::uint64_t{1} << 20U;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace kpt_fuzz;
  const DATABASE db = load(MEMORY_FILE({reinterpret_cast<const char*>(bytes), size}));
  ask(*db);
  if (table_bits(*db) <= MOST_SAVED_BITS) {
    const MEMORY_FILE saved;
    save(*db, saved);
    ask(*load(saved));
  }
  return 0;
}
