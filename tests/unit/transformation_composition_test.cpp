#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/map_fixture.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::REFUSED_R_WRITE;
using kpt_test::REFUSED_T_WRITE;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

class TransformationComposition : public kpt_test::MAP_TEST {
 protected:
  HOST_LINES lines;
};

// --- copy_map ---

TEST_F(TransformationComposition, CopyingAppendsEveryPairOnBothSides) {
  MAP map = plain("a~b", "x~|~y");
  const MAP other = plain("c~|~d e|~", "~z", KPT_STUCK_AT_ONE);
  EXPECT_TRUE(map.copy_map(other));
  EXPECT_EQ(text_of(map), "a~b|c~|~d e|~ -> x~|~y|~z");
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_EQ(text_of(other), "c~|~d e|~ -> ~z");
}

TEST_F(TransformationComposition, CopyingToAndFromEmptySides) {
  MAP map = plain("", "x~");
  EXPECT_TRUE(map.copy_map(plain("a~", "")));
  EXPECT_EQ(text_of(map), "a~ -> x~");
  EXPECT_TRUE(map.copy_map(plain("", "")));
  EXPECT_EQ(text_of(map), "a~ -> x~");
}

TEST_F(TransformationComposition, AMapCopiedBehindItselfIsReadAsItWas) {
  MAP map = plain("a b~|c~", "x~y");
  EXPECT_TRUE(map.copy_map(map));
  EXPECT_EQ(text_of(map), "a b~|c~|a b~|c~ -> x~y|x~y");
}

TEST_F(TransformationComposition, AVeryLongMapIsCopiedPairByPair) {
  MAP map(NI_PAIR_VECTOR(40000), NI_PAIR_VECTOR(1), KPT_NOT_ELIMINATED);
  map.r_vec().back().first.push_back(k["a"]);
  EXPECT_TRUE(map.copy_map(MAP(map)));
  EXPECT_EQ(map.r_vec().size(), 80000U);
  EXPECT_EQ(map.get_r_n_first(39999), k["a"]);
  EXPECT_EQ(map.get_r_n_first(79999), k["a"]);
}

// --- make_simple_union ---

TEST_F(TransformationComposition, ASimpleUnionAddsTheFirstPairsGroupByGroupAndTakesTheStatus) {
  MAP map = plain("a~b", "x~y");
  EXPECT_TRUE(map.make_simple_union(plain("c d~e", "~z a", KPT_NO_FANOUT)));
  EXPECT_EQ(text_of(map), "a c d~b e -> x~y z a");
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
}

TEST_F(TransformationComposition, ASimpleUnionIntoAnEmptySideAddsWhatItCanAndKeepsTheStatus) {
  MAP map = plain("", "x~", KPT_STUCK_AT_ZERO);
  EXPECT_FALSE(map.make_simple_union(plain("a~b", "y~z", KPT_NO_FANOUT)));
  EXPECT_EQ(text_of(map), " -> x y~z");
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ZERO);
}

TEST_F(TransformationComposition, ASimpleUnionOfNothingSucceeds) {
  MAP map = plain("", "");
  EXPECT_TRUE(map.make_simple_union(plain("", "~", KPT_ELIMINATED)));
  EXPECT_EQ(text_of(map), " -> ");
  EXPECT_EQ(map.get_elim_status(), KPT_ELIMINATED);
}

TEST_F(TransformationComposition, AMapUnitedWithItselfIsReadAsItWas) {
  MAP map = plain("a b~c|d~", "x~");
  EXPECT_TRUE(map.make_simple_union(map));
  EXPECT_EQ(text_of(map), "a b a b~c c|d~ -> x x~");
  EXPECT_TRUE(map.make_union(map));
  EXPECT_EQ(text_of(map), "a b a b a b a b~c c c c|d~ -> x x x x~");
}

// --- make_union ---

TEST_F(TransformationComposition, TwoStateMachinesAreNotUnited) {
  MAP map = fsm("a~", "x~", {"0 0", "1 1"}, KPT_STUCK_AT_ONE);
  MAP other = fsm("b~", "y~", {"0 1", "1 0"}, KPT_NO_FANOUT);
  EXPECT_FALSE(map.make_union(other));
  EXPECT_FALSE(map.make_union(map));
  EXPECT_TRUE(map == fsm("a~", "x~", {"0 0", "1 1"}));
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_TRUE(other == fsm("b~", "y~", {"0 1", "1 0"}));
  EXPECT_THAT(lines.debug(), ElementsAre("Cannot unite 2 FSM transformations", "Cannot unite 2 FSM transformations"));
}

TEST_F(TransformationComposition, TwoPlainMapsAreUnitedByTheirFirstPairs) {
  MAP map = plain("a~|b~", "x~", KPT_STUCK_AT_ONE);
  EXPECT_TRUE(map.make_union(plain("c~|d~", "y~|z~", KPT_STUCK_AT_ZERO)));
  EXPECT_EQ(text_of(map), "a c~|b~ -> x y~");
  EXPECT_FALSE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ZERO);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, AStateMachineUnitedWithAPlainMap) {
  MAP map = fsm("a~|b~", "x~", {"00 0", "01 1", "11 0"}, KPT_STUCK_AT_ONE);
  const MAP other = plain("c~d", "y~", KPT_NO_FANOUT);
  const KPT_STATE_TABLE_IMPL product = map.state_table().cross_product_table(other.state_table());
  EXPECT_TRUE(map.make_union(other));
  EXPECT_EQ(text_of(map), "a~|b~|c~d -> x~|y~");
  EXPECT_TRUE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_number_of_states(), 6);
  EXPECT_TRUE(map.state_table() == product);
  EXPECT_EQ(states_of(product), (STATES{"000 00", "000 00", "100 00", "110 10", "000 00", "000 00"}));
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_FALSE(other.map_has_fsm_transformation());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, APlainMapUnitedWithAStateMachineBecomesOne) {
  MAP map = plain("a~", "x~");
  const MAP other = fsm("b~|c~", "y~|z~", {"01 10"}, KPT_STUCK_AT_ZERO);
  const KPT_STATE_TABLE_IMPL product = map.state_table().cross_product_table(other.state_table());
  EXPECT_TRUE(map.make_union(other));
  EXPECT_EQ(text_of(map), "a~|b~|c~ -> x~|y~|z~");
  EXPECT_TRUE(map.map_has_fsm_transformation());
  EXPECT_TRUE(map.state_table() == product);
  EXPECT_EQ(states_of(product), (STATES{"010 100", "010 100"}));
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ZERO);
}

TEST_F(TransformationComposition, AUnionWithATableWithoutColumnsTellsEveryRefusedEntry) {
  MAP map(k.side("a~"), k.side("x~"), KPT_STATE_TABLE_IMPL(1, 0, 0), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(map.make_union(plain("b~", "y~")));
  EXPECT_EQ(text_of(map), "a~|b~ -> x~|y~");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "0 0"}));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE, REFUSED_R_WRITE, REFUSED_T_WRITE, REFUSED_T_WRITE));
}

// --- align ---

TEST_F(TransformationComposition, AligningAgreeingRegistersSwapsNothing) {
  const MAP earlier = plain("a~", "m~n");
  MAP later = plain("m~n", "x~y");
  EXPECT_TRUE(later.align_r_register(k["m"], &earlier, k["m"]));
  EXPECT_TRUE(later.align_r_register(k["n"], &earlier, k["n"]));
  EXPECT_TRUE(earlier.align_t_register(k["m"], &later, k["m"]));
  EXPECT_TRUE(earlier.align_t_register(k["n"], &later, k["n"]));
  EXPECT_EQ(text_of(later), "m~n -> x~y");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, AligningDisagreeingRegistersSwapsEveryPairOfTheLaterMap) {
  MAP earlier = plain("a~", "m~n");
  MAP later = plain("n~m|o~", "x~y|~z");
  EXPECT_TRUE(later.align_r_register(k["m"], &earlier, k["m"]));
  EXPECT_EQ(text_of(later), "m~n|~o -> y~x|z~");
  EXPECT_EQ(text_of(earlier), "a~ -> m~n");
  EXPECT_TRUE(earlier.align_t_register(k["n"], &later, k["m"]));
  EXPECT_EQ(text_of(later), "n~m|o~ -> x~y|~z");
  EXPECT_EQ(text_of(earlier), "a~ -> m~n");
}

TEST_F(TransformationComposition, TheTwoKeypointsNeedNotBeOne) {
  MAP earlier = plain("a~", "m~");
  MAP later = plain("~n", "x~");
  EXPECT_TRUE(later.align_r_register(k["n"], &earlier, k["m"]));
  EXPECT_EQ(text_of(later), "n~ -> ~x");
  EXPECT_TRUE(earlier.align_t_register(k["m"], &later, k["n"]));
  EXPECT_EQ(text_of(later), "n~ -> ~x");
}

TEST_F(TransformationComposition, AligningAMissingKeypointIsRefusedAndChangesNothing) {
  MAP earlier = plain("a~|b~", "m~|n~");
  MAP later = plain("~m|~n", "x~");
  EXPECT_FALSE(later.align_r_register(k["n"], &earlier, k["m"]));
  EXPECT_FALSE(later.align_r_register(k["m"], &earlier, k["n"]));
  EXPECT_FALSE(later.align_r_register(k["x"], &earlier, k["a"]));
  EXPECT_FALSE(later.align_r_register(nullptr, &earlier, nullptr));
  EXPECT_FALSE(later.align_r_register(k["m"], nullptr, k["m"]));
  EXPECT_FALSE(earlier.align_t_register(k["n"], &later, k["m"]));
  EXPECT_FALSE(earlier.align_t_register(k["m"], &later, k["n"]));
  EXPECT_FALSE(earlier.align_t_register(k["m"], nullptr, k["m"]));
  EXPECT_EQ(text_of(earlier), "a~|b~ -> m~|n~");
  EXPECT_EQ(text_of(later), "~m|~n -> x~");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, AligningListedNulls) {
  const MAP earlier = plain("a~", "null~");
  MAP later = plain("~null", "x~");
  EXPECT_TRUE(later.align_r_register(nullptr, &earlier, nullptr));
  EXPECT_EQ(text_of(later), "null~ -> ~x");
}

TEST_F(TransformationComposition, AMapCanBeAlignedWithItself) {
  MAP map = plain("m~", "~m");
  EXPECT_TRUE(map.align_r_register(k["m"], &map, k["m"]));
  EXPECT_EQ(text_of(map), "~m -> m~");
  EXPECT_TRUE(map.align_t_register(k["m"], &map, k["m"]));
  EXPECT_EQ(text_of(map), "m~ -> ~m");
}

TEST_F(TransformationComposition, AligningDoesNotTouchTheTable) {
  const MAP earlier = plain("a~", "m~");
  MAP later = fsm("~m", "x~", {"0 0", "1 1"});
  EXPECT_TRUE(later.align_r_register(k["m"], &earlier, k["m"]));
  EXPECT_EQ(states_of(later.get_register_state_table()), (STATES{"0 0", "1 1"}));
}

// --- names ---

TEST_F(TransformationComposition, ASignalIsFoundByItsNameInWalkingOrder) {
  KPT_KEYPOINT* first = k.another("m");
  NI_PAIR_VECTOR side = k.side("a~b|~");
  side[1].second.push_back(first);
  side[1].second.push_back(k.another("m"));
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "a"), k["a"]);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "b"), k["b"]);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "m"), first);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "A"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "aa"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, ""), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(NI_PAIR_VECTOR(), "a"), nullptr);
}

TEST_F(TransformationComposition, NamesMayHoldAnyByte) {
  const std::string name("a\0b", 3);
  NI_PAIR_VECTOR side(1);
  side[0].first.push_back(k.another("a"));
  side[0].first.push_back(k.another(name));
  EXPECT_EQ(MAP::find_register_in_s_vector(side, name), side[0].first[1]);
}

TEST_F(TransformationComposition, ABlockInstanceIsFoundByItsThreeTexts) {
  KPT_KEYPOINT* instance = k.instance("q", "u1", "dff");
  NI_PAIR_VECTOR side = k.side("q~");
  side[0].second.push_back(instance);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "q"), k["q"]);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "q", "u1", "dff"), instance);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "q", "u2", "dff"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "q", "u1", "latch"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "p", "u1", "dff"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "q", "", ""), nullptr);
}

TEST_F(TransformationComposition, NullsAndKeypointsThatAreNoRegistersMatchNoName) {
  NI_PAIR_VECTOR side = k.side("null~null");
  side[0].first.push_back(k.no_register("a"));
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "a"), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, ""), nullptr);
  EXPECT_EQ(MAP::find_register_in_s_vector(side, "a", "", ""), nullptr);
}

// --- t_equals_r ---

TEST_F(TransformationComposition, TheSidesAreEqualWhenEveryNameIsThere) {
  EXPECT_TRUE(plain("a~", "m~n|o~").t_equals_r(plain("m~|~o n", "x~")));
  EXPECT_TRUE(plain("a~", "m~").t_equals_r(plain("m~n", "x~")));
  EXPECT_FALSE(plain("a~", "m n~").t_equals_r(plain("m~", "x~")));
  EXPECT_FALSE(plain("a~", "~p").t_equals_r(plain("m~", "x~")));
  EXPECT_TRUE(plain("a~", "~").t_equals_r(plain("m~", "x~")));
  EXPECT_TRUE(plain("a~", "").t_equals_r(plain("", "x~")));
}

TEST_F(TransformationComposition, SidesOfDifferentCountsAreUnequal) {
  EXPECT_FALSE(plain("a~", "m~|~").t_equals_r(plain("m~", "x~")));
  EXPECT_FALSE(plain("a~", "m~").t_equals_r(plain("m~|~", "x~")));
  EXPECT_FALSE(plain("a~", "").t_equals_r(plain("~", "x~")));
}

TEST_F(TransformationComposition, CountsThatDifferBy65536AreUnequal) {
  const MAP one(k.side("a~"), NI_PAIR_VECTOR(1), KPT_NOT_ELIMINATED);
  const MAP many(NI_PAIR_VECTOR(65537), k.side("x~"), KPT_NOT_ELIMINATED);
  EXPECT_FALSE(one.t_equals_r(many));
}

TEST_F(TransformationComposition, SignalsMatchSignalsAndInstancesMatchInstances) {
  MAP signal(k["a"], k["q"]);
  MAP instance(k["a"], k.instance("q", "u1", "dff"));
  EXPECT_TRUE(signal.t_equals_r(MAP(k.another("q"), k["x"])));
  EXPECT_FALSE(signal.t_equals_r(MAP(k.instance("q", "", ""), k["x"])));
  EXPECT_FALSE(instance.t_equals_r(MAP(k.another("q"), k["x"])));
  EXPECT_TRUE(instance.t_equals_r(MAP(k.instance("q", "u1", "dff"), k["x"])));
  EXPECT_FALSE(instance.t_equals_r(MAP(k.instance("q", "u2", "dff"), k["x"])));
  EXPECT_FALSE(instance.t_equals_r(MAP(k.instance("q", "u1", "latch"), k["x"])));
}

TEST_F(TransformationComposition, NullsAndKeypointsThatAreNoRegistersCountAsNotFound) {
  EXPECT_FALSE(plain("a~", "null~").t_equals_r(plain("null~", "x~")));
  KPT_KEYPOINT* other_kind = k.no_register("m");
  EXPECT_FALSE(MAP(k["a"], other_kind).t_equals_r(MAP(other_kind, k["x"])));
  EXPECT_FALSE(MAP(k["a"], k["m"]).t_equals_r(MAP(other_kind, k["x"])));
  EXPECT_TRUE(plain("a~", "m~").t_equals_r(plain("null~m", "x~")));
}

TEST_F(TransformationComposition, LargeSidesAreComparedByTheSameRule) {
  NI_PAIR_VECTOR r(2);
  NI_PAIR_VECTOR t(2);
  for (int n = 0; n < 200; ++n) {
    const std::string name = "m" + std::to_string(n);
    t[0].first.push_back(n % 3 == 0 ? k.instance(name, "u", "dff") : k.another(name));
    const std::string other = "m" + std::to_string(199 - n);
    r[1].second.push_back((199 - n) % 3 == 0 ? k.instance(other, "u", "dff") : k.another(other));
  }
  r[0].first.push_back(nullptr);
  r[0].first.push_back(k.no_register("p"));
  const MAP earlier(k.side("a~"), t, KPT_NOT_ELIMINATED);
  EXPECT_TRUE(earlier.t_equals_r(MAP(r, k.side("x~"), KPT_NOT_ELIMINATED)));
  MAP more(earlier);
  more.add_keypoint_to_t_i_group_of_map(k["p"], 1);
  EXPECT_FALSE(more.t_equals_r(MAP(r, k.side("x~"), KPT_NOT_ELIMINATED)));
  r[1].second.erase(r[1].second.begin() + 100);
  EXPECT_FALSE(earlier.t_equals_r(MAP(r, k.side("x~"), KPT_NOT_ELIMINATED)));
}

// --- update_transformations ---

TEST_F(TransformationComposition, UpdatingReplacesTheTransformedSide) {
  MAP map = plain("a~b", "m n~o|p~");
  const MAP other = plain("m~", "~x y|z~x|~", KPT_NO_FANOUT);
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  EXPECT_TRUE(map.update_transformations(other, entered, left));
  EXPECT_EQ(text_of(map), "a~b -> ~x y|z~x|~");
  EXPECT_EQ(text_of(left), "m n o p");
  EXPECT_EQ(text_of(entered), "x y z x");
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(text_of(other), "m~ -> ~x y|z~x|~");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, UpdatingAppendsToTheListsAndKeepsNulls) {
  MAP map = plain("a~", "null~");
  KPT_KEYPOINT_LIST entered = k.list("e");
  KPT_KEYPOINT_LIST left = k.list("l");
  EXPECT_TRUE(map.update_transformations(plain("m~", "x~null"), entered, left));
  EXPECT_EQ(text_of(entered), "e x null");
  EXPECT_EQ(text_of(left), "l null");
}

TEST_F(TransformationComposition, UpdatingTakesOverAStateMachineWithItsTable) {
  MAP map = plain("a~", "m~");
  const MAP other = fsm("m~|n~", "x~", {"00 0", "01 1", "10 1"}, KPT_STUCK_AT_ONE);
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  EXPECT_TRUE(map.update_transformations(other, entered, left));
  EXPECT_TRUE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_number_of_states(), 3);
  EXPECT_TRUE(map.state_table() == other.state_table());
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_EQ(text_of(map), "a~ -> x~");
}

TEST_F(TransformationComposition, UpdatingFromEmptySides) {
  MAP map = plain("a~", "m~");
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  EXPECT_TRUE(map.update_transformations(plain("m~", ""), entered, left));
  EXPECT_EQ(text_of(map), "a~ -> ");
  EXPECT_TRUE(map.update_transformations(plain("m~", "x~"), entered, left));
  EXPECT_EQ(text_of(map), "a~ -> x~");
  EXPECT_EQ(text_of(left), "m");
  EXPECT_EQ(text_of(entered), "x");
}

TEST_F(TransformationComposition, AMapUpdatedFromItselfIsReadAsItWas) {
  MAP map = fsm("a~", "m~n|o~", {"0 00", "1 11"}, KPT_STUCK_AT_ZERO);
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  EXPECT_TRUE(map.update_transformations(map, entered, left));
  EXPECT_TRUE(map == fsm("a~", "m~n|o~", {"0 00", "1 11"}));
  EXPECT_EQ(text_of(left), "m n o");
  EXPECT_EQ(text_of(entered), "m n o");
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ZERO);
}

TEST_F(TransformationComposition, UpdatingKeepsTheAttributes) {
  MAP map = plain("a~", "m~");
  MAP other = plain("m~", "x~");
  map.add_attribute("name", "mine");
  other.add_attribute("name", "other");
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  EXPECT_TRUE(map.update_transformations(other, entered, left));
  EXPECT_EQ(map.get_attribute("name"), "mine");
}

// --- ids ---

TEST_F(TransformationComposition, IdsComeInListOrderAndNullHasNone) {
  KPT_REGISTER_KEYPOINT_IMPL a(7, "a");
  KPT_REGISTER_KEYPOINT_IMPL b(-3, "b");
  KPT_REGISTER_KEYPOINT_IMPL c(5000000000, "c");
  KPT_KEYPOINT_LIST list;
  EXPECT_THAT(MAP::get_ids_in_list(list), IsEmpty());
  for (KPT_KEYPOINT* keypoint :
       {static_cast<KPT_KEYPOINT*>(&b), static_cast<KPT_KEYPOINT*>(nullptr), static_cast<KPT_KEYPOINT*>(&c),
        static_cast<KPT_KEYPOINT*>(&a), static_cast<KPT_KEYPOINT*>(&b)}) {
    list.push_back(keypoint);
  }
  EXPECT_THAT(MAP::get_ids_in_list(list), ElementsAre(-3, 5000000000, 7, -3));
}

// --- translation ---

TEST_F(TransformationComposition, EveryRegisterIsReplacedByItsNamesakeInItsPlace) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT* a = set.add_register(1, "a");
  KPT_KEYPOINT* b = set.add_register(2, "b");
  KPT_KEYPOINT* q = set.add_register(3, "q", "u1", "dff");
  NI_PAIR_VECTOR side = k.side("b a gone b~a|~gone|~b");
  side[2].first.push_back(k.instance("q", "of another entity", "dff"));
  side[2].first.push_back(k.instance("q", "u1", "latch"));
  const NI_PAIR_VECTOR translated = MAP::translate_vector(side, set);
  EXPECT_EQ(text_of(translated), "b a b~a|~|q~b");
  EXPECT_EQ(translated[0].first, (KPT_KEYPOINT_LIST{b, a, b}));
  EXPECT_EQ(translated[0].second, (KPT_KEYPOINT_LIST{a}));
  EXPECT_EQ(translated[2].first, (KPT_KEYPOINT_LIST{q}));
  EXPECT_EQ(translated[2].second, (KPT_KEYPOINT_LIST{b}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationComposition, ASideWithoutNamesakesKeepsItsIndices) {
  const KPT_KEYPOINT_SET_IMPL set;
  EXPECT_EQ(text_of(MAP::translate_vector(k.side("a~|~b|~"), set)), "~|~|~");
  EXPECT_EQ(text_of(MAP::translate_vector(NI_PAIR_VECTOR(), set)), "");
}

TEST_F(TransformationComposition, NullsAndKeypointsThatAreNoRegistersAreDroppedInTranslation) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "");
  NI_PAIR_VECTOR side = k.side("null a~null");
  side[0].second.push_back(k.no_register("a"));
  EXPECT_EQ(text_of(MAP::translate_vector(side, set)), "a~");
}

TEST_F(TransformationComposition, EachSideOfAMapIsTranslated) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT* a = set.add_register(1, "a");
  KPT_KEYPOINT* x = set.add_register(2, "x");
  const MAP map = plain("a~", "~x");
  EXPECT_EQ(map.translate_reference_vector(set)[0].first.front(), a);
  EXPECT_EQ(map.translate_transformed_vector(set)[0].second.front(), x);
  EXPECT_NE(map.get_r_n_first(0), a);
}

}  // namespace
