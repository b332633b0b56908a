// A constant that the second stage found is said of the register between the
// stages. Where the first stage inverted, it is the opposite of what the
// reference register holds, and is taken over as it stands.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;  // NOLINT(google-build-using-namespace): the lines and the stages

class ConstantKeepsTheSecondStagesSense : public testing::Test {
 protected:
  ConstantKeepsTheSecondStagesSense() {
    first.associate_registers_signal_to_signal("a", "x");
    second.associate_registers_signal_to_signal("x", "p");
  }

  KPT_KEYPOINTS_DB_IMPL first{"first"};
  KPT_KEYPOINTS_DB_IMPL second{"second"};
};

// x holds the inverse of a and stays at zero, so a stays at one.
TEST_F(ConstantKeepsTheSecondStagesSense, BehindAnInversionOfTheFirst) {
  first.set_inverter_retimed_register("x");
  second.set_eliminated_register_stuck_at_zero("p");
  ASSERT_TRUE(first.unite_db(second));
  const KPT_TRANSFORMATION_IMPL* map = first.get_reference_register_transformation("a");
  ASSERT_NE(map, nullptr);
  EXPECT_TRUE(map->r_representative_is_stuck_at_zero());
  EXPECT_FALSE(map->r_representative_is_stuck_at_one());
}

// Nothing in the united map tells of the inversion: who turned the sense by
// the groups that are left would turn this constant, which is right, as well.
TEST_F(ConstantKeepsTheSecondStagesSense, AndTheMapIsThatOfAConstantWithoutAnInversion) {
  first.set_inverter_retimed_register("x");
  second.set_eliminated_register_stuck_at_zero("p");
  ASSERT_TRUE(first.unite_db(second));
  KPT_KEYPOINTS_DB_IMPL straight("first");
  straight.associate_registers_signal_to_signal("a", "x");
  KPT_KEYPOINTS_DB_IMPL next("second");
  next.associate_registers_signal_to_signal("x", "p");
  next.set_eliminated_register_stuck_at_zero("p");
  ASSERT_TRUE(straight.unite_db(next));
  EXPECT_EQ(maps_of(first), maps_of(straight));
}

// One stage that holds both has the sense that a pass gives it.
TEST_F(ConstantKeepsTheSecondStagesSense, WhileOneStageTakesTheSenseThatIsRecorded) {
  first.set_inverter_retimed_register("x");
  first.set_eliminated_register_stuck_at_one("x");
  ASSERT_TRUE(first.unite_db(second));
  const KPT_TRANSFORMATION_IMPL* map = first.get_reference_register_transformation("a");
  ASSERT_NE(map, nullptr);
  EXPECT_TRUE(map->r_representative_is_stuck_at_one());
}

}  // namespace
