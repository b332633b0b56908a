// Any bytes as a database file: load it, ask for every register that it holds,
// save it, and load what was saved. Nothing may go wrong in a way that a
// sanitizer sees.
#include <cstddef>
#include <cstdint>

#include "fuzz/database.h"

// A larger file is more of the same.
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
