// The transformed index does not find a transformed register that was eliminated
// or merged. The map of an eliminated register stays, and is found by its
// reference registers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/databases.h"
#include "tests/support/index_checker.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::index_differences;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(EliminatedAndMergedRegistersLeaveTheIndex, TheMapStaysForTheReferenceRegister) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  const KPT_KEYPOINT* x = db.t("x");
  ASSERT_TRUE(db->set_eliminated_register_stuck_at_zero("x"));
  EXPECT_EQ(db.set().get_map_of_t_keypoint(x), nullptr);
  EXPECT_EQ(db.of_t("x"), "none");
  EXPECT_EQ(db.of_r("a"), "a~ -> ~");
  EXPECT_TRUE(db.r_map("a")->r_representative_is_stuck_at_zero());

  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  ASSERT_TRUE(db->set_replicated_registers("y", "z"));
  const KPT_KEYPOINT* z = db.t("z");
  ASSERT_TRUE(db->set_merged_registers("y", "z"));
  EXPECT_EQ(db.set().get_map_of_t_keypoint(z), nullptr);
  EXPECT_EQ(db.of_r("b"), "b~ -> y~");
}

// If the entry were kept, a pass that gives the free name to a new register would
// see that register with two maps. An elimination that is reported twice would
// change the map twice.
TEST(EliminatedAndMergedRegistersLeaveTheIndex, TheNameIsFreeForAnotherRegister) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  KPT_REGISTER_KEYPOINT_IMPL* before = db.t("x");
  ASSERT_TRUE(db->set_eliminated_register_no_fanout("x"));
  EXPECT_FALSE(db.set().set_eliminated_map(before, KPT_STUCK_AT_ONE));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "x"));
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> ~", "b~ -> x~"));
  EXPECT_TRUE(db.r_map("a")->has_no_fanout());
  EXPECT_FALSE(db.t_map("x")->has_no_fanout());
  EXPECT_EQ(db.of_t("x"), "b~ -> x~");
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

}  // namespace
