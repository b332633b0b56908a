// The characters of plain files, and the functions that read them by blocks.
#include "db/kpt/files/kpt_plain_characters.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

namespace {

using namespace kpt_plain;

// The text with every character at every position of a block and of the next one,
// after characters that all kinds have.
template <class CHECK>
void for_each_character_anywhere(CHECK check) {
  for (std::size_t at = 0; at <= 2 * BLOCK; ++at) {
    for (unsigned c = 0; c < 256; ++c) {
      std::string text(at, 'k');
      text += static_cast<char>(c);
      text += "k<" + std::string(4 * BLOCK, '\0');
      check(text);
    }
  }
}

TEST(PlainCharacters, TextsEndWhereTheTableSaysSo) {
  for_each_character_anywhere(
      [](const std::string& text) { ASSERT_EQ(behind_text(text.c_str()), behind(text.c_str(), IN_TEXT)) << text; });
}

TEST(PlainCharacters, ValuesEndWhereTheTableSaysSo) {
  for_each_character_anywhere(
      [](const std::string& text) { ASSERT_EQ(behind_value(text.c_str()), behind(text.c_str(), IN_VALUE)) << text; });
}

TEST(PlainCharacters, NamesEndWhereTheTableSaysSo) {
  for_each_character_anywhere(
      [](const std::string& text) { ASSERT_EQ(behind_name(text.c_str()), behind(text.c_str(), IN_NAME)) << text; });
}

TEST(PlainCharacters, TheTableHasTheCharactersOfAPlainFile) {
  for (int c = 0; c < 256; ++c) {
    const char as_char = static_cast<char>(c);
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool digit = (c >= '0' && c <= '9') || c == '.' || c == '-';
    const bool shown = c >= 0x20 && c < 0x80 && c != '<' && c != '&';
    ASSERT_EQ(is(as_char, NAME_START), letter) << c;
    ASSERT_EQ(is(as_char, IN_NAME), letter || digit) << c;
    ASSERT_EQ(is(as_char, BLANK), c == ' ' || c == '\t' || c == '\n' || c == '\r') << c;
    ASSERT_EQ(is(as_char, IN_TEXT), (shown && c != '>') || c == '\t' || c == '\n') << c;
    ASSERT_EQ(is(as_char, IN_VALUE), shown && c != '"') << c;
  }
}

TEST(PlainCharacters, TextsAreTheSameWhenAllTheirCharactersAre) {
  for (std::size_t size = 0; size <= 3 * BLOCK; ++size) {
    const std::string text(size, 'n');
    std::string read = text + "more" + std::string(BLOCK, '\0');
    const std::string held = text + "else" + std::string(BLOCK, '\0');
    EXPECT_TRUE(are_same(read.data(), {held.data(), size})) << size;
    for (std::size_t at = 0; at < size; ++at) {
      read[at] = 'm';
      EXPECT_FALSE(are_same(read.data(), {held.data(), size})) << size << " " << at;
      read[at] = 'n';
    }
  }
}

TEST(PlainCharacters, ACopyTakesTheWholeTextAndAtMostABlockMore) {
  for (std::size_t size = 0; size <= 3 * BLOCK; ++size) {
    const std::string text = std::string(size, 'n') + std::string(BLOCK, '.');
    std::string copy(size + BLOCK, '-');
    copy += "kept";
    copy_blocks(copy.data(), {text.data(), size});
    EXPECT_EQ(copy.substr(0, size), text.substr(0, size)) << size;
    EXPECT_TRUE(copy.ends_with("kept")) << size;
  }
}

}  // namespace
