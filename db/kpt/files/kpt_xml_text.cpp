#include "db/kpt/files/kpt_xml_text.h"

#include <array>
#include <cstdint>

#include "db/kpt/files/kpt_plain_characters.h"

namespace {

constexpr std::uint32_t BEYOND_ONE_UNIT = 0x10000;

bool is_first_half(XMLCh unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_second_half(XMLCh unit) { return unit >= 0xDC00 && unit < 0xE000; }

// The null after the text is not a second half.
void append_utf8(const XMLCh* text, KPT_STRING& out) {
  std::array<char, 4> bytes;
  for (; *text != 0; ++text) {
    std::uint32_t c = *text;
    if (is_first_half(text[0]) && is_second_half(text[1])) {
      c = BEYOND_ONE_UNIT + ((text[0] & 0x3FFU) << 10U | (text[1] & 0x3FFU));
      ++text;
    } else if (is_first_half(*text) || is_second_half(*text)) {
      continue;
    }
    out.append(bytes.data(), kpt_plain::encode(c, bytes.data()));
  }
}

// The code of a character that is known to be valid.
std::uint32_t decode(std::string_view character) {
  std::uint32_t c = static_cast<unsigned char>(character.front());
  c = character.size() == 1 ? c : c & (0x7FU >> character.size());
  for (const char tail : character.substr(1)) {
    c = c << 6U | (static_cast<unsigned char>(tail) & 0x3FU);
  }
  return c;
}

}  // namespace

void kpt_narrow(const XMLCh* text, KPT_STRING& out) {
  out.clear();
  kpt_append_narrow(text, out);
}

void kpt_append_narrow(const XMLCh* text, KPT_STRING& out) {
  if (text == nullptr || *text == 0) {
    return;
  }
  const std::size_t size = std::char_traits<XMLCh>::length(text);
  const std::size_t start = out.size();
  out.resize(start + size);
  unsigned seen = 0;
  for (std::size_t k = 0; k < size; ++k) {
    seen |= text[k];
    out[start + k] = static_cast<char>(text[k]);
  }
  if (seen >= 0x80) {
    out.resize(start);
    append_utf8(text, out);
  }
}

KPT_WIDE_STRING kpt_widen(std::string_view text) {
  KPT_WIDE_STRING wide;
  while (!text.empty()) {
    const std::size_t length = kpt_plain::character_length(text);
    if (length == 0) {
      return {};
    }
    std::uint32_t c = decode(text.substr(0, length));
    if (c >= BEYOND_ONE_UNIT) {
      c -= BEYOND_ONE_UNIT;
      wide += static_cast<XMLCh>(0xD800U | c >> 10U);
      c = 0xDC00U | (c & 0x3FFU);
    }
    wide += static_cast<XMLCh>(c);
    text.remove_prefix(length);
  }
  return wide;
}
