// A map refuses an elimination without a reason, but the register's entry is
// erased anyway. The register stays in the transformed set.
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

TEST(EliminationWithoutReasonDropsTheEntry, TheEventIsRefusedAndTheRegisterFoundNoMore) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  const HOST_LINES lines;
  EXPECT_FALSE(db->set_eliminated_register("x"));
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register x"));
  EXPECT_EQ(db.of_t("x"), "none");
  EXPECT_EQ(db.of_r("a"), "a~ -> x~");
  EXPECT_EQ(db.r_map("a")->get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_NE(db.t("x"), nullptr);
  kpt_test::EXPLANATIONS facts;
  facts.t.erased = {db.t("x")};
  EXPECT_THAT(index_differences(db.impl(), facts), IsEmpty());
}

// If the refusal kept the entry, later passes would record events on a register
// that is no longer in the netlist, and the map would list its replicas as living
// registers.
TEST(EliminationWithoutReasonDropsTheEntry, FurtherEventsOnTheRegisterAreRefused) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  ASSERT_FALSE(db->set_eliminated_register("x"));
  EXPECT_FALSE(db->set_replicated_registers("x", "z"));
  EXPECT_FALSE(db->set_inverter_retimed_register("x"));
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_FALSE(db->set_merged_registers("y", "x"));
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_zero("x"));
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> x~", "b~ -> y~"));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("c", "x"));
}

}  // namespace
