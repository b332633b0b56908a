// The characters of a plain database file.
#ifndef KPT_PLAIN_CHARACTERS_H
#define KPT_PLAIN_CHARACTERS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

namespace kpt_plain {

enum KIND : std::uint8_t {
  NAME_START = 1,
  IN_NAME = 2,
  BLANK = 4,
  IN_TEXT = 8,    // unchanged in a text
  IN_VALUE = 16,  // unchanged in the value of an attribute
};

// A name with a colon is not plain, because its meaning depends on namespaces.
inline constexpr std::array<std::uint8_t, 256> KINDS = [] {
  std::array<std::uint8_t, 256> kinds{};
  for (unsigned c = 0x20; c < 0x80; ++c) {
    kinds[c] = IN_TEXT | IN_VALUE;
  }
  for (const char c : std::string_view("\n\t")) {
    kinds[static_cast<unsigned char>(c)] = IN_TEXT;
  }
  for (const char c : std::string_view("<&>")) {
    kinds[static_cast<unsigned char>(c)] &= static_cast<std::uint8_t>(~IN_TEXT);
  }
  for (const char c : std::string_view("<&\"")) {
    kinds[static_cast<unsigned char>(c)] &= static_cast<std::uint8_t>(~IN_VALUE);
  }
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_")) {
    kinds[static_cast<unsigned char>(c)] |= NAME_START | IN_NAME;
  }
  for (const char c : std::string_view("0123456789.-")) {
    kinds[static_cast<unsigned char>(c)] |= IN_NAME;
  }
  for (const char c : std::string_view(" \t\n\r")) {
    kinds[static_cast<unsigned char>(c)] |= BLANK;
  }
  return kinds;
}();

inline bool is(char c, KIND kind) { return (KINDS[static_cast<unsigned char>(c)] & kind) != 0; }

/// The first character from `p` on that is not of that kind. The bytes end with a
/// null, which has no kind.
inline const char* behind(const char* p, KIND kind) {
  while (is(*p, kind)) {
    ++p;
  }
  return p;
}

/// The same for texts, with 16 readable bytes after the end.
inline const char* behind_text(const char* p) {
#ifdef __x86_64__
  while (true) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    // The comparison is signed, so bytes beyond ASCII count as less, too.
    const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
    const __m128i blanks =
        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\t')));
    const __m128i marks = _mm_or_si128(
        _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&')),
        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('>'))));
    const auto ends = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_andnot_si128(blanks, low), marks)));
    if (ends != 0) {
      return p + __builtin_ctz(ends);
    }
    p += sizeof bytes;
  }
#else
  return behind(p, IN_TEXT);
#endif
}

/// Writes a character in UTF-8 and returns its length. `out` has room for four bytes.
std::size_t encode(std::uint32_t c, char* out);

/// The number of bytes of the UTF-8 character at the start of `text`; 0 when it
/// is not a character of XML.
std::size_t character_length(std::string_view text);

/// The number of bytes of the character beyond ASCII, or of the reference, at the
/// start of `text`; 0 when it is not plain.
std::size_t utf8_length(std::string_view text);
/// The reference's character is written to `out`, which has room for four bytes; `size` is their number.
std::size_t reference_length(std::string_view text, char* out, std::size_t& size);

/// This many bytes are enough to recognise what begins at a position.
inline constexpr std::size_t LONGEST_CHARACTER = 16;

}  // namespace kpt_plain

#endif
