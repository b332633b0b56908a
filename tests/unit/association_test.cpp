// The associations that passes report through the handle: results, registers,
// maps and debug lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"
#include "tests/support/recording.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::index_differences;
using kpt_test::names;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::ElementsAre;
using testing::IsEmpty;

using Association = kpt_test::RECORDING;
using FsmAssociation = kpt_test::RECORDING;

// --- association ---

TEST_F(Association, SignalToSignalMakesBothRegistersAndTheirMap) {
  EXPECT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_EQ(db.r_names(), "a");
  EXPECT_EQ(db.t_names(), "x");
  EXPECT_TRUE(db.r("a")->register_is_signal());
  EXPECT_TRUE(db.t("x")->register_is_signal());
  EXPECT_EQ(db.of_r("a"), "a~ -> x~");
  EXPECT_EQ(db.t_map("x"), db.r_map("a"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// An index has a faster way for the registers of the first sets that it meets.
TEST_F(Association, IsFoundAlsoBehindMapsOfTheRegistersOfOtherDatabases) {
  DATABASE others[2];
  for (DATABASE& other : others) {
    ASSERT_TRUE(other->associate_registers_signal_to_signal("a", "x"));
    db.impl().get_transformation_set()->add_map(other.r("a"), other.t("x"));
  }
  EXPECT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_EQ(db.r_map("a"), db.impl().get_transformation_set()->get_map_of_r_keypoint(db.r("a")));
  EXPECT_EQ(db.t_map("x"), db.r_map("a"));
  EXPECT_EQ(db.of_r("a"), "a~ -> x~");
}

TEST_F(Association, SignalToInstance) {
  EXPECT_TRUE(db->associate_registers_signal_to_instance("a", "u", "ENT", "dff"));
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("a");
  ASSERT_FALSE(map.is_null());
  EXPECT_TRUE(map.get_transformed(0).is_block_instance());
  EXPECT_EQ(map.get_transformed(0).get_name(), "u");
  EXPECT_EQ(map.get_transformed(0).get_entity_name(), "ENT");
  EXPECT_EQ(map.get_transformed(0).get_type(), "dff");
  EXPECT_TRUE(map.get_reference(0).is_signal());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(Association, InstanceToSignal) {
  EXPECT_TRUE(db->associate_registers_instance_to_signal("u", "ENT", "dff", "x"));
  const KPT_REGISTER_TRANSFORMATION map = db->get_transformed_register_transformation("x");
  ASSERT_FALSE(map.is_null());
  EXPECT_TRUE(map.get_reference(0).is_block_instance());
  EXPECT_EQ(map.get_reference(0).get_name(), "u");
  EXPECT_EQ(map.get_reference(0).get_entity_name(), "ENT");
  EXPECT_EQ(map.get_reference(0).get_type(), "dff");
  EXPECT_TRUE(map.get_transformed(0).is_signal());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(Association, InstanceToInstance) {
  EXPECT_TRUE(db->associate_registers_instance_to_instance("u", "E1", "t1", "v", "E2", "t2"));
  const KPT_REGISTER_TRANSFORMATION map = db->get_transformation_set().get_list_of_register_transformations().front();
  EXPECT_EQ(map.get_reference(0).get_name(), "u");
  EXPECT_EQ(map.get_reference(0).get_entity_name(), "E1");
  EXPECT_EQ(map.get_reference(0).get_type(), "t1");
  EXPECT_EQ(map.get_transformed(0).get_name(), "v");
  EXPECT_EQ(map.get_transformed(0).get_entity_name(), "E2");
  EXPECT_EQ(map.get_transformed(0).get_type(), "t2");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// The key does not contain the entity.
TEST_F(Association, OfAnInstanceThatDiffersInItsEntityAloneIsRefused) {
  ASSERT_TRUE(db->associate_registers_signal_to_instance("a", "u", "E1", "dff"));
  EXPECT_FALSE(db->associate_registers_signal_to_instance("b", "u", "E2", "dff"));
  EXPECT_TRUE(db->associate_registers_signal_to_instance("b", "u", "E1", "latch"));
}

TEST_F(Association, SecondTimeIsRefusedAndAddsNothing) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("a", "y"));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("b", "x"));
  EXPECT_EQ(db.r_names(), "a");
  EXPECT_EQ(db.t_names(), "x");
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> x~"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(Association, TheTwoSidesAreSeparateNameSpaces) {
  EXPECT_TRUE(db->associate_registers_signal_to_signal("x", "x"));
  EXPECT_EQ(db.of_r("x"), "x~ -> x~");
}

TEST_F(Association, SignalsAndInstancesAreSeparateNameSpaces) {
  EXPECT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_TRUE(db->associate_registers_instance_to_instance("a", "E", "t", "x", "E", "t"));
  EXPECT_EQ(db.r_names(), "a a");
  EXPECT_EQ(db.t_names(), "x x");
}

TEST_F(Association, InstancesThatDifferInTheirTypeAreTwo) {
  EXPECT_TRUE(db->associate_registers_signal_to_instance("a", "u", "E", "t1"));
  EXPECT_TRUE(db->associate_registers_signal_to_instance("b", "u", "E", "t2"));
  EXPECT_EQ(db.t_names(), "u u");
}

TEST_F(Association, InstancesThatDifferInTheirEntityAloneAreOne) {
  ASSERT_TRUE(db->associate_registers_instance_to_instance("u", "E", "t", "v", "E", "t"));
  EXPECT_FALSE(db->associate_registers_instance_to_instance("u", "F", "t", "w", "E", "t"));
  EXPECT_FALSE(db->associate_registers_instance_to_instance("w", "E", "t", "v", "F", "t"));
  EXPECT_FALSE(db->associate_registers_instance_to_signal("u", "F", "t", "x"));
  EXPECT_FALSE(db->associate_registers_signal_to_instance("a", "v", "F", "t"));
  EXPECT_THAT(db.maps(), ElementsAre("u~ -> v~"));
}

TEST_F(Association, EmptyNamesAreNames) {
  EXPECT_TRUE(db->associate_registers_signal_to_signal("", ""));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("", "x"));
  EXPECT_TRUE(db->associate_registers_instance_to_instance("", "", "", "", "", ""));
  EXPECT_NE(db.r_map(""), nullptr);
}

TEST_F(Association, NameOfAnEliminatedRegisterIsFreeAgain) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_eliminated_register_no_fanout("x"));
  EXPECT_TRUE(db->associate_registers_signal_to_signal("b", "x"));
  EXPECT_EQ(db.of_t("x"), "b~ -> x~");
  EXPECT_EQ(db.of_r("a"), "a~ -> ~");
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

// --- state machines ---

TEST_F(FsmAssociation, RegistersKeepTheOrderOfTheNames) {
  EXPECT_TRUE(db.fsm("c a b", "z x", {"010 01", "111 10"}));
  EXPECT_EQ(db.r_names(), "c a b");
  EXPECT_EQ(db.t_names(), "z x");
  EXPECT_EQ(db.of_r("b"), "c~|a~|b~ -> z~|x~");
  EXPECT_EQ(db.of_t("z"), "c~|a~|b~ -> z~|x~");
  EXPECT_TRUE(db.r_map("a")->map_has_fsm_transformation());
  EXPECT_EQ(states_of(db.r_map("a")->state_table()), (STATES{"010 01", "111 10"}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(FsmAssociation, TableNeedNotFitTheNames) {
  EXPECT_TRUE(db.fsm("a", "x y", {"000 0"}));
  EXPECT_EQ(states_of(db.r_map("a")->state_table()), (STATES{"000 0"}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(FsmAssociation, NameThatExistsRefusesTheWholeMachine) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(db.fsm("b c a", "y", {"000 0"}));
  EXPECT_FALSE(db.fsm("b", "y z x", {"0 000"}));
  EXPECT_EQ(db.r_names(), "a");
  EXPECT_EQ(db.t_names(), "x");
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> x~"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(FsmAssociation, InstancesDoNotStandInTheWay) {
  ASSERT_TRUE(db->associate_registers_instance_to_instance("a", "E", "t", "x", "E", "t"));
  EXPECT_TRUE(db.fsm("a", "x", {"0 0"}));
}

TEST_F(FsmAssociation, MachineWithoutRegistersIsAMap) {
  EXPECT_TRUE(db->associate_registers_fsm_signals(names(""), names(""), KPT_STATE_TABLE(0, 0, 0)));
  EXPECT_THAT(db.maps(), ElementsAre(" -> "));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// The check sees only earlier registers, so both registers are made, and the set
// finds the second of them.
TEST_F(FsmAssociation, RepeatedNameMakesTwoRegisters) {
  EXPECT_TRUE(db.fsm("a a", "x y x", {"01 010"}));
  EXPECT_EQ(db.r_names(), "a");
  EXPECT_EQ(db.t_names(), "y x");
  const KPT_TRANSFORMATION_IMPL* map = db.r_map("a");
  ASSERT_NE(map, nullptr);
  EXPECT_EQ(kpt_test::text_of(*map), "a~|a~ -> x~|y~|x~");
  EXPECT_NE(map->get_t_representative(0), map->get_t_representative(2));
  EXPECT_EQ(map->get_t_representative(2), db.t("x"));
  EXPECT_EQ(db.set().get_map_of_t_keypoint(map->get_t_representative(0)), map);
  EXPECT_EQ(map->get_t_representative(0)->get_kpid() + 2, map->get_t_representative(2)->get_kpid());
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

}  // namespace
