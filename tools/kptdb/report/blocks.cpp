#include "blocks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

namespace kptdb {

namespace {

constexpr std::size_t PIECE = std::size_t{1} << 18U;

struct DEFLATE_END {
  void operator()(z_stream* stream) const { deflateEnd(stream); }
};

char digit(unsigned value) { return "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[value & 63U]; }

// Writes three bytes as four digits; missing bytes count as zeros.
void add_three(std::string& text, std::string_view three) {
  unsigned bits = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    bits = bits << 8U | (k < three.size() ? static_cast<unsigned char>(three[k]) : 0U);
  }
  for (std::size_t k = 0; k < 4; ++k) {
    text += k <= three.size() ? digit(bits >> (18U - 6U * static_cast<unsigned>(k))) : '=';
  }
}

}  // namespace

void BLOCKS::write_encoded(std::string_view bytes, bool last) {
  m_rest += bytes;
  const std::size_t whole = last ? m_rest.size() : m_rest.size() / 3 * 3;
  std::string text;
  text.reserve(whole / 3 * 4 + 4);
  for (std::size_t k = 0; k < whole; k += 3) {
    add_three(text, std::string_view(m_rest).substr(k, std::min<std::size_t>(3, whole - k)));
  }
  m_rest.erase(0, whole);
  m_out.write(text);
}

void BLOCKS::write(std::string_view name, std::string_view bytes) {
  m_out.write("<script type=\"application/octet-stream\" id=\"kpt-");
  m_out.write(name);
  m_out.write("\">");
  z_stream stream{};
  if (deflateInit(&stream, Z_DEFAULT_COMPRESSION) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, DEFLATE_END> end(&stream);
  std::string packed(PIECE, '\0');
  int state = Z_OK;
  while (state != Z_STREAM_END) {
    if (stream.avail_in == 0 && !bytes.empty()) {
      const std::string_view piece = bytes.substr(0, PIECE);
      // The library takes its input without const, and only reads it.
      stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
      stream.avail_in = static_cast<uInt>(piece.size());
      bytes.remove_prefix(piece.size());
    }
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    state = deflate(&stream, bytes.empty() ? Z_FINISH : Z_NO_FLUSH);
    write_encoded(std::string_view(packed).substr(0, packed.size() - stream.avail_out), state == Z_STREAM_END);
  }
  m_out.write("</script>\n");
}

}  // namespace kptdb
