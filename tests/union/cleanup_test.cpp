// Registers that no map lists leave their sets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

class Cleanup : public testing::Test {
 protected:
  HOST_LINES lines;
  KPT_KEYPOINTS_DB_IMPL db{"db"};
};

TEST_F(Cleanup, OfAnEmptyDatabaseSucceeds) {
  EXPECT_TRUE(db.cleanup_reference_keypoint_set());
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
}

TEST_F(Cleanup, KeepsRegistersThatHaveAMapAndSucceeds) {
  db.associate_registers_signal_to_signal("a", "x");
  db.associate_registers_instance_to_instance("u", "e", "dff", "v", "e", "dff");
  EXPECT_TRUE(db.cleanup_reference_keypoint_set());
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
  EXPECT_EQ(names_of(db.get_reference_set()), "a u");
  EXPECT_EQ(names_of(db.get_transformed_set()), "x v");
}

TEST_F(Cleanup, DeletesSignalsAndInstancesWithoutAMap) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  db.associate_registers_signal_to_signal("b", "y");
  db.add_to_register_set(KPT_REFERENCE_SET, 2, "u", "e", "dff");
  EXPECT_TRUE(db.cleanup_reference_keypoint_set());
  EXPECT_EQ(names_of(db.get_reference_set()), "b");
}

TEST_F(Cleanup, LooksAtOneSideAlone) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  db.add_to_register_set(KPT_TRANSFORMED_SET, 1, "x");
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
  EXPECT_EQ(names_of(db.get_reference_set()), "a");
  EXPECT_EQ(names_of(db.get_transformed_set()), "");
}

TEST_F(Cleanup, TellsASignalFromAnInstanceOfItsName) {
  db.associate_registers_signal_to_signal("a", "x");
  db.add_to_register_set(KPT_TRANSFORMED_SET, 5, "x", "e", "dff");
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
  EXPECT_NE(db.get_transformed_set()->get_register("x"), nullptr);
  EXPECT_EQ(db.get_transformed_set()->get_register("x", "e", "dff"), nullptr);
}

TEST_F(Cleanup, DeletesAReplicaThatItsMapRefused) {
  db.associate_registers_fsm_signals({"a", "b"}, {"x", "y"}, client_table({"00 00", "11 11"}));
  EXPECT_FALSE(db.set_replicated_registers("y", "y_copy"));
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
  EXPECT_EQ(names_of(db.get_transformed_set()), "x y");
}

TEST_F(Cleanup, DeletesARegisterWhoseEliminationWasRefused) {
  db.associate_registers_signal_to_signal("a", "x");
  EXPECT_FALSE(db.set_eliminated_register("x"));
  EXPECT_TRUE(db.cleanup_transformed_keypoint_set());
  EXPECT_EQ(names_of(db.get_transformed_set()), "");
  EXPECT_THAT(maps_of(db), ElementsAre("a~ -> x~"));
}

TEST_F(Cleanup, KeepsADeletedRegisterReadableInTheMapsThatListIt) {
  KPT_KEYPOINT* x = db.add_to_register_set(KPT_TRANSFORMED_SET, 7, "x");
  KPT_TRANSFORMATION_IMPL* map =
      db.add_to_transformation_set(NI_PAIR_VECTOR{NI_PAIR{{x}, {}}}, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED);
  db.cleanup_transformed_keypoint_set();
  EXPECT_EQ(map->get_r_representative(0), x);
  EXPECT_EQ(x->get_element_name(), "x");
  EXPECT_EQ(x->get_kpid(), 7);
}

TEST_F(Cleanup, GivesTheAddressOfADeletedRegisterToNoOther) {
  KPT_KEYPOINT* x = db.add_to_register_set(KPT_TRANSFORMED_SET, 7, "x");
  db.cleanup_transformed_keypoint_set();
  for (int k = 0; k < 1000; ++k) {
    ASSERT_NE(db.add_to_register_set(KPT_TRANSFORMED_SET, k, "y" + std::to_string(k)), x);
  }
}

TEST_F(Cleanup, FailsWhenARegisterWasRenamedSinceItWasAdded) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a")->set_element_name("b");
  EXPECT_FALSE(db.cleanup_reference_keypoint_set());
  EXPECT_NE(db.get_reference_set()->get_register("a"), nullptr);
}

TEST_F(Cleanup, DeletesByNameSoARenamedRegisterTakesItsNamesakeAlong) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a")->set_element_name("b");
  db.associate_registers_signal_to_signal("b", "x");
  EXPECT_TRUE(db.cleanup_reference_keypoint_set());
  EXPECT_EQ(db.get_reference_set()->get_register("b"), nullptr);
}

// The renamed register comes first, and its deletion deletes the other register
// of that name. The walk skips that one, because a second deletion would fail.
TEST_F(Cleanup, PassesOverARegisterThatItHasDeletedItself) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a")->set_element_name("b");
  db.add_to_register_set(KPT_REFERENCE_SET, 2, "b");
  EXPECT_TRUE(db.cleanup_reference_keypoint_set());
  EXPECT_EQ(db.get_reference_set()->get_register("b"), nullptr);
  EXPECT_NE(db.get_reference_set()->get_register("a"), nullptr);
}

TEST_F(Cleanup, OfARenamedRegisterThatTookItsNamesakeAlongLetsTheUnionSucceed) {
  KPT_KEYPOINTS_DB_IMPL db2("db2");
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a")->set_element_name("b");
  db.associate_registers_signal_to_signal("b", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db.unite_db(db2));
  EXPECT_EQ(db.get_reference_set()->get_register("b"), nullptr);
}

TEST_F(Cleanup, PrintsNothing) {
  db.add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  db.cleanup_reference_keypoint_set();
  EXPECT_THAT(lines.debug(), IsEmpty());
}

}  // namespace
