// Gives one debug line to the reference host, and succeeds if the host's answer
// is the expected one: "shown" or "silent".
#include <array>
#include <cstdarg>
#include <string_view>

#include "h/msg_sys.h"

namespace {

__attribute__((format(printf, 1, 2))) bool debug_line(const char* format, ...) {
  std::array<char, 4> tag{"KPT"};
  va_list args;
  va_start(args, format);
  const bool shown = msg_local_vdebug(tag.data(), format, args);
  va_end(args);
  return shown;
}

}  // namespace

int main(int argc, char** argv) {
  const bool expected = argc > 1 && std::string_view(argv[1]) == "shown";
  return debug_line("a debug line") == expected ? 0 : 1;
}
