#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "tests/support/host_lines.h"
#include "tests/support/map_fixture.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

const STATES IDENTITY{"0 0", "1 1"};
constexpr unsigned long BEYOND[] = {1, 2, 65535, 65536, std::numeric_limits<unsigned long>::max()};

class TransformationStructure : public kpt_test::MAP_TEST {};

// --- construction ---

TEST_F(TransformationStructure, AOneToOneMapListsItsTwoRegisters) {
  const MAP map(k["r"], k["t"]);
  EXPECT_EQ(text_of(map), "r~ -> t~");
  EXPECT_EQ(map.get_num_reference_registers(), 1);
  EXPECT_EQ(map.get_num_transformed_registers(), 1);
  EXPECT_EQ(map.get_r_representative(0), k["r"]);
  EXPECT_EQ(map.get_t_representative(0), k["t"]);
  EXPECT_FALSE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_number_of_states(), 2);
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_EQ(states_of(map.get_register_state_table()), IDENTITY);
  EXPECT_EQ(map.get_attribute("any"), "");
}

TEST_F(TransformationStructure, AOneToOneMapMayListNullKeypoints) {
  const MAP map(nullptr, nullptr);
  EXPECT_EQ(text_of(map), "null~ -> null~");
  EXPECT_EQ(map.get_r_representative(0), nullptr);
  EXPECT_TRUE(map.r_representative_is_in_n_group_of_map(0));
}

TEST_F(TransformationStructure, StateMachineFromListsHasAnIndexPerRegister) {
  const STATES states{"000 00", "010 01", "111 10"};
  const MAP map(k.list("a b c"), k.list("x y"), make_table(states));
  EXPECT_EQ(text_of(map), "a~|b~|c~ -> x~|y~");
  EXPECT_TRUE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_EQ(map.get_number_of_states(), 3);
  EXPECT_EQ(states_of(map.get_register_state_table()), states);
}

TEST_F(TransformationStructure, StateMachineCopiesItsTable) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 0", "1 1"});
  const MAP map(k.list("a"), k.list("x"), table);
  table.set_reference_entry(1, 1, true);
  EXPECT_EQ(states_of(map.get_register_state_table()), IDENTITY);
}

TEST_F(TransformationStructure, StateMachineOfEmptyListsHasNoIndices) {
  const MAP map(KPT_KEYPOINT_LIST(), KPT_KEYPOINT_LIST(), KPT_STATE_TABLE_IMPL(0, 0, 0));
  EXPECT_EQ(text_of(map), " -> ");
  EXPECT_EQ(map.get_num_reference_registers(), 0);
  EXPECT_EQ(map.get_num_transformed_registers(), 0);
  EXPECT_EQ(map.get_number_of_states(), 0);
}

TEST_F(TransformationStructure, FromVectorsCopiesEveryGroupInOrder) {
  const NI_PAIR_VECTOR r = k.side("a b~c|~d");
  const NI_PAIR_VECTOR t = k.side("x~y z|~");
  const MAP map(r, t, KPT_STUCK_AT_ONE);
  EXPECT_EQ(text_of(map), "a b~c|~d -> x~y z|~");
  EXPECT_FALSE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_EQ(states_of(map.get_register_state_table()), IDENTITY);
  EXPECT_EQ(text_of(r), "a b~c|~d");
}

TEST_F(TransformationStructure, FromVectorsWithATable) {
  const STATES states{"00 1", "01 0"};
  const MAP map(k.side("a~|b~"), k.side("~x"), make_table(states), KPT_NO_FANOUT);
  EXPECT_EQ(text_of(map), "a~|b~ -> ~x");
  EXPECT_TRUE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(states_of(map.get_register_state_table()), states);
}

TEST_F(TransformationStructure, FromVectorsThatAreCopied) {
  const NI_PAIR_VECTOR side = k.side("a~|b~");
  const KPT_STATE_TABLE_IMPL table = make_table({"00 11"});
  const MAP map(side, side, table, KPT_ELIMINATED);
  EXPECT_EQ(text_of(map), "a~|b~ -> a~|b~");
  EXPECT_TRUE(map.state_table() == table);
}

TEST_F(TransformationStructure, AStatusOutsideTheListIsKept) {
  EXPECT_EQ(MAP(k.side("a~"), k.side("x~"), static_cast<KPT_ELIM_ENUM>(-7)).get_elim_status(), -7);
}

// --- copies ---

TEST_F(TransformationStructure, ACopyHasTheSameGroupsTableAndStatus) {
  const STATES states{"00 1", "01 0"};
  const MAP map(k.side("a b~c|d~"), k.side("~x"), make_table(states), KPT_STUCK_AT_ZERO);
  MAP copy(map);
  EXPECT_EQ(text_of(copy), "a b~c|d~ -> ~x");
  EXPECT_TRUE(copy.map_has_fsm_transformation());
  EXPECT_EQ(copy.get_elim_status(), KPT_STUCK_AT_ZERO);
  EXPECT_EQ(states_of(copy.get_register_state_table()), states);
  EXPECT_TRUE(copy == map);
  EXPECT_TRUE(copy.add_attribute("pass", "retime"));
  EXPECT_EQ(map.get_attribute("pass"), "");
}

TEST_F(TransformationStructure, ACopyIsIndependent) {
  MAP map = fsm("a~", "x~", {"0 0", "1 1"});
  MAP copy(map);
  copy.set_inverter_retimed_register(k["x"]);
  copy.add_keypoint_to_r_n_group_of_map(k["b"], 0);
  EXPECT_EQ(text_of(map), "a~ -> x~");
  EXPECT_EQ(states_of(map.get_register_state_table()), IDENTITY);
  EXPECT_EQ(text_of(copy), "a b~ -> ~x");
  EXPECT_EQ(states_of(copy.get_register_state_table()), (STATES{"0 1", "1 0"}));
}

TEST_F(TransformationStructure, ACopyOfAPlainMapKeepsTheTableThatAUnionLeftIt) {
  MAP map(k["a"], k["x"]);
  ASSERT_TRUE(map.update_state_table(1, 1));
  const MAP copy(map);
  EXPECT_FALSE(copy.map_has_fsm_transformation());
  EXPECT_EQ(states_of(copy.get_register_state_table()), (STATES{"0 ", "1 "}));
}

// --- equality ---

TEST_F(TransformationStructure, MapsThatListTheSameAreEqual) {
  EXPECT_TRUE(plain("a b~c", "x~") == plain("a b~c", "x~"));
  EXPECT_TRUE(fsm("a~", "x~", {"0 0"}) == fsm("a~", "x~", {"0 0"}));
  EXPECT_TRUE(plain("", "") == plain("", ""));
}

TEST_F(TransformationStructure, MapsDifferInKindTableIndicesGroupsOrderAndKeypoints) {
  const MAP map = fsm("a b~|c~", "x~y", {"0 0", "1 1"});
  EXPECT_TRUE(map == fsm("a b~|c~", "x~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == plain("a b~|c~", "x~y"));
  EXPECT_FALSE(map == fsm("a b~|c~", "x~y", {"0 0", "1 0"}));
  EXPECT_FALSE(map == fsm("a b~|c~|~", "x~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("a b~|c~", "x~y|~", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("b a~|c~", "x~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("a~b|c~", "x~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("a b b~|c~", "x~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("a b~|c~", "z~y", {"0 0", "1 1"}));
  EXPECT_FALSE(map == fsm("a b~|c~", "x~z", {"0 0", "1 1"}));
}

TEST_F(TransformationStructure, KeypointsOfOneNameAreStillTwo) {
  EXPECT_FALSE(MAP(k["a"], k["x"]) == MAP(k.another("a"), k["x"]));
}

TEST_F(TransformationStructure, APlainMapWithATableOfItsOwnEqualsOneWithTheSharedTableWhileTheyAreAlike) {
  MAP map(k["a"], k["x"]);
  MAP other(map);
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  ASSERT_TRUE(other.update_transformations(fsm("a~", "x~", {"0 0", "1 1"}), entered, left));
  ASSERT_TRUE(other.update_transformations(map, entered, left));
  EXPECT_TRUE(map == other);
  ASSERT_TRUE(other.update_state_table(1, 1));
  EXPECT_FALSE(map == other);
}

// --- counts ---

TEST_F(TransformationStructure, NumberOfStatesIsTwoWithoutAStateMachine) {
  EXPECT_EQ(plain("a~|b~|c~", "x~").get_number_of_states(), 2);
  EXPECT_EQ(fsm("a~", "x~", {"0 0", "0 0", "1 1"}).get_number_of_states(), 3);
  MAP map(k["a"], k["x"]);
  ASSERT_TRUE(map.update_state_table(1, 2));
  EXPECT_EQ(map.get_number_of_states(), 2);
}

TEST_F(TransformationStructure, CountsOfIndicesAreNumbersOf16Bits) {
  MAP map(NI_PAIR_VECTOR(65536), NI_PAIR_VECTOR(65537), KPT_NOT_ELIMINATED);
  EXPECT_EQ(map.get_num_reference_registers(), 0);
  EXPECT_EQ(map.get_num_transformed_registers(), 1);
  map.r_vec()[65535].first.push_back(k["a"]);
  EXPECT_EQ(map.get_r_n_first(65535), k["a"]);
  EXPECT_EQ(map.get_r_representative(65535), k["a"]);
}

// --- representatives and groups ---

TEST_F(TransformationStructure, FirstOfEachGroup) {
  const MAP map = plain("a b~c d|~", "w x~y z|~");
  EXPECT_EQ(map.get_r_n_first(0), k["a"]);
  EXPECT_EQ(map.get_r_i_first(0), k["c"]);
  EXPECT_EQ(map.get_t_n_first(0), k["w"]);
  EXPECT_EQ(map.get_t_i_first(0), k["y"]);
  EXPECT_EQ(map.get_r_n_first(1), nullptr);
  EXPECT_EQ(map.get_r_i_first(1), nullptr);
  EXPECT_EQ(map.get_t_n_first(1), nullptr);
  EXPECT_EQ(map.get_t_i_first(1), nullptr);
}

TEST_F(TransformationStructure, TheRepresentativeIsNFirstElseIFirstElseNone) {
  const MAP map = plain("a~b|~c d|~", "~x|y~|~");
  EXPECT_EQ(map.get_r_representative(0), k["a"]);
  EXPECT_EQ(map.get_r_representative(1), k["c"]);
  EXPECT_EQ(map.get_r_representative(2), nullptr);
  EXPECT_EQ(map.get_t_representative(0), k["x"]);
  EXPECT_EQ(map.get_t_representative(1), k["y"]);
  EXPECT_EQ(map.get_t_representative(2), nullptr);
  EXPECT_EQ(map.get_representative_kp(KPT_REFERENCE_SET, 1), k["c"]);
  EXPECT_EQ(map.get_representative_kp(KPT_TRANSFORMED_SET, 1), k["y"]);
}

TEST_F(TransformationStructure, ANullThatLeadsTheNGroupIsTheRepresentative) {
  const MAP map = plain("null a~b", "~null x");
  EXPECT_EQ(map.get_r_representative(0), nullptr);
  EXPECT_TRUE(map.r_representative_is_in_n_group_of_map(0));
  EXPECT_EQ(map.get_t_representative(0), nullptr);
  EXPECT_TRUE(map.t_representative_is_in_i_group_of_map(0));
}

TEST_F(TransformationStructure, TheRepresentativeOfAnUnknownSideIsNoneWithAMessage) {
  HOST_LINES lines;
  const MAP map(k["a"], k["x"]);
  EXPECT_EQ(map.get_representative_kp(static_cast<KPT_SET_ENUM>(2), 0), nullptr);
  EXPECT_EQ(map.get_representative_kp(static_cast<KPT_SET_ENUM>(-1), 0), nullptr);
  EXPECT_THAT(lines.debug(), ElementsAre("Error: unknown set type", "Error: unknown set type"));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT", "KPT"));
}

TEST_F(TransformationStructure, TheGroupOfTheRepresentative) {
  const MAP map = plain("a~b|~c|~", "~x|y~z|~");
  EXPECT_TRUE(map.r_representative_is_in_n_group_of_map(0));
  EXPECT_FALSE(map.r_representative_is_in_i_group_of_map(0));
  EXPECT_FALSE(map.r_representative_is_in_n_group_of_map(1));
  EXPECT_TRUE(map.r_representative_is_in_i_group_of_map(1));
  EXPECT_FALSE(map.r_representative_is_in_n_group_of_map(2));
  EXPECT_FALSE(map.r_representative_is_in_i_group_of_map(2));
  EXPECT_FALSE(map.t_representative_is_in_n_group_of_map(0));
  EXPECT_TRUE(map.t_representative_is_in_i_group_of_map(0));
  EXPECT_TRUE(map.t_representative_is_in_n_group_of_map(1));
  EXPECT_FALSE(map.t_representative_is_in_i_group_of_map(1));
  EXPECT_FALSE(map.t_representative_is_in_n_group_of_map(2));
  EXPECT_FALSE(map.t_representative_is_in_i_group_of_map(2));
}

TEST_F(TransformationStructure, AKeypointIsLookedForInOneGroupOfOneIndex) {
  const MAP map = plain("a b~c|d~", "x~y null|~z");
  EXPECT_TRUE(map.keypoint_is_in_r_n_group_of_map(k["b"], 0));
  EXPECT_FALSE(map.keypoint_is_in_r_n_group_of_map(k["c"], 0));
  EXPECT_FALSE(map.keypoint_is_in_r_n_group_of_map(k["d"], 0));
  EXPECT_TRUE(map.keypoint_is_in_r_n_group_of_map(k["d"], 1));
  EXPECT_TRUE(map.keypoint_is_in_r_i_group_of_map(k["c"], 0));
  EXPECT_FALSE(map.keypoint_is_in_r_i_group_of_map(k["a"], 0));
  EXPECT_TRUE(map.keypoint_is_in_t_n_group_of_map(k["x"], 0));
  EXPECT_FALSE(map.keypoint_is_in_t_n_group_of_map(k["y"], 0));
  EXPECT_TRUE(map.keypoint_is_in_t_i_group_of_map(k["y"], 0));
  EXPECT_TRUE(map.keypoint_is_in_t_i_group_of_map(nullptr, 0));
  EXPECT_FALSE(map.keypoint_is_in_t_n_group_of_map(nullptr, 0));
  EXPECT_TRUE(map.keypoint_is_in_t_i_group_of_map(k["z"], 1));
}

TEST_F(TransformationStructure, AddingAppendsToOneGroup) {
  MAP map = plain("a~b|~", "x~y|~");
  EXPECT_TRUE(map.add_keypoint_to_r_n_group_of_map(k["c"], 0));
  EXPECT_TRUE(map.add_keypoint_to_r_i_group_of_map(k["d"], 0));
  EXPECT_TRUE(map.add_keypoint_to_t_n_group_of_map(k["z"], 1));
  EXPECT_TRUE(map.add_keypoint_to_t_i_group_of_map(nullptr, 1));
  EXPECT_EQ(text_of(map), "a c~b d|~ -> x~y|z~null");
}

TEST_F(TransformationStructure, AddingTwiceStoresTwiceAndDeletingRemovesTheFirst) {
  MAP map = plain("r~", "a b~");
  EXPECT_TRUE(map.add_keypoint_to_t_n_group_of_map(k["a"], 0));
  EXPECT_EQ(text_of(map.t_vec()), "a b a~");
  EXPECT_TRUE(map.delete_keypoint_from_t_n_group_of_map(k["a"], 0));
  EXPECT_EQ(text_of(map.t_vec()), "b a~");
}

TEST_F(TransformationStructure, DeletingWhatIsNotThereIsFalse) {
  MAP map = plain("r~", "a null~b|c~d");
  EXPECT_FALSE(map.delete_keypoint_from_t_n_group_of_map(k["b"], 0));
  EXPECT_FALSE(map.delete_keypoint_from_t_i_group_of_map(k["a"], 0));
  EXPECT_FALSE(map.delete_keypoint_from_t_i_group_of_map(nullptr, 0));
  EXPECT_FALSE(map.delete_keypoint_from_t_n_group_of_map(k["r"], 0));
  EXPECT_TRUE(map.delete_keypoint_from_t_n_group_of_map(nullptr, 0));
  EXPECT_TRUE(map.delete_keypoint_from_t_i_group_of_map(k["d"], 1));
  EXPECT_EQ(text_of(map), "r~ -> a~b|c~");
}

TEST_F(TransformationStructure, AnIndexBeyondASideReadsAsAnEmptyPairAndChangesNothing) {
  const HOST_LINES lines;
  for (const char* side : {"a~b", ""}) {
    MAP map = plain(side, side);
    const std::string before = text_of(map);
    for (const unsigned long index : BEYOND) {
      EXPECT_EQ(map.get_r_n_first(index), nullptr);
      EXPECT_EQ(map.get_r_i_first(index), nullptr);
      EXPECT_EQ(map.get_t_n_first(index), nullptr);
      EXPECT_EQ(map.get_t_i_first(index), nullptr);
      EXPECT_EQ(map.get_representative_kp(KPT_REFERENCE_SET, index), nullptr);
      EXPECT_EQ(map.get_representative_kp(KPT_TRANSFORMED_SET, index), nullptr);
      EXPECT_FALSE(map.r_representative_is_in_n_group_of_map(index));
      EXPECT_FALSE(map.r_representative_is_in_i_group_of_map(index));
      EXPECT_FALSE(map.t_representative_is_in_n_group_of_map(index));
      EXPECT_FALSE(map.t_representative_is_in_i_group_of_map(index));
      for (KPT_KEYPOINT* keypoint : {static_cast<KPT_KEYPOINT*>(k["a"]), static_cast<KPT_KEYPOINT*>(nullptr)}) {
        EXPECT_FALSE(map.keypoint_is_in_r_n_group_of_map(keypoint, index));
        EXPECT_FALSE(map.keypoint_is_in_r_i_group_of_map(keypoint, index));
        EXPECT_FALSE(map.keypoint_is_in_t_n_group_of_map(keypoint, index));
        EXPECT_FALSE(map.keypoint_is_in_t_i_group_of_map(keypoint, index));
        EXPECT_FALSE(map.add_keypoint_to_r_n_group_of_map(keypoint, index));
        EXPECT_FALSE(map.add_keypoint_to_r_i_group_of_map(keypoint, index));
        EXPECT_FALSE(map.add_keypoint_to_t_n_group_of_map(keypoint, index));
        EXPECT_FALSE(map.add_keypoint_to_t_i_group_of_map(keypoint, index));
        EXPECT_FALSE(map.delete_keypoint_from_t_n_group_of_map(keypoint, index));
        EXPECT_FALSE(map.delete_keypoint_from_t_i_group_of_map(keypoint, index));
      }
    }
    EXPECT_EQ(text_of(map), before);
  }
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// --- the index search ---

TEST_F(TransformationStructure, TheSearchFindsIndex0InEitherGroup) {
  const MAP map = plain("a~b", "x~y");
  for (const char* name : {"a", "b"}) {
    bool found = false;
    EXPECT_EQ(map.find_index_in_r_vector(k[name], &found), 0);
    EXPECT_TRUE(found);
  }
  for (const char* name : {"x", "y"}) {
    bool found = false;
    EXPECT_EQ(map.find_index_in_t_vector(k[name], &found), 0);
    EXPECT_TRUE(found);
  }
  bool found = false;
  EXPECT_EQ(map.find_index_in_t_vector(k["a"], &found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(map.find_index_in_r_vector(k["x"], &found), 0);
  EXPECT_FALSE(found);
}

TEST_F(TransformationStructure, TheSearchReportsRegistersOfFurtherIndicesAsNotFound) {
  const MAP map(k.list("a b c"), k.list("x y"), make_table({"000 00"}));
  bool found = false;
  EXPECT_EQ(map.find_index_in_r_vector(k["b"], &found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(map.find_index_in_r_vector(k["c"], &found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(map.find_index_in_t_vector(k["y"], &found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(map.find_index_in_r_vector(k["a"], &found), 0);
  EXPECT_TRUE(found);
}

TEST_F(TransformationStructure, AFlagThatIsSetAlreadyStaysSetAndNothingIsSearched) {
  const MAP map(k["a"], k["x"]);
  bool found = true;
  EXPECT_EQ(map.find_index_in_r_vector(k["elsewhere"], &found), 0);
  EXPECT_TRUE(found);
  EXPECT_EQ(map.find_index_in_t_vector(k["x"], &found), 0);
  EXPECT_TRUE(found);
}

TEST_F(TransformationStructure, TheSearchOfNullFindsAListedNull) {
  bool found = false;
  EXPECT_EQ(plain("a~null", "x~").find_index_in_r_vector(nullptr, &found), 0);
  EXPECT_TRUE(found);
  found = false;
  EXPECT_EQ(plain("a~null", "x~").find_index_in_t_vector(nullptr, &found), 0);
  EXPECT_FALSE(found);
}

TEST_F(TransformationStructure, TheSearchOfASideWithoutIndicesOrWithoutAFlag) {
  const MAP map = plain("", "x~");
  bool found = false;
  EXPECT_EQ(map.find_index_in_r_vector(k["x"], &found), 0);
  EXPECT_EQ(map.find_index_in_r_vector(nullptr, &found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(map.find_index_in_t_vector(k["x"], nullptr), 0);
}

// --- attributes ---

TEST_F(TransformationStructure, AttributesAreSetReplacedAndRemoved) {
  MAP map(k["a"], k["x"]);
  EXPECT_FALSE(map.remove_attribute("pass"));
  EXPECT_TRUE(map.add_attribute("pass", "retime"));
  EXPECT_TRUE(map.add_attribute("pass", "merge"));
  EXPECT_TRUE(map.add_attribute("Pass", ""));
  EXPECT_EQ(map.get_attribute("pass"), "merge");
  EXPECT_EQ(map.get_attribute("Pass"), "");
  EXPECT_EQ(map.get_attribute("PASS"), "");
  EXPECT_FALSE(map.remove_attribute("PASS"));
  EXPECT_TRUE(map.remove_attribute("pass"));
  EXPECT_FALSE(map.remove_attribute("pass"));
  EXPECT_TRUE(map.remove_attribute("Pass"));
}

// --- the library's own walks ---

TEST_F(TransformationStructure, TheWalkOfASideGoesIndexByIndexNThenI) {
  KPT_KEYPOINT_LIST walked;
  MAP::for_each_keypoint(k.side("a b~c|~|null~d a"), [&](KPT_KEYPOINT* keypoint) { walked.push_back(keypoint); });
  EXPECT_EQ(text_of(walked), "a b c null d a");
}

TEST_F(TransformationStructure, EveryPairOfAVeryLongSideIsWalkedOnce) {
  NI_PAIR_VECTOR side(70000);
  for (NI_PAIR& pair : side) {
    pair.second.push_back(k["a"]);
  }
  unsigned count = 0;
  MAP::for_each_keypoint(side, [&](KPT_KEYPOINT*) { ++count; });
  EXPECT_EQ(count, 70000U);
}

}  // namespace
