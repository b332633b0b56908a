// When the first database already has a register, this register is aligned
// against the pass-through map that was made last before it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

class PolarityCarriedOver : public testing::Test {
 protected:
  void invert(const char* name) {
    db2.get_reference_register_transformation(name)->interchange_registers_in_r_n_i_groups_of_map();
  }

  KPT_KEYPOINTS_DB_IMPL db1{"first"};
  KPT_KEYPOINTS_DB_IMPL db2{"second"};
};

TEST_F(PolarityCarriedOver, ToARegisterThatIsThereAlready) {
  db1.associate_registers_signal_to_signal("a", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  invert("y");
  EXPECT_TRUE(db1.make_complete_db(db2));
  // For y, the pass-through map of x is swapped; the map of y is not.
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> y~", "~x -> ~x"));
}

TEST_F(PolarityCarriedOver, OnceForEachRegisterThatFollows) {
  db1.associate_registers_signal_to_signal("a", "y");
  db1.associate_registers_signal_to_signal("b", "z");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.associate_registers_signal_to_signal("z", "s");
  invert("y");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> y~", "b~ -> z~", "x~ -> x~"));
}

TEST_F(PolarityCarriedOver, ToNoRegisterBeforeTheFirstPassThrough) {
  db1.associate_registers_signal_to_signal("a", "y");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.associate_registers_signal_to_signal("x", "p");
  invert("y");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> y~", "x~ -> x~"));
}

// If the pass-through map were not kept from register to register, the map of x would
// have other groups, and a flow that compares its databases would see another one.
TEST_F(PolarityCarriedOver, AndShowsInTheGroupsOfTheUnitedMap) {
  db1.associate_registers_signal_to_signal("a", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  invert("y");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> ~q", "~x -> ~p"));
}

// It never inverts a claim: both sides of the pass-through map are swapped, so
// what it says of x and p does not change.
TEST_F(PolarityCarriedOver, WithoutChangingWhatTheMapSays) {
  db1.associate_registers_signal_to_signal("a", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  invert("y");
  db1.unite_db(db2);
  EXPECT_TRUE(db1.get_reference_register_transformation("x")->association_is_positive_unate(0, 0));
  EXPECT_TRUE(db1.get_reference_register_transformation("a")->association_is_negative_unate(0, 0));
}

}  // namespace
