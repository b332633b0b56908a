#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/host_lines.h"
#include "tests/support/map_fixture.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::REFUSED_READ;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char NOT_RETIMED[] = "Error: Could not find retimed_kp in t_vector";
constexpr char NOT_FOUND[] = "Error: Couldn't find index in t_vector";

class TransformationEdits : public kpt_test::MAP_TEST {
 protected:
  HOST_LINES lines;
};

// --- replication ---

TEST_F(TransformationEdits, AReplicaJoinsTheGroupOfTheExistingRegister) {
  MAP map = plain("r~", "x~y");
  EXPECT_TRUE(map.add_replicated_register(k["x"], k["x2"]));
  EXPECT_EQ(text_of(map), "r~ -> x x2~y");
  EXPECT_TRUE(map.add_replicated_register(k["y"], k["y2"]));
  EXPECT_EQ(text_of(map), "r~ -> x x2~y y2");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, AReplicaOfARegisterThatStandsInBothGroupsJoinsTheNGroup) {
  MAP map = plain("r~", "x~x");
  EXPECT_TRUE(map.add_replicated_register(k["x"], k["x2"]));
  EXPECT_EQ(text_of(map), "r~ -> x x2~x");
}

TEST_F(TransformationEdits, AReplicaOfWhatIsNotFoundIsRefusedWithoutAMessage) {
  MAP map = plain("r~", "x~|y~");
  EXPECT_FALSE(map.add_replicated_register(k["r"], k["q"]));
  EXPECT_FALSE(map.add_replicated_register(k["y"], k["q"]));
  EXPECT_FALSE(map.add_replicated_register(nullptr, k["q"]));
  EXPECT_FALSE(plain("r~", "").add_replicated_register(k["x"], k["q"]));
  EXPECT_EQ(text_of(map), "r~ -> x~|y~");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, NullCanBeReplicatedAndBeAReplica) {
  MAP map = plain("r~", "x~null");
  EXPECT_TRUE(map.add_replicated_register(nullptr, k["y"]));
  EXPECT_TRUE(map.add_replicated_register(k["x"], nullptr));
  EXPECT_EQ(text_of(map), "r~ -> x null~null y");
}

// --- inverter retiming ---

TEST_F(TransformationEdits, RetimingTheOnlyRegisterMovesItThereAndBack) {
  MAP map(k["r"], k["t"]);
  EXPECT_TRUE(map.set_inverter_retimed_register(k["t"]));
  EXPECT_EQ(text_of(map), "r~ -> ~t");
  EXPECT_TRUE(map.association_is_negative_unate(0, 0));
  EXPECT_TRUE(map.set_inverter_retimed_register(k["t"]));
  EXPECT_EQ(text_of(map), "r~ -> t~");
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "1 1"}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, RetimingTheRepresentativeOfAStateMachineFlipsTheColumnOfItsIndex) {
  MAP map = fsm("a~|b~", "x~|y~", {"00 00", "01 01", "11 10"});
  EXPECT_TRUE(map.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(map), "a~|b~ -> ~x|y~");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 10", "01 11", "11 00"}));
  EXPECT_TRUE(map.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 00", "01 01", "11 10"}));
}

TEST_F(TransformationEdits, RetimingWhileTheNGroupKeepsARegisterLeavesTheTable) {
  MAP map = fsm("a~", "x y~", {"0 0", "1 1"});
  EXPECT_TRUE(map.set_inverter_retimed_register(k["y"]));
  EXPECT_EQ(text_of(map), "a~ -> x~y");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "1 1"}));
  EXPECT_TRUE(map.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(map), "a~ -> ~y x");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 1", "1 0"}));
  // The first register that comes back inverts the representative, whichever it is.
  EXPECT_TRUE(map.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(map), "a~ -> x~y");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "1 1"}));
}

TEST_F(TransformationEdits, RetimingTakesTheFirstOccurrenceAndTheNGroupFirst) {
  MAP map = plain("r~", "x y x~x");
  EXPECT_TRUE(map.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(map), "r~ -> y x~x x");
}

TEST_F(TransformationEdits, RetimingWhatIsNotFoundIsRefused) {
  MAP map = fsm("a~|b~", "x~|y~", {"00 00", "11 11"});
  EXPECT_FALSE(map.set_inverter_retimed_register(k["y"]));
  EXPECT_FALSE(map.set_inverter_retimed_register(k["a"]));
  EXPECT_FALSE(map.set_inverter_retimed_register(nullptr));
  EXPECT_FALSE(plain("a~", "").set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(map), "a~|b~ -> x~|y~");
  EXPECT_THAT(lines.debug(), ElementsAre(NOT_RETIMED, NOT_RETIMED, NOT_RETIMED, NOT_RETIMED));
}

TEST_F(TransformationEdits, RetimingAListedNullMovesIt) {
  MAP map = plain("r~", "null x~");
  EXPECT_TRUE(map.set_inverter_retimed_register(nullptr));
  EXPECT_EQ(text_of(map), "r~ -> x~null");
}

TEST_F(TransformationEdits, RetimingOnATableOfTheWrongSizeFlipsWhatThereIs) {
  MAP none = MAP(k.side("a~"), k.side("x~"), KPT_STATE_TABLE_IMPL(3, 1, 0), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(none.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(none), "a~ -> ~x");
  MAP no_rows = MAP(k.side("a~"), k.side("x~"), KPT_STATE_TABLE_IMPL(0, 1, 1), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(no_rows.set_inverter_retimed_register(k["x"]));
  EXPECT_EQ(text_of(no_rows), "a~ -> ~x");
}

// --- elimination ---

TEST_F(TransformationEdits, EliminatingTheOnlyRegisterOfAPlainMapEmptiesTheIndex) {
  for (const KPT_ELIM_ENUM status : {KPT_STUCK_AT_ZERO, KPT_STUCK_AT_ONE, KPT_NO_FANOUT}) {
    for (const char* side : {"t~", "~t"}) {
      MAP map = plain("r~", side);
      EXPECT_TRUE(map.set_eliminated(k["t"], status));
      EXPECT_EQ(text_of(map), "r~ -> ~");
      EXPECT_EQ(map.get_elim_status(), status);
    }
  }
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, EliminatingOneOfSeveralAsStuckSetsTheStatusAsNoFanoutDoesNot) {
  for (const char* side : {"t u~", "t~u", "u~t", "~t u"}) {
    MAP stuck = plain("r~", side);
    EXPECT_TRUE(stuck.set_eliminated(k["t"], KPT_STUCK_AT_ONE));
    EXPECT_EQ(stuck.get_elim_status(), KPT_STUCK_AT_ONE) << side;
    EXPECT_EQ(text_of(stuck.get_t_registers_at_index(0)), "u");
    MAP idle = plain("r~", side);
    EXPECT_TRUE(idle.set_eliminated(k["t"], KPT_NO_FANOUT));
    EXPECT_EQ(idle.get_elim_status(), KPT_NOT_ELIMINATED) << side;
    EXPECT_EQ(text_of(idle.get_t_registers_at_index(0)), "u");
  }
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, AnyOtherStatusIsRefusedWithoutAMessage) {
  for (const int status : {-1, 0, 4, 5, 1000}) {
    MAP map(k["r"], k["t"]);
    EXPECT_FALSE(map.set_eliminated(k["t"], static_cast<KPT_ELIM_ENUM>(status)));
    EXPECT_EQ(text_of(map), "r~ -> t~");
    EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  }
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationEdits, WhatIsNotFoundIsToldWhateverTheStatus) {
  MAP map = plain("r~", "x~|y~");
  for (const int status : {-1, 0, 1, 2, 3, 4, 5}) {
    EXPECT_FALSE(map.set_eliminated(k["y"], static_cast<KPT_ELIM_ENUM>(status)));
    EXPECT_THAT(lines.take_debug(), ElementsAre(NOT_FOUND));
  }
  EXPECT_FALSE(map.set_eliminated(nullptr, KPT_NO_FANOUT));
  EXPECT_FALSE(plain("r~", "").set_eliminated(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_FALSE(plain("r~", "~").set_eliminated(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_THAT(lines.debug(), ElementsAre(NOT_FOUND, NOT_FOUND, NOT_FOUND));
  EXPECT_EQ(text_of(map), "r~ -> x~|y~");
}

TEST_F(TransformationEdits, ARegisterListedTwiceAndAloneIsTheLastAndOneOccurrenceRemains) {
  MAP map = plain("r~", "t t~");
  EXPECT_TRUE(map.set_eliminated(k["t"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "r~ -> t~");
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  MAP both = plain("r~", "t~t");
  EXPECT_TRUE(both.set_eliminated(k["t"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(both), "r~ -> ~t");
}

TEST_F(TransformationEdits, AListedNullIsARegisterLikeAnother) {
  MAP map = plain("r~", "null~x");
  EXPECT_TRUE(map.set_eliminated(nullptr, KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "r~ -> ~x");
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  MAP only = plain("r~", "null~");
  EXPECT_TRUE(only.set_eliminated(nullptr, KPT_NO_FANOUT));
  EXPECT_EQ(text_of(only), "r~ -> ~");
  EXPECT_EQ(only.get_elim_status(), KPT_NO_FANOUT);
}

TEST_F(TransformationEdits, TheLastRegisterOfAStateMachinesIndexStuckDropsTheIndexNotTheColumn) {
  MAP map = fsm("a~|b~", "x~|y~z", {"00 00", "01 01", "11 10"});
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_EQ(text_of(map), "a~|b~ -> y~z");
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ZERO);
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 00", "01 01", "11 10"}));
  EXPECT_TRUE(map.set_eliminated(k["y"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(map), "a~|b~ -> ~z");
  EXPECT_TRUE(map.set_eliminated(k["z"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(map), "a~|b~ -> ");
  EXPECT_EQ(map.get_elim_status(), KPT_STUCK_AT_ONE);
}

TEST_F(TransformationEdits, TheLastRegisterOfAStateMachinesIndexWithoutFanoutDropsIndexAndColumn) {
  MAP map = fsm("a~|b~", "x~|y~", {"00 10", "01 11", "11 00"});
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "a~|b~ -> y~");
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 0", "01 1", "11 0"}));
}

TEST_F(TransformationEdits, TheOnlyIndexOfAStateMachineWithoutFanoutKeepsItsColumn) {
  MAP map = fsm("a~", "x~", {"0 0", "1 1"});
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "a~ -> ~");
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "1 1"}));
}

TEST_F(TransformationEdits, OneOfSeveralRegistersOfAStateMachinesIndexLeavesIndexAndColumn) {
  MAP map = fsm("a~", "x x2~|y~", {"0 00", "1 11"});
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "a~ -> x2~|y~");
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(map.set_eliminated(k["x2"], KPT_STUCK_AT_ZERO));
  EXPECT_EQ(text_of(map), "a~ -> y~");
}

TEST_F(TransformationEdits, NoFanoutWithoutAColumnToRemoveSetsTheStatusAndKeepsTheRegister) {
  MAP map(k.side("a~"), k.side("x~|y~"), KPT_STATE_TABLE_IMPL(2, 1, 0), KPT_NOT_ELIMINATED);
  EXPECT_FALSE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(text_of(map), "a~ -> x~|y~");
}

// --- dropping an index ---

TEST_F(TransformationEdits, DroppingAnIndexMovesTheLaterOnesDown) {
  MAP map = fsm("a~", "x~w|y~|z u~v", {"0 000", "1 111"});
  EXPECT_TRUE(map.erase_entry_in_t_state_vector(1));
  EXPECT_EQ(text_of(map), "a~ -> x~w|z u~v");
  EXPECT_TRUE(map.erase_entry_in_t_state_vector(0));
  EXPECT_EQ(text_of(map), "a~ -> z u~v");
  EXPECT_TRUE(map.erase_entry_in_t_state_vector(0));
  EXPECT_EQ(text_of(map), "a~ -> ");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 000", "1 111"}));
}

TEST_F(TransformationEdits, DroppingAnIndexThatIsNotThereIsFalse) {
  MAP map = plain("a~|b~", "x~");
  EXPECT_FALSE(map.erase_entry_in_t_state_vector(1));
  EXPECT_FALSE(map.erase_entry_in_t_state_vector(65535));
  EXPECT_FALSE(plain("a~", "").erase_entry_in_t_state_vector(0));
  EXPECT_EQ(text_of(map), "a~|b~ -> x~");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// --- swapping groups ---

TEST_F(TransformationEdits, SwappingExchangesTheGroupsOfEveryIndexOfOneSide) {
  MAP map = plain("a b~c|~d|e~|~", "x~y z|~null");
  EXPECT_TRUE(map.interchange_registers_in_r_n_i_groups_of_map());
  EXPECT_EQ(text_of(map), "c~a b|d~|~e|~ -> x~y z|~null");
  EXPECT_TRUE(map.interchange_registers_in_t_n_i_groups_of_map());
  EXPECT_EQ(text_of(map), "c~a b|d~|~e|~ -> y z~x|null~");
  EXPECT_TRUE(map.interchange_registers_in_n_i_groups_of_map(KPT_REFERENCE_SET));
  EXPECT_TRUE(map.interchange_registers_in_n_i_groups_of_map(KPT_TRANSFORMED_SET));
  EXPECT_EQ(text_of(map), "a b~c|~d|e~|~ -> x~y z|~null");
  EXPECT_TRUE(plain("", "").interchange_registers_in_r_n_i_groups_of_map());
}

TEST_F(TransformationEdits, SwappingAnUnknownSideIsRefused) {
  MAP map = plain("a~b", "x~y");
  EXPECT_FALSE(map.interchange_registers_in_n_i_groups_of_map(static_cast<KPT_SET_ENUM>(2)));
  EXPECT_EQ(text_of(map), "a~b -> x~y");
  EXPECT_THAT(lines.debug(), ElementsAre("Error: Unknown set Type"));
}

// --- state table update ---

TEST_F(TransformationEdits, TheTableLosesTheStatesInWhichTwoColumnsDisagreeAndTheSecondColumn) {
  MAP map = fsm("a~|b~", "x~|y~|z~", {"00 000", "01 100", "10 011", "11 111"});
  EXPECT_TRUE(map.update_state_table(1, 3));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 00", "11 11"}));
  EXPECT_EQ(text_of(map), "a~|b~ -> x~|y~|z~");
}

TEST_F(TransformationEdits, TheTableOfAMapWithoutTransformedColumnsCannotLoseOne) {
  MAP map(k.side("a~"), k.side(""), KPT_STATE_TABLE_IMPL(2, 1, 0), KPT_NOT_ELIMINATED);
  EXPECT_FALSE(map.update_state_table(1, 2));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ, REFUSED_READ, REFUSED_READ));
}

TEST_F(TransformationEdits, ColumnsOutsideTheTable) {
  MAP map = fsm("a~", "x~|y~", {"0 01", "1 10"});
  // Column 0 is out of bounds in every row, and column 2 is not, so no state is left.
  EXPECT_TRUE(map.update_state_table(2, 0));
  EXPECT_EQ(states_of(map.get_register_state_table()), STATES{});
  EXPECT_EQ(map.state_table().get_num_transformed_registers(), 1);
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ));
}

TEST_F(TransformationEdits, APlainMapsTableBecomesItsOwnWhenItIsUpdated) {
  MAP map(k["a"], k["x"]);
  const MAP other(k["b"], k["y"]);
  EXPECT_TRUE(map.update_state_table(1, 1));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 ", "1 "}));
  EXPECT_EQ(states_of(other.get_register_state_table()), (STATES{"0 0", "1 1"}));
}

}  // namespace
