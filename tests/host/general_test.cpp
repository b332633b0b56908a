#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "h/gen_sys.h"

namespace {

constexpr int LEAST = std::numeric_limits<int>::min();
constexpr int MOST = std::numeric_limits<int>::max();

TEST(Atoi, ReadsTheNumberAtTheStart) {
  EXPECT_EQ(gen_atoi("0"), 0);
  EXPECT_EQ(gen_atoi("12"), 12);
  EXPECT_EQ(gen_atoi("-12"), -12);
  EXPECT_EQ(gen_atoi("+12"), 12);
  EXPECT_EQ(gen_atoi("007"), 7);
  EXPECT_EQ(gen_atoi(" \t\n\v\f\r 1  "), 1);
  EXPECT_EQ(gen_atoi("12ab"), 12);
}

TEST(Atoi, GivesZeroWhenThereIsNone) {
  for (const char* const text : {"", " ", "x", "-", "+", "+-1", "-+1", "- 1", "--1"}) {
    EXPECT_EQ(gen_atoi(text), 0) << text;
  }
  EXPECT_EQ(gen_atoi(MEM_STRING("\0"
                                "1",
                                2)),
            0);
}

TEST(Atoi, StopsAtTheNearestInt) {
  EXPECT_EQ(gen_atoi("2147483647"), MOST);
  EXPECT_EQ(gen_atoi("2147483648"), MOST);
  EXPECT_EQ(gen_atoi("+99999999999999999999999"), MOST);
  EXPECT_EQ(gen_atoi("-2147483648"), LEAST);
  EXPECT_EQ(gen_atoi("-2147483649"), LEAST);
  EXPECT_EQ(gen_atoi("-99999999999999999999999"), LEAST);
}

TEST(Itoa, WritesEveryBase) {
  EXPECT_EQ(gen_itoa(0, 10), "0");
  EXPECT_EQ(gen_itoa(255, 16), "ff");
  EXPECT_EQ(gen_itoa(-255, 16), "-ff");
  EXPECT_EQ(gen_itoa(5, 2), "101");
  EXPECT_EQ(gen_itoa(35, 36), "z");
  EXPECT_EQ(gen_itoa(LEAST, 10), "-2147483648");
  EXPECT_EQ(gen_itoa(LEAST, 2), "-10000000000000000000000000000000");
  EXPECT_EQ(gen_itoa(MOST, 10), "2147483647");
}

TEST(Itoa, TakesAnotherBaseForTen) {
  for (const int base : {LEAST, -1, 0, 1, 37, MOST}) {
    EXPECT_EQ(gen_itoa(12, base), "12") << base;
  }
}

TEST(Itoa, ReplacesTheGivenString) {
  MEM_STRING out = "before";
  gen_itoa(-3, out, 10);
  EXPECT_EQ(out, "-3");
}

TEST(Sprintf, ReplacesTheGivenString) {
  MEM_STRING out = "before";
  gen_sprintf(&out, "%d-%s", 5, "x");
  EXPECT_EQ(out, "5-x");
  gen_sprintf(&out, "%s", "");
  EXPECT_EQ(out, "");
}

TEST(Sprintf, ReadsItsOwnTarget) {
  MEM_STRING out(100, 'a');
  gen_sprintf(&out, "<%s>", out.c_str());
  EXPECT_EQ(out, "<" + MEM_STRING(100, 'a') + ">");
}

TEST(Strcmp, OrdersBytes) {
  EXPECT_EQ(gen_strcmp("a", "a"), 0);
  EXPECT_LT(gen_strcmp("a", "b"), 0);
  EXPECT_GT(gen_strcmp("b", "a"), 0);
  EXPECT_LT(gen_strcmp("", "a"), 0);
  EXPECT_LT(gen_strcmp("B", "a"), 0);
  EXPECT_LT(gen_strcmp("a", "\xff"), 0);
}

TEST(Time, IsForPeopleToRead) {
  const std::string now(gen_get_current_time());
  EXPECT_EQ(now.size(), std::string("2000-01-01 00:00:00").size());
  EXPECT_EQ(now.find_first_not_of("0123456789-: "), std::string::npos);
}

TEST(Ticks, NeverGoBack) {
  unsigned long last = gen_get_tick_count();
  for (int round = 0; round < 1000; ++round) {
    const unsigned long next = gen_get_tick_count();
    EXPECT_GE(next, last);
    last = next;
  }
}

}  // namespace
