// The events that passes report through the handle: results, registers, maps, and
// the exact debug lines of every operation, in order.
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
using kpt_test::EMPTY_T_SIDE;
using kpt_test::index_differences;
using kpt_test::MERGE_OF_INVERSES;
using kpt_test::MERGE_OF_TWO_MACHINES;
using kpt_test::NOT_FOUND_TO_ELIMINATE;
using kpt_test::NOT_FOUND_TO_RETIME;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Recording = kpt_test::RECORDING;
using Replication = Recording;
using Merging = Recording;
using InverterRetiming = Recording;
using Elimination = Recording;

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

// A client may have renamed the registers through their handles.
TEST_F(Merging, LineSaysTheNamesThatTheCallHas) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  db.t("x")->set_element_name("renamed x");
  db.t("y")->set_element_name("renamed y");
  EXPECT_TRUE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.of_r("b"), "a b~ -> renamed x~");
  EXPECT_THAT(lines.debug(), testing::Contains("Merged registers: x <- y"));
}

TEST_F(Merging, TakesInAMapWithoutReferenceRegisters) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_FALSE(db->associate_groups({}, {KPT_GROUPS{{std::string_view("y")}, {}}}).is_null());
  EXPECT_TRUE(db->set_merged_registers("x", "y"));
  EXPECT_EQ(db.of_t("x"), "a~ -> x~");
  EXPECT_EQ(db.t_names(), "x");
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
