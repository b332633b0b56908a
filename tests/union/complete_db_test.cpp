// Registers from which the second database starts and in which the first does not
// end: they get a map of their own before the union.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

class Complete : public testing::Test {
 protected:
  HOST_LINES lines;
  KPT_KEYPOINTS_DB_IMPL db1{"first"};
  KPT_KEYPOINTS_DB_IMPL db2{"second"};

  KPT_TRANSFORMATION_IMPL* db2_map_of(const char* name) { return db2.get_reference_register_transformation(name); }
  void invert_in_db2(const char* name) { db2_map_of(name)->interchange_registers_in_r_n_i_groups_of_map(); }
};

TEST_F(Complete, OfTwoEmptyDatabasesDoesNothingAndSucceeds) {
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(Complete, PassesARegisterThroughThatTheFirstDatabaseLacks) {
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> x~"));
  EXPECT_EQ(names_of(db1.get_reference_set()), "x");
  EXPECT_EQ(names_of(db1.get_transformed_set()), "x");
}

TEST_F(Complete, LeavesARegisterThatTheFirstDatabaseEndsIn) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
}

TEST_F(Complete, PassesABlockInstanceThroughWithItsThreeTexts) {
  db2.associate_registers_instance_to_signal("u", "entity", "dff", "p");
  EXPECT_TRUE(db1.make_complete_db(db2));
  const KPT_REGISTER_KEYPOINT_IMPL* r = db1.get_reference_set()->get_register("u", "", "dff");
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->get_entity_name(), "entity");
  EXPECT_EQ(db1.get_transformation_set()->get_map_of_r_keypoint(r),
            db1.get_transformation_set()->get_map_of_t_keypoint(
                db1.get_transformed_set()->get_register("u", "entity", "dff")));
}

TEST_F(Complete, TakesAnInstanceOfAnotherEntityForTheSame) {
  db1.associate_registers_signal_to_instance("a", "u", "other", "dff");
  db2.associate_registers_instance_to_signal("u", "entity", "dff", "p");
  db1.make_complete_db(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> u~"));
}

TEST_F(Complete, TellsASignalFromAnInstanceOfItsName) {
  db1.associate_registers_signal_to_instance("a", "x", "e", "dff");
  db2.associate_registers_signal_to_signal("x", "p");
  db1.make_complete_db(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~", "x~ -> x~"));
}

TEST_F(Complete, WalksSignalsBeforeInstancesInOrderOfCreation) {
  db2.associate_registers_instance_to_signal("u", "e", "dff", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.associate_registers_signal_to_signal("x", "s");
  db1.make_complete_db(db2);
  EXPECT_EQ(names_of(db1.get_reference_set()), "y x u");
}

TEST_F(Complete, FailsForARegisterThatExistsOnTheReferenceSideAlone) {
  db1.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_FALSE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> y~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "y");
}

TEST_F(Complete, HidesAFailureByALaterSuccess) {
  db1.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("z", "q");
  EXPECT_TRUE(db1.make_complete_db(db2));
}

TEST_F(Complete, FailsWhenTheLastRegisterThatItLacksIsRefused) {
  db1.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("z", "q");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "s");
  EXPECT_FALSE(db1.make_complete_db(db2));
}

TEST_F(Complete, SwapsAPassThroughThatTheSecondDatabaseHoldsInverted) {
  db2.associate_registers_signal_to_signal("x", "p");
  invert_in_db2("x");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("~x -> ~x"));
}

TEST_F(Complete, TakesNoPolarityStepForARegisterBeforeTheFirstPassThrough) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  invert_in_db2("x");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
}

TEST_F(Complete, TakesNoPolarityStepWhenTheSecondDatabaseHasNoMapForTheRegister) {
  db2.add_to_register_set(KPT_REFERENCE_SET, 1, "x");
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> x~"));
}

TEST_F(Complete, CountsARegisterAtAFurtherIndexAsNotInTheNonInvertingGroup) {
  KPT_KEYPOINT* w = db2.add_to_register_set(KPT_REFERENCE_SET, 1, "w");
  KPT_KEYPOINT* x = db2.add_to_register_set(KPT_REFERENCE_SET, 2, "x");
  db2.add_to_transformation_set(NI_PAIR_VECTOR{NI_PAIR{{w}, {}}, NI_PAIR{{x}, {}}}, NI_PAIR_VECTOR{},
                                KPT_NOT_ELIMINATED);
  EXPECT_TRUE(db1.make_complete_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("w~ -> w~", "~x -> ~x"));
}

TEST_F(Complete, TakesItsIdsFromTheCountersOfTheProcess) {
  db2.associate_registers_signal_to_signal("x", "p");
  set_next_ids(70, 90);
  db1.make_complete_db(db2);
  EXPECT_EQ(db1.get_reference_set()->get_register("x")->get_kpid(), 70);
  EXPECT_EQ(db1.get_transformed_set()->get_register("x")->get_kpid(), 90);
}

TEST_F(Complete, LeavesTheSecondDatabaseAsItWas) {
  db2.associate_registers_signal_to_signal("x", "p");
  invert_in_db2("x");
  const std::string before = saved(db2);
  db1.make_complete_db(db2);
  EXPECT_EQ(saved(db2), before);
}

TEST_F(Complete, WithItselfAddsWhatItDoesNotEndInOnlyWhereItMay) {
  db1.associate_registers_signal_to_signal("a", "x");
  EXPECT_FALSE(db1.make_complete_db(db1));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
}

}  // namespace
