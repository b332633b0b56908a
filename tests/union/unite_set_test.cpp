// The union of two transformation sets: what becomes of the maps and the indexes,
// and every line that the host gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "host/kpt_host.h"
#include "tests/union/stages.h"

namespace {

using kpt_test::LINES;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

using UniteSet = TWO_SETS;

// "x1 x2 ... x<count>"
std::string numbered(const std::string& name, int count) {
  std::string names = name + "1";
  for (int k = 2; k <= count; ++k) {
    names += " " + name + std::to_string(k);
  }
  return names;
}

// ---- Nothing to do ----

TEST_F(UniteSet, OfTwoEmptySetsPrintsTheThreeTimesAndSucceeds) {
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_TRUE(db1.get_list_of_register_transformations().empty());
}

TEST_F(UniteSet, CountsTheTimesOfAllLoopsFromTheStart) {
  db1.unite(db2);
  std::vector<std::string> times;
  for (const std::string& line : lines.debug()) {
    times.push_back(line.substr(line.rfind(' ') + 1));
  }
  EXPECT_THAT(times, testing::ElementsAre("1", "2", "3"));
}

TEST_F(UniteSet, FilesEveryLineUnderTheModuleTag) {
  db1.plain("a -> x");
  db1.unite(db2);
  EXPECT_THAT(lines.tags(), testing::Each(std::string("KPT")));
}

// ---- One to one ----

TEST_F(UniteSet, RunsAMapOnToWhereTheSecondStageTakesIt) {
  KPT_TRANSFORMATION_IMPL* map = db1.plain("a -> x");
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
  EXPECT_EQ(db1.get_map_of_r_keypoint(registers["a"]), map);
  EXPECT_EQ(db1.get_map_of_t_keypoint(registers["p"]), map);
  EXPECT_EQ(db1.get_map_of_t_keypoint(registers["x"]), nullptr);
}

TEST_F(UniteSet, ConsumesTheMapsOfTheSecondStageThatItComposes) {
  db1.plain("a -> x");
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), ElementsAre("y~ -> q~"));
  EXPECT_EQ(db2.get_map_of_r_keypoint(registers["x"]), nullptr);
  EXPECT_EQ(db2.get_map_of_t_keypoint(registers["p"]), nullptr);
}

TEST_F(UniteSet, ComposesInWhateverOrderTheSecondStageWasRecorded) {
  db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("y -> q");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~", "b~ -> q~"));
}

TEST_F(UniteSet, KeepsTheInversionThatTheSecondStageRecorded) {
  db1.plain("a -> x");
  db2.plain("x -> ~p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~p"));
}

TEST_F(UniteSet, SwapsTheSecondMapToThePolarityOfTheFirst) {
  db1.plain("a -> ~x");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~p"));
}

TEST_F(UniteSet, UndoesAnInversionByASecondOne) {
  db1.plain("a -> ~x");
  db2.plain("x -> ~p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

TEST_F(UniteSet, TakesOverWhatTheSecondStageEliminated) {
  db1.plain("a -> x");
  db2.plain("x -> ~", KPT_STUCK_AT_ONE);
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~ status 2"));
}

TEST_F(UniteSet, LeavesAFirstMapWithoutASuccessorAsItWas) {
  db1.plain("a -> x");
  db2.plain("y -> q");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("x"), NO_SUCCESSOR, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
  EXPECT_EQ(db1.t_map("x"), "a~ -> x~");
}

// ---- Loop 1 ----

TEST_F(UniteSet, MakesOneMapOfTheSecondMapsThatOneFirstIndexFeeds) {
  db1.plain("a -> x y");
  db2.plain("x -> p");
  db2.plain("y -> q");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p q~"));
  EXPECT_THAT(maps_of(db2), IsEmpty());
}

TEST_F(UniteSet, FusesIntoTheOldestSecondMapWhicheverRegisterComesFirst) {
  db1.plain("a -> y x");
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p q~"));
}

TEST_F(UniteSet, FusesThreeSecondMapsInOrderOfCreation) {
  db1.plain("a -> z x y");
  db2.plain("y -> q");
  db2.plain("z -> s");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> q s p~"));
}

TEST_F(UniteSet, CountsASecondMapThatOneIndexFeedsTwiceOnce) {
  db1.plain("a -> x y");
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

TEST_F(UniteSet, AlignsEachSecondMapBeforeItFusesThem) {
  db1.plain("a -> x~y");
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~q"));
}

TEST_F(UniteSet, FusesSecondMapsWithTheStatusOfTheLastOne) {
  db1.plain("a -> x y");
  db2.plain("x -> p");
  db2.plain("y -> ~", KPT_NO_FANOUT);
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~ status 3"));
}

TEST_F(UniteSet, FusesSecondMapsForEachIndexOfAFirstMap) {
  db1.plain("a|b -> v w|x y");
  db2.plain("v -> p");
  db2.plain("w -> q");
  db2.plain("x -> s");
  db2.plain("y -> u");
  db1.unite(db2);
  // The map itself is composed along its first index only.
  EXPECT_THAT(maps_of(db1), ElementsAre("a~|b~ -> p q~"));
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> s u~"));
}

TEST_F(UniteSet, FusesButDoesNotAlignWhatAFurtherIndexFeeds) {
  db1.plain("a|b -> v|x~y");
  db2.plain("x -> s");
  db2.plain("y -> u");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> s u~"));
}

// ---- Large groups, whose polarities are kept from question to question ----

// x1 and x2 are looked up, so the groups of the map are known when it absorbs z.
// Then z is looked up. The map is swapped for z, so it joins w in the other
// polarity.
TEST_F(UniteSet, KnowsTheGroupsOfASecondMapAnewWhenItHasGrown) {
  db1.plain("a -> x1 x2 y");
  db1.plain("b -> w~z");
  db2.plain(numbered("x", 20) + " -> p");
  db2.plain("y z -> q");
  db2.plain("w -> r");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> r~p q"));
}

// At its first index the second map is swapped for z and back for y. Then the
// first maps are fused into one, in which z is looked up at the second index.
TEST_F(UniteSet, KnowsTheGroupsOfAFirstMapAnewWhenItHasGrown) {
  db1.plain("a -> " + numbered("x", 20));
  db1.plain("b -> y~z");
  db2.plain("z y x1 x2|z -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> ~p"));
}

// The machine that is copied gets the memory of the map that was deleted.
TEST_F(UniteSet, KnowsNothingOfTheGroupsOfAFirstMapThatAMachineReplaced) {
  db1.plain("a -> " + numbered("x", 20));
  db2.plain("x1 x2 -> p");
  db2.fsm("x3 -> " + numbered("s", 17) + "~v", {"0 0", "1 1"});
  db2.plain("v -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), testing::Contains("~v -> ~q"));
}

TEST_F(UniteSet, KnowsNothingOfTheGroupsOfAFirstMapThatAnotherTookOver) {
  db1.plain("a -> y");
  db1.plain("b -> " + numbered("x", 20));
  db2.plain("y x1 x2 -> p");
  db2.fsm("w -> " + numbered("s", 17) + "~v", {"0 0", "1 1"});
  db2.plain("v -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), testing::Contains("~v -> ~q"));
}

TEST_F(UniteSet, FusesNoSecondMapsForAStateMachine) {
  db1.fsm("a -> x y", {"0 0", "1 1"});
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), ElementsAre("x~ -> p~", "y~ -> q~"));
}

TEST_F(UniteSet, FusesNoStateMachineOfTheSecondStage) {
  db1.plain("a -> x y");
  db2.plain("x -> p");
  db2.fsm("y -> q", {"0 0", "1 1"});
  db1.unite(db2);
  EXPECT_THAT(maps_of(db2), ElementsAre("x~ -> p~", "y~ -> q~ fsm"));
}

TEST_F(UniteSet, EntersWhatItFusedForTheSurvivingSecondMap) {
  db1.fsm("b -> w", {"0 0", "1 1"});
  db1.plain("a|c -> v|x y");
  db2.plain("x -> p");
  db2.plain("y -> q");
  db1.unite(db2);
  EXPECT_EQ(db2.r_map("y"), "x y~ -> p q~");
  EXPECT_EQ(db2.t_map("q"), "x y~ -> p q~");
}

TEST_F(UniteSet, ReportsAnEmptyIndexEachTimeItIsWalked) {
  db1.plain("a -> ~");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE, LOOP_1, LOOP_2, not_in_db2(""), EMPTY_T_SIDE,
                                   EMPTY_T_SIDE, NO_SUCCESSOR, LOOP_3));
}

TEST_F(UniteSet, ReportsASideWithoutIndicesOnlyWhereItsFirstIndexIsAskedFor) {
  db1.plain("a ->");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2(""), EMPTY_T_SIDE, EMPTY_T_SIDE, NO_SUCCESSOR, LOOP_3));
}

TEST_F(UniteSet, ReportsTheEmptyReferenceSideOfASecondMap) {
  db2.plain("~ -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, EMPTY_R_SIDE, EMPTY_R_SIDE, LOOP_2, LOOP_3));
}

// Groups of many registers are searched in another way, which has to follow every
// change of their maps: "s" joins the group when its map is fused, and the next
// map of the first stage looks it up.
TEST(LargeGroup, AlignsARegisterThatJoinedItAsASmallOneDoes) {
  const auto united = [](int further) {
    REGISTERS registers;
    SET first(registers);
    SET second(registers);
    std::string group = "x y";
    for (int k = 0; k < further; ++k) {
      group += " r" + std::to_string(k);
    }
    first.plain("a -> x y s");
    first.plain("b -> ~s");
    second.plain(group + " -> p");
    second.plain("s -> q");
    first.unite(second);
    return maps_of(first);
  };
  EXPECT_EQ(united(40), united(0));
}

// ---- With itself ----

// A copy is consumed, so that no map is read after it was deleted: each map is
// composed with the set as it was before.
TEST_F(UniteSet, WithItselfConsumesACopyOfItself) {
  KPT_TRANSFORMATION_IMPL* first = db1.plain("a -> x");
  db1.plain("x -> p");
  EXPECT_TRUE(db1.unite(db1));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~", "x~ -> p~"));
  EXPECT_EQ(db1.get_map_of_r_keypoint(registers["a"]), first);
  EXPECT_NE(db1.get_map_of_t_keypoint(registers["p"]), nullptr);
}

// ---- Loop 2 ----

TEST_F(UniteSet, MakesOneMapOfTheFirstMapsThatFeedOneSecondIndex) {
  KPT_TRANSFORMATION_IMPL* map = db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> p~"));
  EXPECT_EQ(db1.get_map_of_r_keypoint(registers["b"]), map);
  EXPECT_EQ(db1.get_map_of_t_keypoint(registers["p"]), map);
}

TEST_F(UniteSet, FusesIntoTheOldestFirstMapWhicheverRegisterComesFirst) {
  db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("y x -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> p~"));
}

// The second map is swapped for each first map that disagrees with it, so it
// keeps the polarity of the last one.
TEST_F(UniteSet, AlignsASecondMapWithEachFirstMapThatFeedsIt) {
  db1.plain("a -> x");
  db1.plain("b -> ~y");
  db2.plain("x y -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> ~p"));
}

TEST_F(UniteSet, FusesFirstMapsWithTheStatusOfTheLastOne) {
  db1.plain("a -> x");
  db1.plain("b -> y", KPT_STUCK_AT_ZERO);
  db2.plain("x y -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> x y~ status 1"));
}

TEST_F(UniteSet, FusesAFirstStateMachineWithAPlainMapIntoTheProduct) {
  db1.fsm("a -> x", {"0 1", "1 0"});
  db1.plain("b -> y");
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~|b~ -> x~|y~ fsm"));
  EXPECT_THAT(states_of(db1.get_list_of_register_transformations().front()->get_register_state_table()),
              states_of(make_table({"0 1", "1 0"}).cross_product_table(make_table({"0 0", "1 1"}))));
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> p~"));
}

// The table of a plain map has two states, so each such map doubles the rows.
TEST_F(UniteSet, DoublesTheRowsOfAStateMachineWithEachPlainMapThatIsFusedWithIt) {
  db1.fsm("a -> x", {"0 1", "1 0", "1 1"});
  db1.plain("b -> y1");
  db1.plain("c -> y2");
  db1.plain("d -> y3");
  db2.plain("x y1 y2 y3 -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_EQ(db1.get_list_of_register_transformations().front()->get_number_of_states(), 3 * 8);
}

// The other's first column would be the last column of a table that has none: one
// line for each of the 2 by 2 states, for each map that is fused.
TEST_F(UniteSet, TellsOfEveryEntryThatHasNoPlaceInAProduct) {
  KPT_STATE_TABLE_IMPL without_reference(2, 0, 1);
  db1.add_map(registers.side("~"), registers.side("x~"), without_reference, KPT_NOT_ELIMINATED);
  db1.plain("b -> y");
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  const LINES all = debug();
  EXPECT_EQ(std::count(all.begin(), all.end(), kpt_test::REFUSED_R_WRITE), 4);
}

TEST_F(UniteSet, SkipsASecondMapWithoutFirstMaps) {
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), IsEmpty());
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> p~"));
}

// ---- Failure ----

TEST_F(UniteSet, OfTwoStateMachinesThatFeedOneIndexFails) {
  db1.fsm("a -> x", {"0 0", "1 1"});
  db1.fsm("b -> y", {"0 0", "1 1"});
  db1.plain("c -> z");
  db2.plain("x y -> p");
  db2.plain("z -> q");
  EXPECT_FALSE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, UNION_OF_TWO_MACHINES, LOOP_2, LOOP_3));
}

TEST_F(UniteSet, DeletesAMapAlsoWhenItCouldNotBeFused) {
  db1.fsm("a -> x", {"0 0", "1 1"});
  db1.fsm("b -> y", {"0 0", "1 1"});
  db2.plain("x y -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ fsm"));
  EXPECT_EQ(db1.r_map("b"), "");
  EXPECT_EQ(db1.t_map("y"), "");
}

TEST_F(UniteSet, FusesNothingMoreIntoAMapAfterAFailureAndDeletesTheRest) {
  db1.fsm("a -> x", {"0 0", "1 1"});
  db1.fsm("b -> y", {"0 0", "1 1"});
  db1.plain("c -> z");
  db2.plain("x y z -> p");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ fsm"));
}

TEST_F(UniteSet, ComposesNothingAfterAFailure) {
  db1.fsm("a -> x", {"0 0", "1 1"});
  db1.fsm("b -> y", {"0 0", "1 1"});
  db1.plain("c -> z");
  db2.plain("x y -> p");
  db2.plain("z -> q");
  db1.unite(db2);
  EXPECT_EQ(db1.t_map("z"), "c~ -> z~");
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> p~", "z~ -> q~"));
}

TEST_F(UniteSet, LooksAtNoFurtherIndexAfterAFailure) {
  db1.fsm("a -> x", {"0 0", "1 1"});
  db1.fsm("b -> y", {"0 0", "1 1"});
  db1.plain("c -> v");
  db1.plain("d -> w");
  db2.plain("x y|v w -> p");
  db2.fsm("v -> q", {"0 0", "1 1"});
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ fsm", "c~ -> v~", "d~ -> w~"));
}

TEST_F(UniteSet, FailsInLoop1WhenTheTargetHasNoTransformedIndex) {
  db1.plain("a -> x y");
  db1.plain("b -> v w");
  db2.plain("x ->");
  db2.plain("y -> q");
  db2.plain("v -> s");
  db2.plain("w -> u");
  EXPECT_FALSE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x y~", "b~ -> v w~"));
  EXPECT_THAT(maps_of(db2), ElementsAre("x y~ -> ", "v~ -> s~", "w~ -> u~"));
}

TEST_F(UniteSet, CopiesLeftoversAlsoAfterAFailureAndFailsAllTheSame) {
  kpt_host::set_switch(COPY_LEFTOVERS, true);
  db1.plain("a -> x y");
  db2.plain("x ->");
  db2.plain("y -> q");
  EXPECT_FALSE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x y~", "x y~ -> "));
  EXPECT_EQ(lines.internal_errors().size(), 1U);
}

}  // namespace
