#include "colour.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace kptdb {

namespace {

std::string s_when = "auto";

bool is_set(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

bool is_dumb() {
  const char* const terminal = std::getenv("TERM");
  return terminal == nullptr || std::string_view(terminal) == "dumb";
}

bool has_colours(std::FILE* stream) {
  return s_when == "always" ||
         (s_when == "auto" && !is_set("NO_COLOR") && !is_dumb() && ::isatty(::fileno(stream)) == 1);
}

}  // namespace

void set_colours(std::string_view when) { s_when = when; }

std::string painted(std::string_view text, COLOUR colour, std::FILE* stream) {
  constexpr std::array<std::string_view, 4> CODES{"31", "32", "33", "1"};
  return has_colours(stream) ? fmt::format("\033[{}m{}\033[0m", CODES.at(colour), text) : std::string(text);
}

}  // namespace kptdb
