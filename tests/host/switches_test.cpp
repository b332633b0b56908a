#include <gtest/gtest.h>

#include <cstdlib>

#include "h/cfg_sys.h"
#include "host/kpt_host.h"

namespace {

constexpr const char* KEY = "kpt_test_switch";
constexpr const char* VARIABLE = "KPT_SWITCH_kpt_test_switch";

class Switches : public testing::Test {
 protected:
  void TearDown() override {
    kpt_host::clear_switches();
    unsetenv(VARIABLE);
  }
};

void set_variable(const char* value) { ASSERT_EQ(setenv(VARIABLE, value, 1), 0); }

TEST_F(Switches, FallBackToTheDefault) {
  EXPECT_FALSE(cfg_is_on(KEY, false));
  EXPECT_TRUE(cfg_is_on(KEY, true));
  EXPECT_TRUE(cfg_is_on(nullptr, true));
}

TEST_F(Switches, AreSetByCall) {
  kpt_host::set_switch(KEY, true);
  EXPECT_TRUE(cfg_is_on(KEY, false));
  EXPECT_FALSE(cfg_is_on("kpt_test_other", false));
  kpt_host::set_switch(KEY, false);
  EXPECT_FALSE(cfg_is_on(KEY, true));
}

TEST_F(Switches, AreSetByTheEnvironment) {
  for (const char* const word : {"1", "on", "true", "yes"}) {
    set_variable(word);
    EXPECT_TRUE(cfg_is_on(KEY, false)) << word;
  }
  for (const char* const word : {"0", "off", "false", "no"}) {
    set_variable(word);
    EXPECT_FALSE(cfg_is_on(KEY, true)) << word;
  }
}

TEST_F(Switches, AreNotSetByOtherWords) {
  for (const char* const word : {"", "2", "ON", "maybe"}) {
    set_variable(word);
    EXPECT_TRUE(cfg_is_on(KEY, true)) << word;
    EXPECT_FALSE(cfg_is_on(KEY, false)) << word;
  }
}

TEST_F(Switches, FollowCallsOverTheEnvironment) {
  set_variable("1");
  kpt_host::set_switch(KEY, false);
  EXPECT_FALSE(cfg_is_on(KEY, true));
  kpt_host::clear_switches();
  EXPECT_TRUE(cfg_is_on(KEY, false));
}

}  // namespace
