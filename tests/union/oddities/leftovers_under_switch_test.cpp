// A map of the second stage that no first map reaches is copied only when the
// host asks for it, with one internal error for each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/kpt_host.h"
#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

using LeftoversUnderSwitch = TWO_SETS;

TEST_F(LeftoversUnderSwitch, StayBehindWithoutAWordWhenItIsOff) {
  db2.plain("x -> p");
  db2.plain("y -> q");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), IsEmpty());
  EXPECT_THAT(maps_of(db2), ElementsAre("x~ -> p~", "y~ -> q~"));
  EXPECT_THAT(lines.internal_errors(), IsEmpty());
}

TEST_F(LeftoversUnderSwitch, AreCopiedInOrderWhenItIsOn) {
  kpt_host::set_switch(COPY_LEFTOVERS, true);
  db1.plain("a -> x");
  db2.plain("z -> s");
  db2.plain("x -> p");
  db2.plain("y -> q", KPT_NO_FANOUT);
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~", "z~ -> s~", "y~ -> q~ status 3"));
  EXPECT_EQ(db1.r_map("z"), "z~ -> s~");
  EXPECT_EQ(db1.t_map("q"), "y~ -> q~ status 3");
}

TEST_F(LeftoversUnderSwitch, AreReportedOneByOneWhenItIsOn) {
  kpt_host::set_switch(COPY_LEFTOVERS, true);
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  ASSERT_EQ(lines.internal_errors().size(), 2U);
  for (const INTERNAL_ERROR& error : lines.internal_errors()) {
    EXPECT_EQ(error.condition, "Unite has unmatched db2 entries");
    EXPECT_EQ(error.tag, "KPT");
    EXPECT_EQ(error.file, "db/kpt/kpt_transformation_set_impl");
    EXPECT_EQ(error.line, 1036);
  }
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST_F(LeftoversUnderSwitch, ReportTheirEmptySidesAfterTheTimes) {
  kpt_host::set_switch(COPY_LEFTOVERS, true);
  db2.plain("x -> ~");
  db1.unite(db2);
  EXPECT_THAT(masked(lines.debug()), ElementsAre(LOOP_1, LOOP_2, LOOP_3, EMPTY_T_SIDE, EMPTY_T_SIDE));
}

// A machine that replaced first maps is still in the second set, and is copied a second time.
TEST_F(LeftoversUnderSwitch, IncludeAMachineThatWasCopiedAlready) {
  kpt_host::set_switch(COPY_LEFTOVERS, true);
  db1.plain("a -> s0");
  db2.fsm("s0 -> h0", {"0 1", "1 0"});
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("s0~ -> h0~ fsm", "s0~ -> h0~ fsm"));
  EXPECT_EQ(lines.internal_errors().size(), 1U);
  EXPECT_EQ(db1.get_map_of_t_keypoint(registers["h0"]), db1.get_list_of_register_transformations().back());
}

// If leftovers were copied without the switch, registers of the middle netlist
// would stay: such a map starts there, and nothing leads back to the first netlist.
TEST_F(LeftoversUnderSwitch, BecauseTheyStartBetweenTheStages) {
  for (const bool on : {false, true}) {
    kpt_host::set_switch(COPY_LEFTOVERS, on);
    KPT_KEYPOINTS_DB_IMPL first("first");
    KPT_KEYPOINTS_DB_IMPL second("second");
    first.associate_registers_signal_to_signal("a", "x");
    first.set_eliminated_register_stuck_at_one("x");
    first.associate_registers_signal_to_signal("x", "y");
    second.associate_registers_signal_to_signal("x", "p");
    EXPECT_TRUE(first.unite_db(second));
    // The second x is refused as a pass-through, because the first netlist has an
    // x; so the translated map has lost it.
    EXPECT_EQ(first.get_transformed_register_transformation("p") != nullptr, on);
    EXPECT_THAT(faults_after_union(first), IsEmpty());
  }
}

}  // namespace
