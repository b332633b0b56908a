// When two registers of opposite polarity are merged, the absorbed map gets the
// polarity of the kept register: every pair of both its sides is swapped.
#include <gtest/gtest.h>

#include "tests/support/databases.h"

namespace {

using kpt_test::DATABASE;

TEST(AbsorbedMapIsSwappedWhole, ItsGroupsJoinTheOppositeOnes) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  ASSERT_TRUE(db->set_replicated_registers("y", "y2"));
  ASSERT_TRUE(db->set_inverter_retimed_register("y"));
  ASSERT_EQ(db.of_t("y"), "b~ -> y2~y");
  EXPECT_TRUE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.of_r("a"), "a~b -> x~y2");
  EXPECT_EQ(db.of_r("b"), "a~b -> x~y2");
  EXPECT_EQ(db.of_t("y2"), "a~b -> x~y2");
}

TEST(AbsorbedMapIsSwappedWhole, EveryPairOfAMachineIsSwapped) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_inverter_retimed_register("x"));
  ASSERT_TRUE(db.fsm("b c", "y z", {"00 01", "11 10"}));
  EXPECT_TRUE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.of_t("x"), "a~|~b|~c -> ~x|~|~z");
}

// If the groups were joined without a swap, the database would say that "b" has
// the value of "a". It has the inverse, so the merge would have changed the
// function of the design.
TEST(AbsorbedMapIsSwappedWhole, ReferenceRegistersBecomeInvertedEquivalents) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  ASSERT_TRUE(db->set_inverter_retimed_register("y"));
  ASSERT_TRUE(db->set_merged_registers("x", "y"));
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("b");
  EXPECT_EQ(map.get_reference(0).get_name(), "a");
  EXPECT_TRUE(map.get_reference_equivalents(0).empty());
  ASSERT_EQ(map.get_reference_inverted_equivalents(0).size(), 1U);
  EXPECT_EQ(map.get_reference_inverted_equivalents(0).front().get_name(), "b");
}

}  // namespace
