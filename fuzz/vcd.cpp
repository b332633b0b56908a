// Any bytes as a value-change dump: read its header, follow every bit, and read it to its end. A
// dump that is malformed is refused; nothing else may go wrong.
#include <cstddef>
#include <cstdint>

#include "fuzz/database.h"
#include "tools/kptdb/outcome.h"
#include "tools/kptdb/wave/vcd_names.h"
#include "tools/kptdb/wave/vcd_reader.h"

// A dump may declare more bits than there is memory to follow.
constexpr std::uint32_t MOST_FOLLOWED = 64;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace kptdb;
  const kpt_fuzz::MEMORY_FILE file({reinterpret_cast<const char*>(bytes), size});
  try {
    VCD_READER reader(file.path());
    const VCD_NAMES names(reader, "", '.');
    for (const VCD_VARIABLE& variable : reader.variables()) {
      const VCD_BIT bit = names.find(variable.name);
      names.find(variable.name + "[0]");
      if (bit.finding == FOUND) {
        names.viewer_name(bit);
      }
      for (std::uint32_t k = 0; !variable.is_number && k < reader.width_of_signal(variable.signal) && k < MOST_FOLLOWED;
           ++k) {
        reader.follow(variable.signal, k);
      }
    }
    while (reader.next_step()) {
      for (const std::uint32_t bit : reader.changed()) {
        if (reader.value(bit) == '\0') {
          __builtin_trap();
        }
      }
    }
  } catch (const FAILURE&) {
    return 0;
  }
  return 0;
}
