#include "db/kpt/files/kpt_held_text.h"

#include <array>
#include <cstddef>

namespace {

// The length of the character of XML that the text begins with, in UTF-8; 0
// when it begins with none.
std::size_t character_length(std::string_view text) {
  const auto byte = [&](std::size_t k) { return k < text.size() ? static_cast<unsigned char>(text[k]) : 0U; };
  const unsigned first = byte(0);
  if (first < 0x80) {
    return first >= 0x20 || first == '\t' || first == '\n' || first == '\r' ? 1 : 0;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  unsigned code = first & (0x7FU >> length);
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(k) & 0xC0U) != 0x80) {
      return 0;
    }
    code = code << 6U | (byte(k) & 0x3FU);
  }
  constexpr std::array<unsigned, 3> LEAST{0x80, 0x800, 0x10000};  // in fewer bytes it is another spelling of one
  const bool is_character = code >= LEAST[length - 2] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) &&
                            code != 0xFFFE && code != 0xFFFF && first >= 0xC0;
  return is_character ? length : 0;
}

}  // namespace

bool kpt_file_can_hold(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}
