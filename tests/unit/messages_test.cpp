#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "db/kpt/kpt_types.h"
#include "db/kpt/msg_kpt.h"
#include "host/kpt_host.h"
#include "tests/support/host_lines.h"

namespace {

using kpt_test::HOST_LINES;
using testing::ElementsAre;
using testing::IsEmpty;

void post_and_delete(MSG_BASE* message) {
  message->post();
  delete message;
}

TEST(Messages, RegisterNotInTheTransformedSet) {
  const HOST_LINES lines;
  post_and_delete(MSG_KPT::E::REGNAME_NOT_IN_T_SET("u1/state_reg[3]"));
  EXPECT_THAT(lines.errors(), ElementsAre("\"u1/state_reg[3]\" does not exist in the transformed set"));
  EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_REGNAME_NOT_IN_T_SET"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// All four placeholders are filled, although the message gives the host a count
// of two.
TEST(Messages, SyntaxErrorNamesFileLineColumnAndText) {
  const HOST_LINES lines;
  post_and_delete(MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE("dir/top.kpt", 12, 34, "expected '>'"));
  EXPECT_THAT(
      lines.errors(),
      ElementsAre(
          "Syntax error in XML Keypoint Database dir/top.kpt at line number 12, column number 34 : expected '>'"));
  EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(Messages, TextsOfTheCallerAreTakenAsTheyAre) {
  const HOST_LINES lines;
  post_and_delete(MSG_KPT::E::REGNAME_NOT_IN_T_SET("%1!s! %s 100%"));
  post_and_delete(MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE("%2!d!", -1, 0, "%1!s!"));
  EXPECT_THAT(lines.errors(),
              ElementsAre("\"%1!s! %s 100%\" does not exist in the transformed set",
                          "Syntax error in XML Keypoint Database %2!d! at line number -1, column number 0 : %1!s!"));
}

TEST(Messages, LongTextsAreNotCut) {
  const HOST_LINES lines;
  const std::string name(100000, 'n');
  post_and_delete(MSG_KPT::E::REGNAME_NOT_IN_T_SET(name.c_str()));
  EXPECT_THAT(lines.errors(), ElementsAre("\"" + name + "\" does not exist in the transformed set"));
}

TEST(Messages, NothingIsToldBeforeAMessageIsPosted) {
  const HOST_LINES lines;
  delete MSG_KPT::E::REGNAME_NOT_IN_T_SET("a");
  delete MSG_KPT::DEBUG_MSG("%d", 1);
  EXPECT_THAT(lines.errors(), IsEmpty());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(Messages, DebugMessageIsFiledUnderTheModule) {
  const HOST_LINES lines;
  post_and_delete(MSG_KPT::DEBUG_MSG("%d maps of %s", 3, "top"));
  EXPECT_THAT(lines.debug(), ElementsAre("3 maps of top"));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST(Messages, DebugMessageIsDroppedWhileDebugIsOff) {
  const HOST_LINES lines;
  kpt_host::set_debug(false);
  post_and_delete(MSG_KPT::DEBUG_MSG("%s", "unseen"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// A debug text is a printf format: an identifier after a "/" is part of the text.
TEST(Messages, DebugMessageHasNoIdentifier) {
  const HOST_LINES lines;
  post_and_delete(MSG_KPT::DEBUG_MSG("%s/EKPT_FOO", "path"));
  EXPECT_THAT(lines.debug(), ElementsAre("path/EKPT_FOO"));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
}

TEST(DebugLine, IsHandedToTheHostUnderTheModule) {
  const HOST_LINES lines;
  EXPECT_TRUE(kpt_msg_debug("Replicated register: %s is a replicate of %s", "b", "a"));
  EXPECT_THAT(lines.debug(), ElementsAre("Replicated register: b is a replicate of a"));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
}

TEST(DebugLine, ReturnsTheAnswerOfTheHost) {
  const HOST_LINES lines;
  EXPECT_TRUE(kpt_msg_debug("%s", "shown"));
  kpt_host::set_debug(false);
  EXPECT_FALSE(kpt_msg_debug("%s", "dropped"));
  EXPECT_THAT(lines.debug(), ElementsAre("shown"));
}

TEST(DebugLine, IsNotCut) {
  const HOST_LINES lines;
  const std::string text(100000, 'x');
  kpt_msg_debug("TIME: %s", text.c_str());
  EXPECT_THAT(lines.debug(), ElementsAre("TIME: " + text));
}

TEST(Trackers, AreBoundToTheTypeThatIsAllocated) {
  const KPT_STRING text(100, 'x');
  bool found = false;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    found = found || (tracker.type == "char" && tracker.live_blocks > 0 && tracker.live_bytes >= 100);
  }
  EXPECT_TRUE(found);
}

}  // namespace
