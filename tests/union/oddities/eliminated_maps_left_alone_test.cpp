// A first map with an elimination status is not composed, even when one of its
// registers still exists.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

TEST(EliminatedMapsLeftAlone, AndTheirRegistersAreNotLookedUp) {
  HOST_LINES lines;
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x", KPT_STUCK_AT_ZERO);
  db1.plain("b -> y", KPT_STUCK_AT_ONE);
  db1.plain("c -> z", KPT_NO_FANOUT);
  db1.plain("d -> w", KPT_ELIMINATED);
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(masked(lines.debug()), ElementsAre(LOOP_1, LOOP_2, LOOP_3));
  EXPECT_THAT(maps_of(db1),
              ElementsAre("a~ -> x~ status 1", "b~ -> y~ status 2", "c~ -> z~ status 3", "d~ -> w~ status 4"));
  EXPECT_THAT(maps_of(db2), ElementsAre("x~ -> p~"));
}

TEST(EliminatedMapsLeftAlone, WithAStatusThatNoListHas) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x", static_cast<KPT_ELIM_ENUM>(77));
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ status 77"));
}

// A replica outlived its constant sibling. It stays in the transformed set under
// its name in the middle netlist. What became of it later is lost.
TEST(EliminatedMapsLeftAlone, SoARegisterBesideTheEliminatedOneKeepsItsMiddleName) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "x");
  db1.set_replicated_registers("x", "x_copy");
  db1.set_eliminated_register_stuck_at_one("x");
  db2.associate_registers_signal_to_signal("x_copy", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x_copy~ status 2"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "x_copy");
}

// If it were composed, the status of the second map would overwrite the constant,
// and a consumer would look for a register that does not exist.
TEST(EliminatedMapsLeftAlone, BecauseAComposedMapWouldForgetTheConstant) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  KPT_TRANSFORMATION_IMPL* constant = db1.plain("a -> x_copy", KPT_STUCK_AT_ONE);
  KPT_TRANSFORMATION_IMPL* next = db2.plain("x_copy -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_TRUE(constant->r_representative_is_stuck_at_one());

  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  constant->update_transformations(*next, entered, left);
  EXPECT_FALSE(constant->r_representative_is_stuck_at_one());
}

// Loops 1 and 2 do not look at the status, so they also fuse eliminated maps.
TEST(EliminatedMapsLeftAlone, ButAreFusedLikeAnyOther) {
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x", KPT_STUCK_AT_ONE);
  db1.plain("b -> y");
  db2.plain("x y -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> p~"));
}

}  // namespace
