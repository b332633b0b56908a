// The union of two databases: its steps, its lines, its ids, and the registers
// that remain.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"
#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

constexpr char START[] = "TIME: Start unite at : #";
constexpr char ALL[] = "TIME: Unite time: #";
constexpr char END[] = "TIME: End unite at : #";

class UniteDb : public testing::Test {
 protected:
  void SetUp() override { set_next_ids(0, 0); }
  ~UniteDb() override { kpt_host::clear_switches(); }
  LINES debug() { return masked(lines.take_debug()); }

  HOST_LINES lines;
  KPT_KEYPOINTS_DB_IMPL db1{"first"};
  KPT_KEYPOINTS_DB_IMPL db2{"second"};
};

TEST_F(UniteDb, OfTwoEmptyDatabasesPrintsItsFrameAndSucceeds) {
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(debug(), ElementsAre(START, LOOP_1, LOOP_2, LOOP_3, ALL, END));
}

TEST_F(UniteDb, PrintsItsBeginningAndItsEndAsTimesOfDayAndItsLengthAsANumber) {
  db1.unite_db(db2);
  const LINES all = lines.debug();
  EXPECT_GT(all.front().size(), std::string("TIME: Start unite at : ").size());
  EXPECT_TRUE(std::regex_match(all[4], std::regex("TIME: Unite time: [0-9]+")));
  EXPECT_GT(all.back().size(), std::string("TIME: End unite at : ").size());
}

TEST_F(UniteDb, ReplacesTheTransformedRegistersByThoseOfTheSecondStage) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(debug(), ElementsAre(START, LOOP_1, LOOP_2, LOOP_3, ALL, END));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
  EXPECT_EQ(names_of(db1.get_reference_set()), "a");
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p");
  EXPECT_THAT(faults_after_union(db1), IsEmpty());
}

TEST_F(UniteDb, KeepsANameThatBothStagesUse) {
  db1.associate_registers_signal_to_signal("q", "q");
  db2.associate_registers_signal_to_signal("q", "q");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("q~ -> q~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "q");
}

TEST_F(UniteDb, CarriesARegisterThatOnlyTheSecondStageKnows) {
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> p~"));
  EXPECT_EQ(names_of(db1.get_reference_set()), "x");
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p");
}

TEST_F(UniteDb, CarriesAnInversionThroughARegisterThatOnlyTheSecondStageKnows) {
  db2.associate_registers_signal_to_signal("x", "p");
  db2.set_inverter_retimed_register("p");
  db1.unite_db(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> ~p"));
}

TEST_F(UniteDb, KeepsARegisterThatTheSecondStageDoesNotMention) {
  db1.associate_registers_signal_to_signal("a", "x");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(debug(), ElementsAre(START, LOOP_1, LOOP_2, not_in_db2("x"), NO_SUCCESSOR, LOOP_3, ALL, END));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "x");
}

TEST_F(UniteDb, GoesOnWhenTheFirstDatabaseCouldNotBeCompleted) {
  db1.associate_registers_signal_to_signal("x", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  EXPECT_FALSE(db1.make_complete_db(db2));
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("x~ -> y~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "y");
}

TEST_F(UniteDb, CarriesBlockInstancesThrough) {
  db1.associate_registers_signal_to_instance("a", "u", "e", "dff");
  db2.associate_registers_instance_to_instance("u", "e", "dff", "v", "f", "dffe");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> v~"));
  const KPT_REGISTER_KEYPOINT_IMPL* v = db1.get_transformed_set()->get_register("v", "f", "dffe");
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->get_entity_name(), "f");
  EXPECT_EQ(db1.get_transformed_set()->get_register("u", "e", "dff"), nullptr);
}

TEST_F(UniteDb, LeavesAttributesOfRegistersBehind) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.get_transformed_set()->get_register("p")->add_attribute("note", "seen");
  db1.unite_db(db2);
  EXPECT_EQ(db1.get_transformed_set()->get_register("p")->get_attribute("note"), "");
}

TEST_F(UniteDb, KeepsTheHandlesAndAttributesOfFirstMaps) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  const KPT_REGISTER_TRANSFORMATION map(db1.get_reference_register_transformation("a"));
  map.add_attribute("note", "seen");
  db1.unite_db(db2);
  EXPECT_EQ(map.get_transformed(0).get_name(), "p");
  EXPECT_EQ(map.get_attribute("note"), "seen");
}

// ---- Ids ----

TEST_F(UniteDb, GivesNewTransformedRegistersTheIdsBehindTheCounter) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  set_next_ids(10, 20);
  db1.unite_db(db2);
  EXPECT_EQ(db1.get_transformed_set()->get_register("p")->get_kpid(), 21);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 10);
}

TEST_F(UniteDb, LeavesTheCounterAtTheLastIdSoThatTheNextRegisterRepeatsIt) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  set_next_ids(10, 20);
  db1.unite_db(db2);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, 21);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), 21);
}

TEST_F(UniteDb, GivesIdsInOrderOfCreationSignalsFirst) {
  db2.associate_registers_instance_to_instance("u", "e", "t", "v", "e", "t");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  set_next_ids(0, 100);
  db1.unite_db(db2);
  // The pass-throughs took 100, 101 and 102.
  EXPECT_EQ(db1.get_transformed_set()->get_register("p")->get_kpid(), 104);
  EXPECT_EQ(db1.get_transformed_set()->get_register("q")->get_kpid(), 105);
  EXPECT_EQ(db1.get_transformed_set()->get_register("v", "", "t")->get_kpid(), 106);
}

// ---- Events before a union ----

TEST_F(UniteDb, SpreadsARegisterThatTheSecondStageReplicated) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.set_replicated_registers("p", "p2");
  db1.unite_db(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p p2~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p p2");
}

TEST_F(UniteDb, FollowsBothReplicasOfTheFirstStage) {
  db1.associate_registers_signal_to_signal("a", "x");
  db1.set_replicated_registers("x", "x2");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("x2", "p2");
  db1.unite_db(db2);
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p p2~"));
}

TEST_F(UniteDb, BringsTogetherWhatTheSecondStageMerged) {
  db1.associate_registers_signal_to_signal("a", "x");
  db1.associate_registers_signal_to_signal("b", "y");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.set_merged_registers("p", "q");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a b~ -> p~"));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "p");
  EXPECT_EQ(db1.get_reference_register_transformation("b"), db1.get_reference_register_transformation("a"));
}

TEST_F(UniteDb, ComposesTheInversionsOfBothStages) {
  db1.associate_registers_signal_to_signal("a", "x");
  db1.set_inverter_retimed_register("x");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.set_inverter_retimed_register("p");
  db1.unite_db(db2);
  const KPT_REGISTER_TRANSFORMATION map(db1.get_reference_register_transformation("a"));
  EXPECT_TRUE(map.is_positive_unate(0, 0));
}

TEST_F(UniteDb, TellsOfARegisterThatTheSecondStageEliminated) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  db2.set_eliminated_register_stuck_at_one("p");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_TRUE(KPT_REGISTER_TRANSFORMATION(db1.get_reference_register_transformation("a")).is_stuck_at_one());
  EXPECT_EQ(names_of(db1.get_transformed_set()), "");
  EXPECT_THAT(faults_after_union(db1), IsEmpty());
}

TEST_F(UniteDb, TellsOfARegisterThatTheFirstStageEliminated) {
  db1.associate_registers_signal_to_signal("a", "x");
  db1.set_eliminated_register_no_fanout("x");
  db2.associate_registers_signal_to_signal("y", "q");
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_TRUE(KPT_REGISTER_TRANSFORMATION(db1.get_reference_register_transformation("a")).has_no_fanout());
}

// ---- Failure ----

TEST_F(UniteDb, ThatFailsCleansNothingUpAndPrintsItsEndAllTheSame) {
  db1.associate_registers_fsm_signals({"a"}, {"x"}, client_table({"0 0", "1 1"}));
  db1.associate_registers_fsm_signals({"b"}, {"y"}, client_table({"0 0", "1 1"}));
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.set_merged_registers("p", "q");
  EXPECT_FALSE(db1.unite_db(db2));
  EXPECT_THAT(debug(), testing::IsSupersetOf({std::string(ALL), std::string(END)}));
  EXPECT_EQ(names_of(db1.get_transformed_set()), "x y p");
  EXPECT_EQ(names_of(db1.get_reference_set()), "a b");
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ fsm"));
}

TEST_F(UniteDb, ThatFailsKeepsWhatItPassedThrough) {
  db1.associate_registers_fsm_signals({"a"}, {"x"}, client_table({"0 0", "1 1"}));
  db1.associate_registers_fsm_signals({"b"}, {"y"}, client_table({"0 0", "1 1"}));
  db2.associate_registers_signal_to_signal("x", "p");
  db2.associate_registers_signal_to_signal("y", "q");
  db2.associate_registers_signal_to_signal("z", "s");
  db2.set_merged_registers("p", "q");
  EXPECT_FALSE(db1.unite_db(db2));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> x~ fsm", "z~ -> z~"));
}

// ---- With itself ----

TEST_F(UniteDb, WithItselfIsItsOwnNextStage) {
  db1.associate_registers_signal_to_signal("a", "b");
  db1.associate_registers_signal_to_signal("b", "a");
  EXPECT_TRUE(db1.unite_db(db1));
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> a~", "b~ -> b~"));
}

// ---- Through the handle ----

TEST_F(UniteDb, IsAskedForThroughTheHandle) {
  db1.associate_registers_signal_to_signal("a", "x");
  db2.associate_registers_signal_to_signal("x", "p");
  const KPT_KEYPOINTS_DB first(&db1);
  EXPECT_TRUE(first.unite(KPT_KEYPOINTS_DB(&db2)));
  EXPECT_EQ(first.get_reference_register_transformation("a").get_transformed(0).get_name(), "p");
}

TEST_F(UniteDb, ShowsClientsANullHandleForANullKeypoint) {
  KPT_KEYPOINT* a = db1.add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  db1.add_to_transformation_set(NI_PAIR_VECTOR{NI_PAIR{{a}, {}}}, NI_PAIR_VECTOR{NI_PAIR{{nullptr}, {}}},
                                KPT_NOT_ELIMINATED);
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_THAT(debug(), ElementsAre(START, LOOP_1, LOOP_2, not_in_db2(""), NO_SUCCESSOR, LOOP_3, ALL, END));
  EXPECT_TRUE(KPT_REGISTER_TRANSFORMATION(db1.get_reference_register_transformation("a")).get_transformed(0).is_null());
}

}  // namespace
