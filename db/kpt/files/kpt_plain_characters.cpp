#include "db/kpt/files/kpt_plain_characters.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace kpt_plain {

namespace {

constexpr std::uint32_t MOST = 0x10FFFF;

bool is_legal(std::uint32_t c) {
  const bool is_control = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
  const bool is_surrogate = c >= 0xD800 && c < 0xE000;
  return !is_control && !is_surrogate && c != 0xFFFE && c != 0xFFFF && c <= MOST;
}

// Decodes the text between "&#" and ";".
bool decode_number(std::string_view digits, std::uint32_t& c) {
  const bool is_hex = digits.starts_with('x');
  digits.remove_prefix(is_hex ? 1 : 0);
  const char* const end = digits.data() + digits.size();
  const auto [read, error] = std::from_chars(digits.data(), end, c, is_hex ? 16 : 10);
  return error == std::errc() && read == end && is_legal(c) && c != 0;
}

bool decode_name(std::string_view name, std::uint32_t& c) {
  constexpr std::pair<std::string_view, char> PREDEFINED[] = {
      {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  const auto* found = std::find_if(std::begin(PREDEFINED), std::end(PREDEFINED),
                                   [&](const auto& predefined) { return predefined.first == name; });
  if (found == std::end(PREDEFINED)) {
    return false;
  }
  c = static_cast<unsigned char>(found->second);
  return true;
}

}  // namespace

std::size_t encode(std::uint32_t c, char* out) {
  const auto tail = [&](unsigned shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0 | c >> 6);
    out[1] = tail(0);
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0 | c >> 12);
    out[1] = tail(6);
    out[2] = tail(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | c >> 18);
  out[1] = tail(12);
  out[2] = tail(6);
  out[3] = tail(0);
  return 4;
}

std::size_t utf8_length(std::string_view text) {
  const auto byte = [&](std::size_t k) -> std::uint32_t {
    return k < text.size() ? static_cast<unsigned char>(text[k]) : 0U;
  };
  const auto tail = [&](std::size_t k) { return (byte(k) & 0xC0) == 0x80 ? byte(k) & 0x3F : MOST + 1; };
  const std::uint32_t first = byte(0);
  if (first >= 0xC2 && first < 0xE0) {
    return tail(1) <= MOST ? 2 : 0;
  }
  if (first >= 0xE0 && first < 0xF0 && tail(1) <= MOST && tail(2) <= MOST) {
    const std::uint32_t c = (first & 0x0F) << 12 | tail(1) << 6 | tail(2);
    return c >= 0x800 && is_legal(c) ? 3 : 0;
  }
  if (first >= 0xF0 && first < 0xF5 && tail(1) <= MOST && tail(2) <= MOST && tail(3) <= MOST) {
    const std::uint32_t c = (first & 0x07) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
    return c >= 0x10000 && c <= MOST ? 4 : 0;
  }
  return 0;
}

std::size_t character_length(std::string_view text) {
  if (text.empty() || static_cast<unsigned char>(text.front()) >= 0x80) {
    return utf8_length(text);
  }
  return is_legal(static_cast<unsigned char>(text.front())) ? 1 : 0;
}

std::size_t reference_length(std::string_view text, char* out, std::size_t& size) {
  const std::size_t end = text.substr(0, LONGEST_CHARACTER).find(';');
  if (end == std::string_view::npos) {
    return 0;
  }
  const std::string_view name = text.substr(1, end - 1);
  std::uint32_t c = 0;
  if (name.starts_with('#') ? !decode_number(name.substr(1), c) : !decode_name(name, c)) {
    return 0;
  }
  size = encode(c, out);
  return end + 1;
}

}  // namespace kpt_plain
