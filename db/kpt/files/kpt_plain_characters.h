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

/// The functions from here to `are_same` read blocks of bytes, and need this many
/// readable bytes after the end of what they are given.
inline constexpr std::size_t BLOCK = 16;

#ifdef __x86_64__

inline __m128i block_at(const char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i where_equal(__m128i bytes, char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); }

/// The first byte from `p` on of those that `ends` marks in a block.
template <class ENDS>
[[gnu::always_inline]] inline const char* first_of(const char* p, ENDS ends) {
  while (true) {
    const auto marks = static_cast<unsigned>(_mm_movemask_epi8(ends(block_at(p))));
    if (marks != 0) {
      return p + __builtin_ctz(marks);
    }
    p += BLOCK;
  }
}

/// `behind` for texts.
inline const char* behind_text(const char* p) {
  static_assert('\n' == '\t' + 1 && ('<' | 2) == '>');
  return first_of(p, [](__m128i bytes) {
    // The comparison is signed, so bytes beyond ASCII count as less, too.
    const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
    const __m128i from_tab = _mm_add_epi8(bytes, _mm_set1_epi8(0x80 - '\t'));
    const __m128i blanks = _mm_cmplt_epi8(from_tab, _mm_set1_epi8(-128 + 2));
    const __m128i angles = where_equal(_mm_or_si128(bytes, _mm_set1_epi8(2)), '>');
    return _mm_or_si128(_mm_andnot_si128(blanks, low), _mm_or_si128(angles, where_equal(bytes, '&')));
  });
}

/// `behind` for the values of attributes.
inline const char* behind_value(const char* p) {
  return first_of(p, [](__m128i bytes) {
    const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
    const __m128i marks = _mm_or_si128(where_equal(bytes, '&'), where_equal(bytes, '<'));
    return _mm_or_si128(_mm_or_si128(low, where_equal(bytes, '"')), marks);
  });
}

/// `behind` for names. Most have only small letters and underscores.
inline const char* behind_name(const char* p) {
  static_assert('_' + 1 == '`' && '`' + 1 == 'a');
  const char* const end = first_of(p, [](__m128i bytes) {
    const __m128i less = _mm_cmplt_epi8(bytes, _mm_set1_epi8('_'));
    const __m128i more = _mm_cmpgt_epi8(bytes, _mm_set1_epi8('z'));
    return _mm_or_si128(_mm_or_si128(less, more), where_equal(bytes, '`'));
  });
  return behind(end, IN_NAME);
}

/// Copies a text to a place that has room for it and a block.
inline void copy_blocks(char* to, std::string_view text) {
  const char* const end = to + text.size();
  for (const char* from = text.data(); to < end; from += BLOCK, to += BLOCK) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block_at(from));
  }
}

/// Whether the text stands at `p`.
inline bool are_same(const char* p, std::string_view text) {
  const char* with = text.data();
  std::size_t left = text.size();
  while (true) {
    const auto differ = ~static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block_at(p), block_at(with))));
    if (left < BLOCK) {
      return (differ & ((1U << left) - 1)) == 0;
    }
    if ((differ & 0xFFFFU) != 0) {
      return false;
    }
    p += BLOCK;
    with += BLOCK;
    left -= BLOCK;
  }
}

#else

inline const char* behind_text(const char* p) { return behind(p, IN_TEXT); }
inline const char* behind_value(const char* p) { return behind(p, IN_VALUE); }
inline const char* behind_name(const char* p) { return behind(p, IN_NAME); }
inline void copy_blocks(char* to, std::string_view text) { text.copy(to, text.size()); }
inline bool are_same(const char* p, std::string_view text) { return std::string_view(p, text.size()) == text; }

#endif

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
