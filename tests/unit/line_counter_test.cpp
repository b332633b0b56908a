// The lines of a text that comes in pieces.
#include "db/kpt/load/kpt_line_counter.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>

namespace {

std::size_t line_behind(std::initializer_list<std::string_view> pieces) {
  KPT_LINE_COUNTER counter;
  for (const std::string_view piece : pieces) {
    counter.pass(piece);
  }
  return counter.line();
}

TEST(LineCounter, CountsFrom1) { EXPECT_EQ(line_behind({}), 1U); }

TEST(LineCounter, CountsEachWayToEndALine) {
  EXPECT_EQ(line_behind({"a\nb"}), 2U);
  EXPECT_EQ(line_behind({"a\rb"}), 2U);
  EXPECT_EQ(line_behind({"a\r\nb"}), 2U);
  EXPECT_EQ(line_behind({"a\n\rb"}), 3U);
  EXPECT_EQ(line_behind({"\r\r\n\n"}), 4U);
}

TEST(LineCounter, CountsALineOnceWhoseEndIsInTwoPieces) {
  EXPECT_EQ(line_behind({"a\r", "\nb"}), 2U);
  EXPECT_EQ(line_behind({"a\r", "", "\nb"}), 2U);
  EXPECT_EQ(line_behind({"a\r", "\n", "\nb"}), 3U);
}

TEST(LineCounter, CountsALineThatEndsWithItsPiece) {
  EXPECT_EQ(line_behind({"a\r"}), 2U);
  EXPECT_EQ(line_behind({"a\r", "b"}), 2U);
  EXPECT_EQ(line_behind({"a\r", "b\nc\r", "\rd"}), 5U);
}

}  // namespace
