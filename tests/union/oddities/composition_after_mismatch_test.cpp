// A first map whose registers the second stage does not all know as one is
// reported as UNMATCHED and composed all the same.
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

// Whoever stopped at the report would lose the way of every register that the
// first stage replicated and the second stage swept without a word.
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
