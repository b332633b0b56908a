// A name finds a signal register and never a block instance, because a name does
// not identify an instance.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/databases.h"
#include "tests/support/host_lines.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::HOST_LINES;
using testing::ElementsAre;

TEST(NamesAloneFindSignalsOnly, AnInstanceIsNeitherFoundNorReachedByEvents) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_instance_to_instance("u", "E", "t", "v", "E", "t"));
  const HOST_LINES lines;
  EXPECT_TRUE(db->get_reference_register_transformation("u").is_null());
  EXPECT_TRUE(db->get_transformed_register_transformation("v").is_null());
  EXPECT_FALSE(db->set_replicated_registers("v", "w"));
  EXPECT_FALSE(db->set_merged_registers("v", "v"));
  EXPECT_FALSE(db->set_inverter_retimed_register("v"));
  EXPECT_FALSE(db->set_eliminated_register_no_fanout("v"));
  EXPECT_THAT(lines.debug(), ElementsAre("v does not exist in T", "Error: Can't find v in T set",
                                         "Error: Can't find v in T set", "Eliminated register no_fanout v"));
  EXPECT_THAT(db.maps(), ElementsAre("u~ -> v~"));
}

// If names found instances too, an event on the signal "v" would change whichever
// register was found first. A netlist may have both, and several instances with
// one name and different types.
TEST(NamesAloneFindSignalsOnly, ASignalIsFoundBesideInstancesOfItsName) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_instance("a", "v", "E", "t1"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "v"));
  ASSERT_TRUE(db->associate_registers_signal_to_instance("c", "v", "E", "t2"));
  EXPECT_EQ(db.of_t("v"), "b~ -> v~");
  EXPECT_TRUE(db->set_eliminated_register_stuck_at_one("v"));
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> v~", "b~ -> ~", "c~ -> v~"));
  EXPECT_TRUE(db->get_reference_register_transformation("b").is_stuck_at_one());
  EXPECT_FALSE(db->get_reference_register_transformation("a").is_stuck_at_one());
}

}  // namespace
