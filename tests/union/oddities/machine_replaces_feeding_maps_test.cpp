// A state machine of the second stage replaces the first-stage maps that feed it.
// Its table is about its own reference registers, in their polarity. The
// registers of the first netlist that led to them are no longer found.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

TEST(MachineReplacesFeedingMaps, AndTheFirstRegistersThatFedItLeaveTheDatabase) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "s0");
  db1.associate_registers_signal_to_signal("b", "s1");
  db1.associate_registers_signal_to_signal("c", "x");
  db2.associate_registers_fsm_signals({"s0", "s1"}, {"h0", "h1", "h2"}, client_table({"00 100", "01 010", "10 001"}));
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("c~ -> p~", "s0~|s1~ -> h0~|h1~|h2~ fsm"));
  EXPECT_EQ(names_of(db1.get_reference_set()), "c");
  EXPECT_EQ(db1.get_reference_register_transformation("a"), nullptr);
  EXPECT_EQ(names_of(db1.get_transformed_set()), "h0 h1 h2 p");
  EXPECT_THAT(faults_after_union(db1), IsEmpty());
}

// The machine still lists the registers between the stages. They are readable,
// but in no set. So a saved file lists ids that it does not define, and a map
// that is loaded from it lists null keypoints.
TEST(MachineReplacesFeedingMaps, AndASavedFileNamesRegistersThatItDoesNotHold) {
  set_next_ids(0, 40);
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "s0");
  db2.associate_registers_fsm_signals({"s0"}, {"h0"}, client_table({"0 1", "1 0"}));
  db1.unite_db(db2);
  const KPT_TRANSFORMATION_IMPL* machine = db1.get_transformed_register_transformation("h0");
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(text_of(machine->get_r_representative(0)), "s0");
  EXPECT_EQ(machine->get_r_representative(0)->get_kpid(), 40);
  EXPECT_THAT(saved(db1), testing::Not(testing::HasSubstr("s0")));
}

// If the machine listed the first registers instead, its table would say their
// inverse: the column was recorded for s0, and a is the inverse of s0.
TEST(MachineReplacesFeedingMaps, BecauseItsTableHoldsForNoOtherRegister) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "s0");
  db1.set_inverter_retimed_register("s0");
  db2.associate_registers_fsm_signals({"s0"}, {"h0"}, client_table({"0 1", "1 0"}));
  db1.unite_db(db2);
  const KPT_TRANSFORMATION_IMPL* machine = db1.get_transformed_register_transformation("h0");
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(line_of(*machine), "s0~ -> h0~ fsm");
  EXPECT_THAT(states_of(machine->get_register_state_table()), ElementsAre("0 1", "1 0"));
}

// If the first map were kept beside the machine, it would end in a register that
// the last netlist does not have.
TEST(MachineReplacesFeedingMaps, BecauseNoMapMayEndBetweenTheStages) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> s0");
  db2.fsm("s0 -> h0", {"0 1", "1 0"});
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_EQ(db1.t_map("s0"), "");
  EXPECT_EQ(db1.t_map("h0"), "s0~ -> h0~ fsm");
}

TEST(MachineReplacesFeedingMaps, AlsoWhenWhatFeedsItIsAMachine) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.fsm("a|b -> s0|s1", {"00 00", "11 11"});
  db2.fsm("s0 -> h0", {"0 1", "1 0"});
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("s0~ -> h0~ fsm"));
  EXPECT_EQ(db1.t_map("s1"), "");
}

}  // namespace
