// The register events of a transformation set, and what they do to maps and indexes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::EMPTY_T_SIDE;
using kpt_test::HOST_LINES;
using kpt_test::index_differences;
using kpt_test::make_table;
using kpt_test::MERGE_OF_INVERSES;
using kpt_test::MERGE_OF_TWO_MACHINES;
using kpt_test::NOT_FOUND_TO_ELIMINATE;
using kpt_test::NOT_FOUND_TO_RETIME;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

class RegisterEvents : public testing::Test {
 protected:
  KPT_TRANSFORMATION_IMPL* plain(const std::string& r, const std::string& t,
                                 KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) {
    return set.add_map(k.side(r), k.side(t), status);
  }
  KPT_TRANSFORMATION_IMPL* machine(const std::string& r, const std::string& t, const STATES& states) {
    return set.add_map(k.side(r), k.side(t), make_table(states), KPT_NOT_ELIMINATED);
  }
  std::string of_r(const std::string& name) { return text_of(set.get_map_of_r_keypoint(k[name])); }
  std::string of_t(const std::string& name) { return text_of(set.get_map_of_t_keypoint(k[name])); }
  std::size_t num_maps() const { return set.get_list_of_register_transformations().size(); }

  kpt_test::REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  HOST_LINES lines;
};

using MergeKeypoints = RegisterEvents;
using DeleteMergedKeypoint = RegisterEvents;
using RetimeInverter = RegisterEvents;
using EliminateMap = RegisterEvents;

// --- merge_keypoints: which maps ---

TEST_F(MergeKeypoints, RegisterWithoutAMapIsRefusedSilently) {
  plain("a~", "x~");
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["none"]));
  EXPECT_FALSE(set.merge_keypoints(k["none"], k["x"]));
  EXPECT_FALSE(set.merge_keypoints(k["none"], k["none"]));
  EXPECT_FALSE(set.merge_keypoints(nullptr, k["x"]));
  EXPECT_FALSE(set.merge_keypoints(k["x"], nullptr));
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_EQ(of_t("x"), "a~ -> x~");
}

TEST_F(MergeKeypoints, TwoMachinesAreRefused) {
  machine("a~", "x~", {"0 0", "1 1"});
  machine("b~", "y~", {"0 0", "1 1"});
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_TWO_MACHINES));
  EXPECT_EQ(of_t("x"), "a~ -> x~");
  EXPECT_EQ(of_t("y"), "b~ -> y~");
  EXPECT_THAT(index_differences(set, {}), IsEmpty());
}

TEST_F(MergeKeypoints, OneMachineIsRefusedAsTwo) {
  machine("a~", "x y~", {"0 0", "1 1"});
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["x"]));
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_TWO_MACHINES, MERGE_OF_TWO_MACHINES));
  EXPECT_EQ(of_t("y"), "a~ -> x y~");
}

// --- merge_keypoints: between plain maps ---

TEST_F(MergeKeypoints, AbsorbedMapIsGoneAndTheSurvivorHasItsRegisters) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  plain("b~", "y~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(num_maps(), 1U);
  EXPECT_EQ(text_of(*a), "a b~ -> x~");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), a);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), a);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), a);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), nullptr);
  EXPECT_THAT(index_differences(set, {k["y"]}), IsEmpty());
}

TEST_F(MergeKeypoints, AbsorbedMapThatIsLeftEmptyIsReportedTwice) {
  plain("a~", "x~");
  plain("b~", "y~");
  set.merge_keypoints(k["x"], k["y"]);
  EXPECT_THAT(lines.debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE));
}

TEST_F(MergeKeypoints, OtherRegistersOfTheAbsorbedMapFollow) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  plain("b~c", "y z~w");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a b~c -> x z~w");
  EXPECT_THAT(lines.debug(), IsEmpty());
  for (const char* name : {"z", "w"}) {
    EXPECT_EQ(set.get_map_of_t_keypoint(k[name]), a) << name;
  }
  EXPECT_EQ(set.get_map_of_r_keypoint(k["c"]), a);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), nullptr);
}

TEST_F(MergeKeypoints, TwoInvertedRegistersMergeWithoutASwap) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "~x");
  plain("b~", "z~y");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a b~ -> z~x");
}

TEST_F(MergeKeypoints, InvertedRegisterIntoAPlainOneSwapsTheAbsorbedMap) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  plain("b~c", "z~y w");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a c~b -> x w~z");
  EXPECT_EQ(num_maps(), 1U);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), nullptr);
}

TEST_F(MergeKeypoints, PlainRegisterIntoAnInvertedOneSwapsTheAbsorbedMap) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "u~x");
  plain("b~", "y~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a~b -> u~x");
}

TEST_F(MergeKeypoints, SurvivorTakesTheStatusOfTheAbsorbedMap) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~", KPT_STUCK_AT_ONE);
  plain("b~", "y~", KPT_STUCK_AT_ZERO);
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(a->get_elim_status(), KPT_STUCK_AT_ZERO);
}

// A simple union takes the first pair; the absorbed map is deleted with the rest.
TEST_F(MergeKeypoints, FurtherPairsOfAPlainAbsorbedMapAreLost) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  plain("b~|c~", "y~|z~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a b~ -> x~");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["c"]), nullptr);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["z"]), nullptr);
  EXPECT_THAT(index_differences(set, {k["c"], k["z"]}), IsEmpty());
}

// The survivor has no pair to which the union could add. The union fails, its
// result is ignored, and the absorbed map is deleted anyway.
TEST_F(MergeKeypoints, FailedUnionIsPassedOver) {
  KPT_TRANSFORMATION_IMPL* a = plain("", "x~");
  plain("b~", "y~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(num_maps(), 1U);
  EXPECT_EQ(text_of(*a), " -> x~");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), nullptr);
}

TEST_F(MergeKeypoints, RegisterThatTheSurvivorListsTooIsEnteredAnew) {
  plain("b~", "y~");
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x y~");
  KPT_TRANSFORMATION_IMPL* b = plain("c~", "y~");
  ASSERT_EQ(set.get_map_of_t_keypoint(k["y"]), b);
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a c~ -> x y~");
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), a);
}

TEST_F(MergeKeypoints, RegisterOfAFurtherIndexIsRefusedAndNothingChanges) {
  plain("a~", "x~|y~");
  plain("b~", "z~");
  EXPECT_FALSE(set.merge_keypoints(k["y"], k["z"]));
  EXPECT_FALSE(set.merge_keypoints(k["z"], k["y"]));
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_EQ(of_t("y"), "a~ -> x~|y~");
  EXPECT_EQ(of_t("z"), "b~ -> z~");
  EXPECT_THAT(index_differences(set, {}), IsEmpty());
}

TEST_F(MergeKeypoints, RegisterThatItsMapDoesNotListIsRefused) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  plain("b~", "y~");
  set.record_replicated_keypoint_map(k["copy"], a);
  EXPECT_FALSE(set.merge_keypoints(k["y"], k["copy"]));
  EXPECT_FALSE(set.merge_keypoints(k["copy"], k["y"]));
  EXPECT_EQ(num_maps(), 2U);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["copy"]), a);
}

// --- merge_keypoints: with a machine ---

TEST_F(MergeKeypoints, PlainMapIntoAMachineFollowsTheMachinesRegisters) {
  KPT_TRANSFORMATION_IMPL* a = machine("a~", "x~", {"0 0", "1 1"});
  plain("b~", "y z~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a~|b~ -> x~|z~");
  EXPECT_TRUE(a->map_has_fsm_transformation());
  EXPECT_EQ(set.get_map_of_t_keypoint(k["z"]), a);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), a);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), nullptr);
}

TEST_F(MergeKeypoints, MachineIntoAPlainMapMakesItAMachine) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  machine("b~", "y~|z~", {"0 01", "1 10"});
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a~|b~ -> x~|~|z~");
  EXPECT_TRUE(a->map_has_fsm_transformation());
  EXPECT_EQ(num_maps(), 1U);
}

TEST_F(MergeKeypoints, MachineOfOppositePolarityIsSwappedWhole) {
  KPT_TRANSFORMATION_IMPL* a = plain("a~", "x~");
  machine("b~c|d~", "w~y|~z", {"00 00", "11 11"});
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*a), "a~|c~b|~d -> x~|~w|z~");
}

// --- merge_keypoints: within one map ---

TEST_F(MergeKeypoints, WithinOneGroupTheMergedRegisterLeavesMapAndIndex) {
  plain("a~", "x y z~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(of_t("x"), "a~ -> x z~");
  EXPECT_EQ(of_t("y"), "none");
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_THAT(index_differences(set, {k["y"]}), IsEmpty());
}

TEST_F(MergeKeypoints, WithinTheInvertedGroupToo) {
  plain("a~", "w~x y");
  EXPECT_TRUE(set.merge_keypoints(k["y"], k["x"]));
  EXPECT_EQ(of_t("y"), "a~ -> w~y");
  EXPECT_EQ(of_t("x"), "none");
}

TEST_F(MergeKeypoints, InversesWithinOneMapAreRefused) {
  plain("a~", "x~y");
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_FALSE(set.merge_keypoints(k["y"], k["x"]));
  EXPECT_THAT(lines.debug(), ElementsAre(MERGE_OF_INVERSES, MERGE_OF_INVERSES));
  EXPECT_EQ(of_t("y"), "a~ -> x~y");
}

// Registers of two pairs are never both found.
TEST_F(MergeKeypoints, DifferentPairsOfOneMapAreRefusedSilently) {
  plain("a~", "x~|y~");
  EXPECT_FALSE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_FALSE(set.merge_keypoints(k["y"], k["x"]));
  EXPECT_FALSE(set.merge_keypoints(k["y"], k["y"]));
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_EQ(of_t("y"), "a~ -> x~|y~");
}

TEST_F(MergeKeypoints, RegisterMergedWithItselfLeavesMapAndIndex) {
  plain("a~", "x~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["x"]));
  EXPECT_EQ(of_r("a"), "a~ -> ~");
  EXPECT_EQ(of_t("x"), "none");
  EXPECT_EQ(num_maps(), 1U);
}

TEST_F(MergeKeypoints, RegisterThatIsListedTwiceLeavesTheIndexWithItsFirstCell) {
  plain("a~", "x y y~");
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(of_t("x"), "a~ -> x y~");
  EXPECT_EQ(of_t("y"), "none");
}

// --- delete_merged_keypoint ---

TEST_F(DeleteMergedKeypoint, LeavesTheGroupNamedAndTheIndex) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x y~z|w~");
  EXPECT_TRUE(set.delete_merged_keypoint(map, k["y"], 0, true));
  EXPECT_TRUE(set.delete_merged_keypoint(map, k["z"], 0, false));
  EXPECT_TRUE(set.delete_merged_keypoint(map, k["w"], 1, true));
  EXPECT_EQ(text_of(*map), "a~ -> x~|~");
  for (const char* name : {"y", "z", "w"}) {
    EXPECT_EQ(of_t(name), "none") << name;
  }
}

TEST_F(DeleteMergedKeypoint, EntryGoesEvenWhenTheGroupDoesNotListIt) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~y");
  EXPECT_FALSE(set.delete_merged_keypoint(map, k["y"], 0, true));
  EXPECT_EQ(text_of(*map), "a~ -> x~y");
  EXPECT_EQ(of_t("y"), "none");
}

// A client may have changed a register's entry to another map, and then deleted that map.
TEST_F(DeleteMergedKeypoint, FalseWhenTheEntryLeadsToADeletedMap) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~");
  KPT_TRANSFORMATION_IMPL* later = set.add_map(k["b"], nullptr);
  set.record_replicated_keypoint_map(k["x"], later);
  set.delete_map(later);
  EXPECT_FALSE(set.delete_merged_keypoint(map, k["x"], 0, true));
  EXPECT_EQ(text_of(*map), "a~ -> ~");
}

TEST_F(DeleteMergedKeypoint, FalseWithoutAnEntryThoughItLeftTheGroup) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x x~");
  EXPECT_TRUE(set.delete_merged_keypoint(map, k["x"], 0, true));
  EXPECT_FALSE(set.delete_merged_keypoint(map, k["x"], 0, true));
  EXPECT_EQ(text_of(*map), "a~ -> ~");
}

TEST_F(DeleteMergedKeypoint, IndexBeyondTheMapDeletesTheEntryAlone) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~");
  EXPECT_FALSE(set.delete_merged_keypoint(map, k["x"], 1, true));
  EXPECT_EQ(text_of(*map), "a~ -> x~");
  EXPECT_EQ(of_t("x"), "none");
}

TEST_F(DeleteMergedKeypoint, NullMapOrKeypointIsFalse) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "null x~");
  EXPECT_FALSE(set.delete_merged_keypoint(nullptr, k["x"], 0, true));
  EXPECT_EQ(of_t("x"), "a~ -> null x~");
  EXPECT_FALSE(set.delete_merged_keypoint(map, nullptr, 0, true));
}

// --- set_inverter_retimed_register ---

TEST_F(RetimeInverter, MovesTheRegisterAndKeepsItsEntry) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~");
  EXPECT_TRUE(set.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(*map), "a~ -> ~x");
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), map);
  EXPECT_TRUE(map->association_is_negative_unate(0, 0));
  EXPECT_TRUE(set.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(*map), "a~ -> x~");
}

TEST_F(RetimeInverter, TurnsTheColumnOfAMachinesRepresentative) {
  KPT_TRANSFORMATION_IMPL* map = machine("a~", "x~|y~", {"0 01", "1 10"});
  EXPECT_TRUE(set.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(states_of(map->state_table()), (STATES{"0 11", "1 00"}));
}

TEST_F(RetimeInverter, RegisterWithoutAMapIsRefusedSilently) {
  EXPECT_FALSE(set.set_inverter_retimed_register(k["x"]));
  EXPECT_FALSE(set.set_inverter_retimed_register(nullptr));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(RetimeInverter, RegisterOfAFurtherIndexIsRefusedWithTheMapsLine) {
  plain("a~", "x~|y~");
  EXPECT_FALSE(set.set_inverter_retimed_register(k["y"]));
  EXPECT_THAT(lines.debug(), ElementsAre(NOT_FOUND_TO_RETIME));
  EXPECT_EQ(of_t("y"), "a~ -> x~|y~");
}

// --- set_eliminated_map ---

TEST_F(EliminateMap, RegisterLeavesTheIndexAndTheMapStays) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~");
  EXPECT_TRUE(set.set_eliminated_map(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), nullptr);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), map);
  EXPECT_EQ(text_of(*map), "a~ -> ~");
  EXPECT_EQ(map->get_elim_status(), KPT_STUCK_AT_ZERO);
  EXPECT_EQ(num_maps(), 1U);
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_THAT(index_differences(set, {k["x"]}), IsEmpty());
}

TEST_F(EliminateMap, EachReasonIsKept) {
  for (const KPT_ELIM_ENUM reason : {KPT_STUCK_AT_ZERO, KPT_STUCK_AT_ONE, KPT_NO_FANOUT}) {
    KPT_REGISTER_KEYPOINT_IMPL* x = k.another("x");
    KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], x);
    EXPECT_TRUE(set.set_eliminated_map(x, reason)) << reason;
    EXPECT_EQ(map->get_elim_status(), reason);
  }
}

TEST_F(EliminateMap, RegisterWithoutAMapIsRefusedSilently) {
  EXPECT_FALSE(set.set_eliminated_map(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_FALSE(set.set_eliminated_map(nullptr, KPT_STUCK_AT_ZERO));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(EliminateMap, EliminatedTwiceIsFalse) {
  plain("a~", "x y~");
  EXPECT_TRUE(set.set_eliminated_map(k["x"], KPT_NO_FANOUT));
  EXPECT_FALSE(set.set_eliminated_map(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(of_t("y"), "a~ -> y~");
}

TEST_F(EliminateMap, EntryGoesThoughTheMapRefuses) {
  for (const KPT_ELIM_ENUM reason : {KPT_NOT_ELIMINATED, KPT_ELIMINATED, static_cast<KPT_ELIM_ENUM>(9)}) {
    KPT_REGISTER_KEYPOINT_IMPL* x = k.another("x");
    KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], x);
    EXPECT_FALSE(set.set_eliminated_map(x, reason)) << reason;
    EXPECT_EQ(set.get_map_of_t_keypoint(x), nullptr) << reason;
    EXPECT_EQ(text_of(*map), "a~ -> x~") << reason;
    EXPECT_EQ(map->get_elim_status(), KPT_NOT_ELIMINATED) << reason;
  }
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(EliminateMap, RegisterOfAFurtherIndexIsRefusedAndLeavesTheIndex) {
  plain("a~", "x~|y~");
  EXPECT_FALSE(set.set_eliminated_map(k["y"], KPT_STUCK_AT_ONE));
  EXPECT_THAT(lines.debug(), ElementsAre(NOT_FOUND_TO_ELIMINATE));
  EXPECT_EQ(of_t("y"), "none");
  EXPECT_EQ(of_t("x"), "a~ -> x~|y~");
}

TEST_F(EliminateMap, LastStateRegisterThatIsStuckDropsItsPairButNotItsColumn) {
  KPT_TRANSFORMATION_IMPL* map = machine("a~", "x~|y~", {"0 01", "1 10"});
  EXPECT_TRUE(set.set_eliminated_map(k["x"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(*map), "a~ -> y~");
  EXPECT_EQ(states_of(map->state_table()), (STATES{"0 01", "1 10"}));
}

TEST_F(EliminateMap, LastStateRegisterWithoutFanoutDropsPairAndColumn) {
  KPT_TRANSFORMATION_IMPL* map = machine("a~", "x~|y~", {"0 01", "1 10"});
  EXPECT_TRUE(set.set_eliminated_map(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(*map), "a~ -> y~");
  EXPECT_EQ(states_of(map->state_table()), (STATES{"0 1", "1 0"}));
}

// Before the map is changed, it counts the registers of the index. Nothing is
// empty then, so no line is issued. A later walk over it issues the lines.
TEST_F(EliminateMap, MapThatIsLeftEmptyIsReportedWhenItIsDeleted) {
  KPT_TRANSFORMATION_IMPL* map = plain("a~", "x~");
  set.set_eliminated_map(k["x"], KPT_STUCK_AT_ZERO);
  EXPECT_THAT(lines.take_debug(), IsEmpty());
  set.delete_map(map);
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE));
  EXPECT_EQ(of_r("a"), "none");
}

}  // namespace
