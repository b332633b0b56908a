// A replica that the map of its original refuses stays in the transformed set,
// without a map.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::HOST_LINES;
using kpt_test::index_differences;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FailedReplicationLeavesTheReplica, TheReplicaHasNoMapAndNoLineIsIssued) {
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  const HOST_LINES lines;
  EXPECT_FALSE(db->set_replicated_registers("y", "z"));
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_EQ(db.t_names(), "x y z");
  EXPECT_EQ(db.of_t("z"), "none");
  EXPECT_EQ(db.of_t("y"), "a~ -> x~|y~");
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

// If the replica were removed, its name would be free for a second register,
// although the netlist has one of that name: the netlist changed before the event
// was reported.
TEST(FailedReplicationLeavesTheReplica, TheReplicasNameIsTaken) {
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  ASSERT_FALSE(db->set_replicated_registers("y", "z"));
  const HOST_LINES lines;
  EXPECT_FALSE(db->associate_registers_signal_to_signal("b", "z"));
  EXPECT_FALSE(db->set_replicated_registers("x", "z"));
  EXPECT_THAT(lines.debug(), ElementsAre("z already exists in T"));
  EXPECT_EQ(db.t_names(), "x y z");
}

}  // namespace
