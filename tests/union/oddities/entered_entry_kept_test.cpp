// A register that enters a first map keeps the index entry that it has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

// The second stage took x to y, and knows nothing of the y that the first
// stage left. Both are listed; y leads to the map that it led to before.
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

// Whoever overwrote the entry would leave the map that stands first out of
// reach of the next stage: its register would lead to the later one, which is
// then taken for both.
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

// A register that takes over the name of one that moves on: the map that is
// composed later takes the entry out. The map still lists the register, and
// the cleanup deletes it from the transformed set.
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
