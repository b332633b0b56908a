// Ids come from two counters, one for each side, which all databases of the
// process share. A counter is read and then raised, so the first id is 0.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/support/databases.h"

namespace {

using kpt_test::DATABASE;

std::string ids(const DATABASE& db) {
  std::string text;
  for (const KPT_KEYPOINT_SET_IMPL* set : {db.impl().get_reference_set(), db.impl().get_transformed_set()}) {
    for (const KPT_KEYPOINT* keypoint : set->get_list_of_keypoints()) {
      text += std::string(keypoint->get_element_name()) + std::to_string(keypoint->get_kpid()) + " ";
    }
  }
  return text;
}

void record_in_two_databases() {
  const DATABASE first;
  const DATABASE second;
  first->associate_registers_signal_to_signal("a", "x");
  second->associate_registers_signal_to_signal("a", "x");
  second->set_replicated_registers("x", "y");
  first.fsm("b c", "y", {"00 0", "11 1"});
  std::cerr << ids(first) << "| " << ids(second) << std::endl;
  std::exit(0);
}

// The process must be a new one, because other tests draw from these counters.
TEST(IdsCountFromZeroAcrossDatabases, TheFirstIdOfAProcessIs0) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(record_in_two_databases(), testing::ExitedWithCode(0), "a0 b2 c3 x0 y3 \\| a1 x1 y2");
}

// If each database counted its own ids, two stages would give one id to different
// registers. A union keeps the ids of the first stage and gives new ids to the
// registers of the second.
TEST(IdsCountFromZeroAcrossDatabases, RegistersOfTwoDatabasesNeverShareAnId) {
  const DATABASE first;
  const DATABASE second;
  for (const char* name : {"a", "b", "c"}) {
    ASSERT_TRUE(first->associate_registers_signal_to_signal(name, name));
    ASSERT_TRUE(second->associate_registers_signal_to_signal(name, name));
  }
  for (const char* name : {"a", "b", "c"}) {
    for (const char* other : {"a", "b", "c"}) {
      EXPECT_NE(first.r(name)->get_kpid(), second.r(other)->get_kpid());
      EXPECT_NE(first.t(name)->get_kpid(), second.t(other)->get_kpid());
    }
  }
  EXPECT_EQ(second.r("a")->get_kpid(), first.r("a")->get_kpid() + 1);
  EXPECT_EQ(first.t("b")->get_kpid(), second.t("a")->get_kpid() + 1);
}

}  // namespace
