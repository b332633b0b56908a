// Only plain maps are composed: a first-stage machine stays unchanged, and the
// maps of the second stage that start from its registers are lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

TEST(PlainMapsAloneComposed, SoAFirstMachineEndsInTheRegistersBetweenTheStages) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_fsm_signals({"a", "b"}, {"s0", "s1"}, client_table({"00 01", "01 10", "10 11"}));
  db2.associate_registers_signal_to_signal("s0", "p");
  db2.associate_registers_signal_to_signal("s1", "q");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~|b~ -> s0~|s1~ fsm"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "s0 s1");
  EXPECT_EQ(db1.get_transformed_register_transformation("p"), nullptr);
}

TEST(PlainMapsAloneComposed, SoAPlainMapStopsBeforeASecondMachineThatItDoesNotFeed) {
  HOST_LINES lines;
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  KPT_TRANSFORMATION_IMPL* machine = db2.fsm("s0 -> h0", {"0 1", "1 0"});
  db1.plain("a -> x");
  // x leads to the machine, which does not list it, so nothing replaces the map.
  db2.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, registers.side("x~"), machine);
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~", "s0~ -> h0~ fsm"));
  EXPECT_THAT(masked(lines.debug()), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
}

// If a machine were composed with a plain map, its states would be lost: the
// composed map is of the later map's kind, and that one has no table.
TEST(PlainMapsAloneComposed, BecauseAComposedMachineWouldLoseItsStates) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  KPT_TRANSFORMATION_IMPL* machine = db1.fsm("a|b -> s0|s1", {"00 01", "01 10", "10 11"});
  KPT_TRANSFORMATION_IMPL* next = db2.plain("s0 -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_EQ(machine->get_number_of_states(), 3);

  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  machine->update_transformations(*next, entered, left);
  EXPECT_FALSE(machine->map_has_fsm_transformation());
  EXPECT_EQ(machine->get_number_of_states(), 2);
}

}  // namespace
