// A cleanup returns the result of its last deletion.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

class CleanupTellsOfLastDeletion : public testing::Test {
 protected:
  // A register that cannot be deleted, because its name differs from the one with which it was added.
  void add_renamed(const char* name) {
    db1.add_to_register_set(KPT_REFERENCE_SET, 1, name)->set_element_name("renamed");
  }
  void add_unmapped(const char* name) { db1.add_to_register_set(KPT_REFERENCE_SET, 2, name); }

  KPT_KEYPOINTS_DB_IMPL db1{"first"};
  KPT_KEYPOINTS_DB_IMPL db2{"second"};
};

TEST_F(CleanupTellsOfLastDeletion, SoALaterSuccessHidesAFailure) {
  add_renamed("a");
  add_unmapped("b");
  EXPECT_TRUE(db1.cleanup_reference_keypoint_set());
}

TEST_F(CleanupTellsOfLastDeletion, SoAFailureAtTheEndCountsAndTheWalkIsWhole) {
  add_unmapped("a");
  add_renamed("b");
  EXPECT_FALSE(db1.cleanup_reference_keypoint_set());
  EXPECT_EQ(names_of(db1.get_reference_set()), "renamed");
}

TEST_F(CleanupTellsOfLastDeletion, SoARegisterThatIsKeptDoesNotCount) {
  add_renamed("a");
  db1.associate_registers_signal_to_signal("b", "x");
  EXPECT_FALSE(db1.cleanup_reference_keypoint_set());
}

// If every failure counted, a union would stop before its second cleanup, and the
// registers between the stages would stay.
TEST_F(CleanupTellsOfLastDeletion, BecauseTheSecondCleanupHangsOnIt) {
  add_renamed("a");
  add_unmapped("b");
  db1.associate_registers_signal_to_signal("c", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p");
}

TEST_F(CleanupTellsOfLastDeletion, AndAFailureLeavesTheTransformedSetAsItIs) {
  add_renamed("a");
  db1.associate_registers_signal_to_signal("c", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_FALSE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("c~ -> p~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "x p");
}

}  // namespace
