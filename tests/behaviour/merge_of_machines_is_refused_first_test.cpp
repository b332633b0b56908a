// A merge first checks whether both registers belong to state machines, and only
// then whether they belong to the same map.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/databases.h"
#include "tests/support/host_lines.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::HOST_LINES;
using kpt_test::MERGE_OF_TWO_MACHINES;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::ElementsAre;

TEST(MergeOfMachinesIsRefusedFirst, TwoBitsOfOneMachineAreTakenForTwoMachines) {
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  const HOST_LINES lines;
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_FALSE(db->set_merged_registers("x", "x"));
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_TWO_MACHINES, "Merged registers: x <- y", MERGE_OF_TWO_MACHINES,
                                         "Merged registers: x <- x"));
}

// If the maps were compared first, replicas of one state bit would be merged as
// in a plain map. The last register of a bit could then leave its group, while
// the table keeps the bit's column.
TEST(MergeOfMachinesIsRefusedFirst, ReplicasOfAStateBitStayWithTheTable) {
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", {"0 01", "1 10"}));
  ASSERT_TRUE(db->set_replicated_registers("x", "x2"));
  EXPECT_FALSE(db->set_merged_registers("x", "x2"));
  EXPECT_EQ(db.of_t("x2"), "a~ -> x x2~|y~");
  EXPECT_EQ(states_of(db.t_map("x")->state_table()), (STATES{"0 01", "1 10"}));
  EXPECT_NE(db.t("x2"), nullptr);
}

}  // namespace
