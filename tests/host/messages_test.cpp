#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <string>

#include "h/msg_sys.h"
#include "host/kpt_host.h"
#include "tests/support/host_lines.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <class MESSAGE>
class OPEN_MESSAGE : public MESSAGE {
 public:
  using MESSAGE::MESSAGE;
  std::string text() const { return std::string(this->m_text); }
  std::string tag() const { return std::string(this->m_tag); }
};

template <class... ARGS>
std::string filled(const char* text, ARGS... args) {
  OPEN_MESSAGE<MSG_E> message(nullptr);
  constexpr unsigned int COUNT = sizeof...(args);
  message.fill_args(text, COUNT, args...);
  return message.text();
}

std::string tag_of(const char* text) {
  OPEN_MESSAGE<MSG_E> message(nullptr);
  message.fill_args(text, 0U);
  return message.tag();
}

__attribute__((format(printf, 2, 3))) void fill(MSG_BASE& message, const char* format, ...) {
  va_list args;
  va_start(args, format);
  message.fill_args(format, args);
  va_end(args);
}

__attribute__((format(printf, 1, 2))) bool debug_line(const char* format, ...) {
  std::array<char, 4> tag{"KPT"};
  va_list args;
  va_start(args, format);
  const bool shown = msg_local_vdebug(tag.data(), format, args);
  va_end(args);
  return shown;
}

TEST(Placeholders, TakeStringsAndInts) {
  EXPECT_EQ(filled("register \"%1!s!\" at line %2!d!/EKPT_FOO", "a", -7), "register \"a\" at line -7");
}

TEST(Placeholders, ComeInAnyOrderAndRepeat) {
  EXPECT_EQ(filled("%3!s! %1!d! %2!s! %1!d!", 1, "two", "three"), "three 1 two 1");
}

TEST(Placeholders, AreAllFilledWhateverTheCountSays) {
  OPEN_MESSAGE<MSG_E> message(nullptr);
  message.fill_args("%1!s! %2!d! %3!d! %4!s!/EKPT_FOO", 2U, "file", 3, 4, "text");
  EXPECT_EQ(message.text(), "file 3 4 text");
}

TEST(Placeholders, ReachMoreArgumentsThanRegistersHold) {
  EXPECT_EQ(filled("%1!d!%2!d!%3!d!%4!d!%5!d!%6!s!%7!d!%8!s!%9!d!%10!s!", 1, 2, 3, 4, 5, "6", 7, "8", 9, "10"),
            "12345678910");
}

TEST(Placeholders, ReadANullStringAsEmpty) {
  const char* const none = nullptr;
  EXPECT_EQ(filled("<%1!s!>", none), "<>");
}

TEST(Placeholders, CopyWhatIsNoPlaceholder) {
  EXPECT_EQ(filled("100% %s %1!x! %0!s! %1!s %!s! %100!s! %-1!d! %99999999999!s! %"),
            "100% %s %1!x! %0!s! %1!s %!s! %100!s! %-1!d! %99999999999!s! %");
}

TEST(Placeholders, StopAtAnArgumentThatNoneNames) { EXPECT_EQ(filled("%1!d! %3!s!", 1, 2, "3"), "1 %3!s!"); }

TEST(Placeholders, KeepTheFirstKindOfAnArgument) { EXPECT_EQ(filled("%1!d! %1!s!", 1), "1 %1!s!"); }

TEST(Placeholders, AreNotLookedForInArguments) { EXPECT_EQ(filled("%1!s! %2!d!", "%2!d!", 5), "%2!d! 5"); }

TEST(Identifier, LeavesTheTextAndBecomesTheTag) {
  EXPECT_EQ(filled("text/EKPT_FOO"), "text");
  EXPECT_EQ(tag_of("text/EKPT_FOO"), "EKPT_FOO");
}

TEST(Identifier, FollowsTheLastSlashOfTheText) {
  EXPECT_EQ(filled("and/or/EKPT_FOO"), "and/or");
  EXPECT_EQ(filled("in %1!s!/EKPT_FOO", "/tmp/file"), "in /tmp/file");
  EXPECT_EQ(filled("no identifier in %1!s!", "/tmp/file"), "no identifier in /tmp/file");
}

TEST(Identifier, IsNoOtherText) {
  EXPECT_EQ(filled("%1!s!/%2!s!", "a", "b"), "a/b");
  EXPECT_EQ(filled("ends in /"), "ends in /");
  EXPECT_EQ(tag_of("no identifier"), "");
}

TEST(Identifier, GivesWayToATagThatWasSet) {
  OPEN_MESSAGE<MSG_E> message(nullptr);
  message.set_tag("KPT");
  message.fill_args("text/EKPT_FOO", 0U);
  EXPECT_EQ(message.tag(), "KPT");
  EXPECT_EQ(message.text(), "text");
}

TEST(Message, PrintfFormatNamesNoIdentifier) {
  OPEN_MESSAGE<MSG_D> message(nullptr);
  fill(message, "%s/%d %%", "a", 5);
  EXPECT_EQ(message.text(), "a/5 %");
  EXPECT_EQ(message.tag(), "");
}

TEST(Message, TextsHaveNoLongestLength) {
  OPEN_MESSAGE<MSG_D> message(nullptr);
  const std::string text(100000, 'x');
  fill(message, "%s", text.c_str());
  EXPECT_EQ(message.text(), text);
}

TEST(Message, MemoryIsZeroFilled) {
  constexpr std::size_t SIZE = 256;
  auto* const memory = static_cast<unsigned char*>(MSG_BASE::operator new(SIZE));
  for (std::size_t k = 0; k < SIZE; ++k) {
    EXPECT_EQ(memory[k], 0);
  }
  MSG_BASE::operator delete(memory);
  MSG_BASE::operator delete(nullptr);
}

TEST(Message, ErrorGoesToTheErrorSink) {
  const kpt_test::HOST_LINES lines;
  MSG_BASE* const message = new MSG_E(nullptr);
  message->fill_args("\"%1!s!\" is missing/EKPT_FOO", 1U, "a/b");
  message->post();
  delete message;
  EXPECT_THAT(lines.errors(), ElementsAre("\"a/b\" is missing"));
  EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_FOO"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(Message, DebugGoesToTheDebugSink) {
  const kpt_test::HOST_LINES lines;
  MSG_D message(nullptr);
  fill(message, "%d maps", 3);
  message.set_tag("KPT");
  message.post();
  EXPECT_THAT(lines.debug(), ElementsAre("3 maps"));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST(Message, DebugIsDroppedWhenDebugIsOff) {
  const kpt_test::HOST_LINES lines;
  kpt_host::set_debug(false);
  MSG_D message(nullptr);
  fill(message, "%d maps", 3);
  message.post();
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(Message, PostedTwiceIsHandedOnTwice) {
  const kpt_test::HOST_LINES lines;
  MSG_E message(nullptr);
  message.fill_args("text/EKPT_FOO", 0U);
  message.post();
  message.post();
  EXPECT_THAT(lines.errors(), ElementsAre("text", "text"));
}

TEST(DebugLine, SaysWhetherItWasHandedOn) {
  kpt_test::HOST_LINES lines;
  EXPECT_TRUE(debug_line("%s %d", "a", 1));
  kpt_host::set_debug(false);
  EXPECT_FALSE(debug_line("%s %d", "b", 2));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
  EXPECT_THAT(lines.take_debug(), ElementsAre("a 1"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(DebugLine, ASinkMayReplaceItself) {
  kpt_test::HOST_LINES lines;
  kpt_host::set_debug_sink([&lines](const char*, const char*) {
    kpt_host::set_debug_sink([](const char*, const char*) {});
    lines.clear();
  });
  EXPECT_TRUE(debug_line("first"));
  EXPECT_TRUE(debug_line("second"));
}

TEST(InternalError, IsHandedOnWhole) {
  const kpt_test::HOST_LINES lines;
  MSG_INTERNAL_ERROR::report("a != b", "KPT", "file.cpp", 12);
  ASSERT_EQ(lines.internal_errors().size(), 1U);
  const kpt_test::INTERNAL_ERROR& error = lines.internal_errors().front();
  EXPECT_EQ(error.condition, "a != b");
  EXPECT_EQ(error.tag, "KPT");
  EXPECT_EQ(error.file, "file.cpp");
  EXPECT_EQ(error.line, 12);
}

TEST(DefaultSinks, PrintToStandardError) {
  testing::internal::CaptureStderr();
  kpt_host::set_debug(true);
  debug_line("TIME: %d", 5);
  kpt_host::set_debug(false);
  MSG_E message(nullptr);
  message.fill_args("text/EKPT_FOO", 0U);
  message.post();
  MSG_INTERNAL_ERROR::report("a != b", "KPT", "file.cpp", 12);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Debug: KPT: TIME: 5\n"
            "Error: EKPT_FOO: text\n"
            "Error: KPT: internal error: a != b (file.cpp:12)\n");
}

TEST(Severity, NamesAreIndexedByTheEnum) {
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_ERROR], "Error");
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_INFO], "Info");
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_WARNING], "Warning");
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_DEBUG], "Debug");
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_EXTRA_INFO], "Extra Info");
  EXPECT_STREQ(MSG_SEVERITY_NAMES[MSG_SEVERITY_CRITICAL_WARNING], "Critical Warning");
}

}  // namespace
