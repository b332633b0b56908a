// When no single map of the second stage lists all registers of a first map, the
// mismatch is reported as UNMATCHED, and the maps are composed anyway.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using namespace kpt_test;

TEST(CompositionAfterMismatch, GoesOnAndSucceeds) {
  HOST_LINES lines;
  REGISTERS registers;
  SET db1(registers);
  SET db2(registers);
  db1.plain("a -> x y");
  db2.plain("x -> p");
  EXPECT_TRUE(db1.unite(db2));
  EXPECT_THAT(lines.debug(), Contains(UNMATCHED));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
  EXPECT_EQ(db1.t_map("y"), "");
}

// If the union stopped at the report, it would lose every register that the first
// stage replicated and whose replica the second stage removed silently.
TEST(CompositionAfterMismatch, BecauseAReplicaMayBeSweptBetweenTheStages) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  KPT_KEYPOINTS_DB_IMPL db2("second");
  db1.associate_registers_signal_to_signal("a", "x");
  db1.set_replicated_registers("x", "x_copy");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p");
}

}  // namespace
