// What passes report through the handle: results, registers, maps, and the exact
// debug lines of every operation, in order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::EMPTY_T_SIDE;
using kpt_test::HOST_LINES;
using kpt_test::index_differences;
using kpt_test::make_table;
using kpt_test::MERGE_OF_INVERSES;
using kpt_test::MERGE_OF_TWO_MACHINES;
using kpt_test::names;
using kpt_test::NOT_FOUND_TO_ELIMINATE;
using kpt_test::NOT_FOUND_TO_RETIME;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class Recording : public testing::Test {
 protected:
  DATABASE db;
  HOST_LINES lines;
};

using Association = Recording;
using FsmAssociation = Recording;
using Replication = Recording;
using Merging = Recording;
using InverterRetiming = Recording;
using Elimination = Recording;

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

// --- replication ---

TEST_F(Replication, ReplicaJoinsTheGroupOfItsOriginal) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_TRUE(db->set_replicated_registers("x", "y"));
  EXPECT_EQ(db.of_t("y"), "a~ -> x y~");
  EXPECT_EQ(db.t_names(), "x y");
  EXPECT_THAT(lines.debug(), ElementsAre("Replicated register: y is a replicate of x"));
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

TEST_F(Replication, ReplicaOfAnInvertedRegisterIsInverted) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_inverter_retimed_register("x"));
  EXPECT_TRUE(db->set_replicated_registers("x", "y"));
  EXPECT_EQ(db.of_t("y"), "a~ -> ~x y");
}

TEST_F(Replication, ReplicaCanBeReplicated) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_TRUE(db->set_replicated_registers("x", "y"));
  EXPECT_TRUE(db->set_replicated_registers("y", "z"));
  EXPECT_EQ(db.of_t("z"), "a~ -> x y z~");
}

TEST_F(Replication, UnknownRegisterIsRefused) {
  EXPECT_FALSE(db->set_replicated_registers("x", "y"));
  EXPECT_EQ(db.t_names(), "");
  EXPECT_THAT(lines.debug(), ElementsAre("x does not exist in T"));
}

TEST_F(Replication, KnownReplicaIsRefused) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  EXPECT_FALSE(db->set_replicated_registers("x", "y"));
  EXPECT_FALSE(db->set_replicated_registers("x", "x"));
  EXPECT_THAT(lines.debug(), ElementsAre("y already exists in T", "x already exists in T"));
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> x~", "b~ -> y~"));
}

TEST_F(Replication, UnknownOriginalIsToldBeforeAKnownReplica) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(db->set_replicated_registers("none", "x"));
  EXPECT_THAT(lines.debug(), ElementsAre("none does not exist in T"));
}

TEST_F(Replication, InstanceDoesNotStandInTheWayOfAReplica) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_instance("b", "y", "E", "t"));
  EXPECT_TRUE(db->set_replicated_registers("x", "y"));
  EXPECT_EQ(db.of_t("y"), "a~ -> x y~");
}

TEST_F(Replication, EliminatedRegisterIsUnknown) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_eliminated_register_stuck_at_one("x"));
  lines.clear();
  EXPECT_FALSE(db->set_replicated_registers("x", "y"));
  EXPECT_THAT(lines.debug(), ElementsAre("x does not exist in T"));
}

// --- merging ---

TEST_F(Merging, MergedRegisterLeavesTheTransformedSet) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  EXPECT_TRUE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.t_names(), "x");
  EXPECT_EQ(db.r_names(), "a b");
  EXPECT_THAT(db.maps(), ElementsAre("a b~ -> x~"));
  EXPECT_EQ(db.of_r("b"), "a b~ -> x~");
  EXPECT_THAT(lines.debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE, "Merged registers: x <- y"));
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

TEST_F(Merging, ReplicasOfOneRegisterMergeBack) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_replicated_registers("x", "y"));
  lines.clear();
  EXPECT_TRUE(db->set_merged_registers("y", "x"));
  EXPECT_EQ(db.t_names(), "y");
  EXPECT_EQ(db.of_r("a"), "a~ -> y~");
  EXPECT_THAT(lines.debug(), ElementsAre("Merged registers: y <- x"));
}

TEST_F(Merging, UnknownKeptRegisterIsToldFirst) {
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_THAT(lines.debug(), ElementsAre("Error: Can't find x in T set"));
}

TEST_F(Merging, UnknownMergedRegisterIsTold) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_THAT(lines.debug(), ElementsAre("Error: Can't find y in T set"));
}

TEST_F(Merging, RefusedMergeIsTracedAllTheSame) {
  ASSERT_TRUE(db.fsm("a", "x", {"0 0", "1 1"}));
  ASSERT_TRUE(db.fsm("b", "y", {"0 0", "1 1"}));
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.t_names(), "x y");
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_TWO_MACHINES, "Merged registers: x <- y"));
}

TEST_F(Merging, InversesOfOneMapAreRefused) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_replicated_registers("x", "y"));
  ASSERT_TRUE(db->set_inverter_retimed_register("y"));
  lines.clear();
  EXPECT_FALSE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.of_t("y"), "a~ -> x~y");
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_INVERSES, "Merged registers: x <- y"));
}

TEST_F(Merging, StateRegisterBehindTheFirstIsRefusedSilently) {
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  EXPECT_FALSE(db->set_merged_registers("z", "y"));
  EXPECT_THAT(lines.debug(), ElementsAre("Merged registers: z <- y"));
  EXPECT_EQ(db.of_t("y"), "a~ -> x~|y~");
}

TEST_F(Merging, RegisterMergedWithItselfLeavesMapIndexAndSet) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_TRUE(db->set_merged_registers("x", "x"));
  EXPECT_EQ(db.t_names(), "");
  EXPECT_EQ(db.of_r("a"), "a~ -> ~");
  EXPECT_THAT(lines.debug(), ElementsAre("Merged registers: x <- x"));
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

TEST_F(Merging, StateRegisterMergedWithItselfIsRefused) {
  ASSERT_TRUE(db.fsm("a", "x", {"0 0", "1 1"}));
  EXPECT_FALSE(db->set_merged_registers("x", "x"));
  EXPECT_EQ(db.of_t("x"), "a~ -> x~");
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_TWO_MACHINES, "Merged registers: x <- x"));
}

TEST_F(Merging, MergeWithAMachineIsRecordedInItsTable) {
  ASSERT_TRUE(db.fsm("a", "x y", {"0 01", "1 10"}));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  EXPECT_TRUE(db->set_merged_registers("x", "z"));
  EXPECT_EQ(db.of_r("b"), "a~|b~ -> x~|y~|~");
  EXPECT_EQ(db.t_names(), "x y");
  EXPECT_THAT(lines.debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE, "Merged registers: x <- z"));
}

// --- inverter retiming ---

TEST_F(InverterRetiming, RegisterTurnsItsPolarity) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_TRUE(db->set_inverter_retimed_register("x"));
  const KPT_REGISTER_TRANSFORMATION map = db->get_transformed_register_transformation("x");
  EXPECT_TRUE(map.is_negative_unate(0, 0));
  EXPECT_FALSE(map.is_positive_unate(0, 0));
  EXPECT_TRUE(db->set_inverter_retimed_register("x"));
  EXPECT_TRUE(map.is_positive_unate(0, 0));
  EXPECT_THAT(lines.debug(), ElementsAre("Inverter retimed register x", "Inverter retimed register x"));
}

TEST_F(InverterRetiming, UnknownRegisterIsRefused) {
  EXPECT_FALSE(db->set_inverter_retimed_register("x"));
  EXPECT_THAT(lines.debug(), ElementsAre("Error: Can't find x in T set"));
}

TEST_F(InverterRetiming, RegisterWithoutAMapIsRefused) {
  db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1, "x");
  EXPECT_FALSE(db->set_inverter_retimed_register("x"));
  EXPECT_THAT(lines.debug(), ElementsAre("Inverter retimed register x"));
}

TEST_F(InverterRetiming, StateRegisterBehindTheFirstIsRefused) {
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  EXPECT_FALSE(db->set_inverter_retimed_register("y"));
  EXPECT_THAT(lines.debug(), ElementsAre("Inverter retimed register y", NOT_FOUND_TO_RETIME));
}

TEST_F(InverterRetiming, StateTableFollowsTheRepresentative) {
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  EXPECT_TRUE(db->set_inverter_retimed_register("x"));
  EXPECT_EQ(states_of(db.t_map("x")->state_table()), (STATES{"0 10", "1 01"}));
  EXPECT_EQ(db.of_t("x"), "a~ -> ~x|y~");
}

// --- elimination ---

TEST_F(Elimination, StuckAtZeroIsKeptInTheMap) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  EXPECT_TRUE(db->set_eliminated_register_stuck_at_zero("q"));
  EXPECT_EQ(db.t_names(), "");
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("a");
  EXPECT_TRUE(map.is_stuck_at_zero());
  EXPECT_FALSE(map.is_stuck_at_one());
  EXPECT_TRUE(map.get_transformed(0).is_null());
  EXPECT_TRUE(db->get_transformed_register_transformation("q").is_null());
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register stuck_at_zero q"));
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

TEST_F(Elimination, StuckAtOneIsKeptInTheMap) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  EXPECT_TRUE(db->set_eliminated_register_stuck_at_one("q"));
  EXPECT_TRUE(db->get_reference_register_transformation("a").is_stuck_at_one());
  EXPECT_EQ(db.t_names(), "");
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register stuck_at_one q"));
}

TEST_F(Elimination, NoFanoutIsKeptInTheMap) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  EXPECT_TRUE(db->set_eliminated_register_no_fanout("q"));
  EXPECT_TRUE(db->get_reference_register_transformation("a").has_no_fanout());
  EXPECT_EQ(db.t_names(), "");
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register no_fanout q"));
}

TEST_F(Elimination, WithoutAReasonIsRefusedAndTheRegisterStays) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  EXPECT_FALSE(db->set_eliminated_register("q"));
  EXPECT_EQ(db.t_names(), "q");
  EXPECT_EQ(db.of_r("a"), "a~ -> q~");
  EXPECT_EQ(db.of_t("q"), "none");
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register q"));
}

TEST_F(Elimination, UnknownRegisterIsRefusedBehindTheLine) {
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_zero("q"));
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_one("q"));
  EXPECT_FALSE(db->set_eliminated_register_no_fanout("q"));
  EXPECT_FALSE(db->set_eliminated_register("q"));
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register stuck_at_zero q", "Eliminated register stuck_at_one q",
                                         "Eliminated register no_fanout q", "Eliminated register q"));
}

TEST_F(Elimination, SecondTimeIsRefused) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  ASSERT_TRUE(db->set_eliminated_register_stuck_at_zero("q"));
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_zero("q"));
  EXPECT_TRUE(db->get_reference_register_transformation("a").is_stuck_at_zero());
}

TEST_F(Elimination, RegisterWithoutAMapIsRefusedAndStays) {
  db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1, "q");
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_zero("q"));
  EXPECT_EQ(db.t_names(), "q");
}

TEST_F(Elimination, OneOfTwoReplicasWithoutFanoutLeavesTheStatus) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  ASSERT_TRUE(db->set_replicated_registers("q", "r"));
  EXPECT_TRUE(db->set_eliminated_register_no_fanout("q"));
  EXPECT_EQ(db.of_t("r"), "a~ -> r~");
  EXPECT_FALSE(db->get_reference_register_transformation("a").has_no_fanout());
}

TEST_F(Elimination, OneOfTwoReplicasThatIsStuckSetsTheStatus) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  ASSERT_TRUE(db->set_replicated_registers("q", "r"));
  EXPECT_TRUE(db->set_eliminated_register_stuck_at_one("q"));
  EXPECT_TRUE(db->get_transformed_register_transformation("r").is_stuck_at_one());
}

TEST_F(Elimination, StateRegisterBehindTheFirstIsRefusedAndStays) {
  ASSERT_TRUE(db.fsm("a", "x y", {"0 00", "1 11"}));
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_one("y"));
  EXPECT_EQ(db.t_names(), "x y");
  EXPECT_EQ(db.of_t("y"), "none");
  EXPECT_THAT(lines.debug(), ElementsAre("Eliminated register stuck_at_one y", NOT_FOUND_TO_ELIMINATE));
}

TEST_F(Elimination, KindIsTakenAsItIsWithoutALine) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "q"));
  EXPECT_TRUE(db.impl().set_eliminated_register("q", KPT_NO_FANOUT));
  EXPECT_TRUE(db->get_reference_register_transformation("a").has_no_fanout());
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "r"));
  EXPECT_FALSE(db.impl().set_eliminated_register("r", KPT_NOT_ELIMINATED));
  EXPECT_EQ(db.t_names(), "r");
  EXPECT_FALSE(db.impl().set_eliminated_register("r", static_cast<KPT_ELIM_ENUM>(-1)));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// --- all events ---

TEST_F(Recording, InstancesAreNotFoundByNameAlone) {
  ASSERT_TRUE(db->associate_registers_signal_to_instance("a", "u", "E", "t"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "x"));
  EXPECT_FALSE(db->set_replicated_registers("u", "v"));
  EXPECT_FALSE(db->set_merged_registers("u", "x"));
  EXPECT_FALSE(db->set_merged_registers("x", "u"));
  EXPECT_FALSE(db->set_inverter_retimed_register("u"));
  EXPECT_FALSE(db->set_eliminated_register_stuck_at_zero("u"));
  EXPECT_THAT(lines.debug(),
              ElementsAre("u does not exist in T", "Error: Can't find u in T set", "Error: Can't find u in T set",
                          "Error: Can't find u in T set", "Eliminated register stuck_at_zero u"));
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> u~", "b~ -> x~"));
}

TEST_F(Recording, LinesGoOutUnderTheLibrarysTag) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  db->set_replicated_registers("x", "y");
  db->set_inverter_retimed_register("x");
  db->set_merged_registers("x", "y");
  db->set_eliminated_register("x");
  EXPECT_EQ(lines.tags().size(), lines.debug().size());
  EXPECT_THAT(lines.tags(), Each("KPT"));
  EXPECT_THAT(lines.errors(), IsEmpty());
  EXPECT_TRUE(lines.internal_errors().empty());
}

TEST_F(Recording, NamesAreNotTakenForFormats) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "%s%n%d"));
  EXPECT_TRUE(db->set_inverter_retimed_register("%s%n%d"));
  EXPECT_THAT(lines.debug(), ElementsAre("Inverter retimed register %s%n%d"));
}

// Names are views, which need not end where the text that contains them ends.
TEST_F(Recording, NamesMayBePartsOfLongerTexts) {
  const std::string text = "a,x,y,";
  const std::string_view a = std::string_view(text).substr(0, 1);
  const std::string_view x = std::string_view(text).substr(2, 1);
  const std::string_view y = std::string_view(text).substr(4, 1);
  ASSERT_TRUE(db->associate_registers_signal_to_signal(a, x));
  EXPECT_TRUE(db->set_replicated_registers(x, y));
  EXPECT_TRUE(db->set_merged_registers(x, y));
  EXPECT_TRUE(db->set_inverter_retimed_register(x));
  EXPECT_TRUE(db->set_eliminated_register_no_fanout(x));
  EXPECT_THAT(lines.debug(), ElementsAre("Replicated register: y is a replicate of x", "Merged registers: x <- y",
                                         "Inverter retimed register x", "Eliminated register no_fanout x"));
}

// A name may be the text of the very register that the event deletes.
TEST_F(Recording, NamesMayComeFromTheRegistersThemselves) {
  const std::string longer = "a name that is too long to be kept in place";
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_replicated_registers("x", longer));
  ASSERT_TRUE(db->set_replicated_registers("x", longer + "2"));
  lines.clear();
  EXPECT_TRUE(db->set_merged_registers(db.t("x")->get_element_name(), db.t(longer)->get_element_name()));
  EXPECT_TRUE(db->set_eliminated_register_no_fanout(db.t(longer + "2")->get_element_name()));
  EXPECT_EQ(db.t_names(), "x");
  EXPECT_THAT(lines.debug(),
              ElementsAre("Merged registers: x <- " + longer, "Eliminated register no_fanout " + longer + "2"));
}

// Deleted registers keep their texts for the maps that list them.
TEST_F(Recording, MapNamesARegisterThatWasOverwritten) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1000, "x");
  EXPECT_EQ(db.of_r("a"), "a~ -> x~");
  EXPECT_EQ(db.of_t("x"), "none");
  EXPECT_NE(db.r_map("a")->get_t_representative(0), db.t("x"));
  EXPECT_FALSE(db->set_inverter_retimed_register("x"));
}

// Registers are added and deleted, but no later one is ever taken for an earlier one.
TEST_F(Recording, AddressOfADeletedRegisterIsNeverGivenToAnother) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->set_replicated_registers("x", "gone"));
  const KPT_KEYPOINT* gone = db.t("gone");
  ASSERT_TRUE(db->set_merged_registers("x", "gone"));
  for (int n = 0; n < 500; ++n) {
    ASSERT_TRUE(db->set_replicated_registers("x", "next"));
    ASSERT_NE(db.t("next"), gone);
    ASSERT_TRUE(db->set_merged_registers("x", "next"));
  }
  EXPECT_EQ(gone->get_element_name(), "gone");
}

TEST_F(Recording, SameCallsGiveTheSameRegistersAndMaps) {
  const auto record = [](const DATABASE& into) {
    for (int n = 0; n < 300; ++n) {
      const std::string name = std::to_string(n * 7919 % 1000);
      into->associate_registers_signal_to_signal("r" + name, "t" + name);
      into->associate_registers_instance_to_signal("u" + name, "E", "t", "s" + name);
      into->set_replicated_registers("t" + name, "c" + name);
      if (n % 3 == 0) {
        into->set_merged_registers("t" + name, "s" + name);
      }
    }
  };
  const DATABASE first;
  const DATABASE second;
  record(first);
  record(second);
  EXPECT_EQ(first.r_names(), second.r_names());
  EXPECT_EQ(first.t_names(), second.t_names());
  EXPECT_EQ(first.maps(), second.maps());
}

}  // namespace
