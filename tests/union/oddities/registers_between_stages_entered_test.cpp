// When a map is composed, the first stage's reference index gets entries for the
// registers between the stages, and not for the map's own reference registers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

TEST(RegistersBetweenStagesEntered, LeadToTheMapThatTheyWerePartOf) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  KPT_TRANSFORMATION_IMPL* map = db1.plain("a -> x");
  db2.plain("x y -> p");
  db1.unite(db2);
  EXPECT_EQ(db1.get_map_of_r_keypoint(registers["x"]), map);
  EXPECT_EQ(db1.get_map_of_r_keypoint(registers["y"]), map);
  EXPECT_EQ(line_of(*map), "a~ -> p~");
}

// In a database they are keypoints of the transformed set. So a reference
// register of the same name is another keypoint and keeps its own map.
TEST(RegistersBetweenStagesEntered, AreNotMistakenForReferenceRegistersOfTheirName) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "b");
  db1.associate_registers_signal_to_signal("b", "a");
  db2.associate_registers_signal_to_signal("a", "p");
  db2.associate_registers_signal_to_signal("b", "q");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_EQ(line_of(*db1.get_reference_register_transformation("a")), "a~ -> q~");
  EXPECT_EQ(line_of(*db1.get_reference_register_transformation("b")), "b~ -> p~");
}

// If the map's own reference side were entered instead, a register that was
// recorded again would lead back to its older map.
TEST(RegistersBetweenStagesEntered, AndARegisterThatWasRecordedAnewKeepsItsNewestMap) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x");
  db1.plain("a -> y");
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~", "a~ -> y~"));
  EXPECT_EQ(db1.r_map("a"), "a~ -> y~");
}

}  // namespace
