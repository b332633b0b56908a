// A register that is added to a first map keeps the index entry that it has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

// The second stage turns x into y and does not know the y in which the first
// stage ends. Both maps list y; its entry leads to the map that it led to before.
TEST(EnteredEntryKept, WhenAnotherFirstMapEndsInARegisterOfThatName) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("x -> y");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> y~", "b~ -> y~"));
  EXPECT_EQ(db1.t_map("y"), "b~ -> y~");
}

TEST(EnteredEntryKept, WhenAnEarlierFirstMapGotThereInTheSameUnion) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("x -> p");
  db2.plain("y -> p");
  db1.unite(db2);
  EXPECT_EQ(db1.t_map("p"), "a~ -> p~");
}

// If the entry were overwritten, the next stage would not find the first of the
// two maps: its register would lead to the later map, which would then count for
// both.
TEST(EnteredEntryKept, BecauseEventsOnTheRegisterBelongToTheFirstMapThatGotThere) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x");
  db1.plain("b -> y");
  db2.plain("x -> p");
  db2.plain("y -> p");
  db1.unite(db2);
  db1.set_inverter_retimed_register(registers["p"]);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~p", "b~ -> p~"));
}

// A register takes the name of a register that moves on. The map that is composed
// later erases the entry. The map of the first register still lists it, and the
// cleanup deletes it from the transformed set.
TEST(EnteredEntryKept, AndIsLostWhenTheMapThatItLedToMovesOnLater) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "x");
  db1.associate_registers_signal_to_signal("b", "y");
  db2.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("y", "z");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> y~", "b~ -> z~"));
  EXPECT_EQ(db1.get_transformed_register_transformation("y"), nullptr);
  EXPECT_EQ(names_of(db1.get_transformed_set()), "z");
}

TEST(EnteredEntryKept, AndIsThereWhenThatMapMovedOnBefore) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("b", "y");
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("y", "z");
  EXPECT_TRUE(db1.unite_db(db2));
  ASSERT_NE(db1.get_transformed_register_transformation("y"), nullptr);
  EXPECT_EQ(line_of(*db1.get_transformed_register_transformation("y")), "a~ -> y~");
}

}  // namespace
