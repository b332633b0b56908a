// Reads any bytes as a value-change dump. A refusal must name the file. A found
// bit must lie inside its signal, and every value must be 0, 1, x or z.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "fuzz/database.h"
#include "tools/kptdb/outcome.h"
#include "tools/kptdb/wave/vcd_names.h"

namespace {

using namespace kptdb;

constexpr std::uint32_t MOST_FOLLOWED = 4096;

void require(bool holds, const char* otherwise) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", otherwise);
    std::abort();
  }
}

void read(const std::string& path) {
  VCD_READER reader(path);
  const VCD_NAMES names(reader, "", '.');
  for (const VCD_VARIABLE& variable : reader.variables()) {
    const VCD_BIT found = names.find(variable.name);
    require(found.finding != FOUND || found.bit < reader.width_of_signal(found.signal), "a bit beyond its signal");
    if (found.finding == FOUND) {
      names.viewer_name(found);
    }
    for (std::uint32_t bit = 0; bit < reader.width_of_signal(variable.signal) && reader.followed() < MOST_FOLLOWED;
         ++bit) {
      reader.follow(variable.signal, bit);
    }
  }
  while (reader.next_step()) {
    for (const std::uint32_t bit : reader.changed()) {
      require(bit < reader.followed(), "a change of a bit that is not followed");
      require(std::string_view("01xz").find(reader.value(bit)) != std::string_view::npos, "a value that is none");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const kpt_fuzz::MEMORY_FILE file(std::string_view(reinterpret_cast<const char*>(bytes), size));
  try {
    read(file.path());
  } catch (const FAILURE& failure) {
    require(std::string_view(failure.what()).find(file.path()) == 0, "a refusal that does not name the file");
  }
  return 0;
}
