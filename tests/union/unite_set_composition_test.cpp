// The third loop of a union, for each map of the first stage: its successor,
// mismatches, new entries, and debug lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using kpt_test::LINES;
using testing::ElementsAre;
using namespace kpt_test;

using UniteSetComposition = TWO_SETS;

TEST_F(UniteSetComposition, FindsTheSuccessorThroughAnEquivalent) {
  db1.plain("a -> x y");
  db2.plain("y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("x"), "Found keypoint y in db2's R set", UNMATCHED,
                                   "T set of db1:", "  0: x", "  0: y", "R set of db2:", "  0: y", LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

TEST_F(UniteSetComposition, FindsTheSuccessorThroughAnInvertedEquivalent) {
  db1.plain("a -> x~y");
  db2.plain("y -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), testing::IsSupersetOf({not_in_db2("x"), std::string("Found keypoint y in db2's R set")}));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~p"));
}

TEST_F(UniteSetComposition, AsksEquivalentsBeforeInvertedEquivalents) {
  db1.plain("a -> x z~y");
  db2.fsm("y -> p", {"0 0", "1 1"});
  db2.plain("z -> q");
  db1.plain("b -> w");
  db1.unite(db2);
  // Loop 2 deleted the first map, because it feeds the state machine.
  EXPECT_THAT(maps_of(db1), ElementsAre("b~ -> w~", "y~ -> p~ fsm"));
}

TEST_F(UniteSetComposition, SaysWhichRegistersItAskedForInOrder) {
  db1.plain("a -> x y z~v w");
  db2.plain("w -> p");
  db2.plain("v -> q");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("x"), "Found keypoint v in db2's R set", UNMATCHED,
                                   "T set of db1:", "  0: x", "  0: y", "  0: z", "  0: v", "  0: w",
                                   "R set of db2:", "  0: w", "  0: v", LOOP_3));
}

TEST_F(UniteSetComposition, PrintsBothSidesOfAMismatchIndexByIndex) {
  db1.plain("a|b -> x|y~z");
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, UNMATCHED, "T set of db1:", "  0: x", "  1: y", "  1: z",
                                   "R set of db2:", "  0: x", LOOP_3));
}

TEST_F(UniteSetComposition, ReportsTheEmptyIndicesOfAMismatch) {
  db1.plain("a|b -> x|~");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(EMPTY_T_SIDE, EMPTY_T_SIDE, LOOP_1, LOOP_2, UNMATCHED, "T set of db1:", "  0: x",
                                   EMPTY_T_SIDE, EMPTY_T_SIDE, "R set of db2:", "  0: x", LOOP_3));
}

TEST_F(UniteSetComposition, TakesASecondMapWithMoreRegistersForAMatch) {
  db1.plain("a -> x");
  db2.plain("x y -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

TEST_F(UniteSetComposition, PrintsANullRepresentativeAsAnEmptyName) {
  db1.plain("a -> null");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2(""), NO_SUCCESSOR, LOOP_3));
}

TEST_F(UniteSetComposition, PrintsANullInAMismatchAsAnEmptyName) {
  db1.plain("a -> null x");
  db2.plain("null x -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2(""), "Found keypoint x in db2's R set", UNMATCHED,
                                   "T set of db1:", "  0: ", "  0: x", "R set of db2:", "  0: ", "  0: x", LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

TEST_F(UniteSetComposition, PrintsABlockInstanceByItsName) {
  db1.add_map(registers["a"], registers.instance("u1", "dff", "posedge"));
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("u1"), NO_SUCCESSOR, LOOP_3));
}

TEST_F(UniteSetComposition, WalksTheFirstMapsInOrderOfCreation) {
  db1.plain("a -> x");
  db1.plain("b -> y");
  db1.plain("c -> z");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("x"), NO_SUCCESSOR, not_in_db2("y"), NO_SUCCESSOR,
                                   not_in_db2("z"), NO_SUCCESSOR, LOOP_3));
}

TEST_F(UniteSetComposition, GivesASecondMapToTheFirstThatAsksForIt) {
  db1.plain("a -> x");
  db1.plain("b -> x");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_THAT(debug(), ElementsAre(LOOP_1, LOOP_2, not_in_db2("x"), NO_SUCCESSOR, LOOP_3));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~", "b~ -> x~"));
}

// A register between the stages that a second map lists but that has no entry
// finds no map, even when the memory of its map was reused.
TEST_F(UniteSetComposition, DoesNotFindASuccessorThatWasDeleted) {
  KPT_TRANSFORMATION_IMPL* map = db2.plain("x -> p");
  db2.record_replicated_keypoint_map(registers["q"], map);
  db2.delete_map(map);
  db2.plain("y -> s");
  db1.plain("a -> x");
  db1.unite(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
}

TEST_F(UniteSetComposition, EntersARegisterWhoseEntryLeadsToADeletedMap) {
  KPT_TRANSFORMATION_IMPL* gone = db1.plain("b -> y");
  db1.record_replicated_keypoint_map(registers["p"], gone);
  db1.delete_map(gone);
  db1.plain("a -> x");
  db2.plain("x -> p");
  db1.unite(db2);
  EXPECT_EQ(db1.t_map("p"), "a~ -> p~");
}

}  // namespace
