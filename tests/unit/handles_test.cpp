// What clients ask of registers, maps and databases, using only handles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_set>
#include <vector>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/databases.h"

namespace {

using kpt_test::DATABASE;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

template <class WALK>
std::vector<std::string> names_of(const WALK& registers) {
  std::vector<std::string> names;
  for (const KPT_REGISTER_KEYPOINT& keypoint : registers) {
    names.emplace_back(keypoint.is_null() ? "null" : std::string(keypoint.get_name()));
  }
  return names;
}

class Handles : public testing::Test {
 protected:
  KPT_REGISTER_KEYPOINT r(std::string_view name) const { return db->get_reference_set().get_register(name); }
  KPT_REGISTER_KEYPOINT t(std::string_view name) const { return db->get_transformed_set().get_register(name); }

  DATABASE db;
};

// ---- a register ----

TEST_F(Handles, RegisterTellsItsId) {
  db.impl().add_to_register_set(KPT_REFERENCE_SET, 4711, "a");
  EXPECT_EQ(r("a").get_id(), 4711);
}

TEST_F(Handles, RegisterTellsTheSideThatItWasRecordedTo) {
  db->associate_registers_signal_to_instance("a", "u", "E", "dff");
  EXPECT_EQ(r("a").get_side(), KPT_REFERENCE_SET);
  EXPECT_EQ(db->get_transformed_set().get_register("u", "E", "dff").get_side(), KPT_TRANSFORMED_SET);
}

TEST_F(Handles, RegisterThatNoDatabaseMadeTellsNoSide) {
  KPT_REGISTER_KEYPOINT_IMPL alone(0, "a");
  KPT_KEYPOINT_SET_IMPL set;
  EXPECT_EQ(KPT_REGISTER_KEYPOINT(&alone).get_side(), std::nullopt);
  EXPECT_EQ(KPT_REGISTER_KEYPOINT(set.add_register(0, "a")).get_side(), std::nullopt);
}

TEST_F(Handles, RegisterListsItsAttributesByName) {
  db->associate_registers_signal_to_signal("a", "x");
  EXPECT_THAT(r("a").get_attributes(), IsEmpty());
  r("a").add_attribute("z", "1");
  r("a").add_attribute("b", "2");
  EXPECT_THAT(r("a").get_attributes(), ElementsAre(Pair("b", "2"), Pair("z", "1")));
}

TEST_F(Handles, HandlesOfOneRegisterAreEqual) {
  db->associate_registers_signal_to_signal("a", "a");
  EXPECT_EQ(r("a"), r("a"));
  EXPECT_FALSE(r("a") == t("a"));
  EXPECT_EQ(KPT_REGISTER_KEYPOINT(), KPT_REGISTER_KEYPOINT());
  const std::unordered_set<KPT_REGISTER_KEYPOINT> registers{r("a"), r("a"), t("a")};
  EXPECT_EQ(registers.size(), 2U);
}

// ---- walks ----

TEST_F(Handles, WalkMeetsSignalsThenInstancesInOrderOfCreation) {
  db->associate_registers_instance_to_signal("u", "E", "dff", "x");
  db->associate_registers_signal_to_signal("b", "y");
  db->associate_registers_instance_to_signal("t", "E", "dff", "z");
  db->associate_registers_signal_to_signal("a", "w");
  EXPECT_THAT(names_of(db->get_reference_set()), ElementsAre("b", "a", "u", "t"));
  EXPECT_THAT(names_of(db->get_set(KPT_REFERENCE_SET)), ElementsAre("b", "a", "u", "t"));
  EXPECT_THAT(names_of(db->get_set(KPT_TRANSFORMED_SET)), ElementsAre("x", "y", "z", "w"));
  EXPECT_EQ(db->get_reference_set().size(), 4U);
}

TEST_F(Handles, WalkOverAnEmptyDatabaseMeetsNothing) {
  EXPECT_THAT(names_of(db->get_reference_set()), IsEmpty());
  EXPECT_EQ(db->get_transformation_set().begin(), db->get_transformation_set().end());
  EXPECT_EQ(db->get_transformation_set().size(), 0U);
}

TEST_F(Handles, WalkPassesOverRegistersThatHaveLeftTheSet) {
  for (const char* name : {"a", "b", "c"}) {
    db->associate_registers_signal_to_signal(name, name);
  }
  db.impl().get_reference_set()->delete_register("b");
  EXPECT_THAT(names_of(db->get_reference_set()), ElementsAre("a", "c"));
}

TEST_F(Handles, RegistersThatAreAddedDuringAWalkAreNotMet) {
  db->associate_registers_signal_to_signal("a", "x");
  db->associate_registers_instance_to_signal("u", "E", "dff", "y");
  std::vector<std::string> met;
  for (const KPT_REGISTER_KEYPOINT& keypoint : db->get_reference_set()) {
    met.emplace_back(keypoint.get_name());
    db->associate_registers_signal_to_signal("new" + met.back(), "new" + met.back());
    db->associate_registers_instance_to_signal("i" + met.back(), "E", "dff", "i" + met.back());
  }
  EXPECT_THAT(met, ElementsAre("a", "u"));
}

TEST_F(Handles, WalkMeetsTheMapsInOrderOfCreation) {
  db->associate_registers_signal_to_signal("b", "y");
  db->associate_registers_signal_to_signal("a", "x");
  std::vector<std::string> met;
  for (const KPT_REGISTER_TRANSFORMATION& map : db->get_transformation_set()) {
    met.emplace_back(map.get_reference(0).get_name());
  }
  EXPECT_THAT(met, ElementsAre("b", "a"));
  EXPECT_EQ(db->get_transformation_set().size(), 2U);
}

TEST_F(Handles, MapsMayComeAndGoDuringAWalk) {
  for (const char* name : {"a", "b", "c"}) {
    db->associate_registers_signal_to_signal(name, name);
  }
  std::vector<std::string> met;
  for (const KPT_REGISTER_TRANSFORMATION& map : db->get_transformation_set()) {
    met.emplace_back(map.get_reference(0).get_name());
    db.set().delete_map(db.r_map("b"));
    db->associate_registers_signal_to_signal("new" + met.back(), "new" + met.back());
  }
  EXPECT_THAT(met, ElementsAre("a", "c"));
}

// ---- the map of a register ----

TEST_F(Handles, MapIsFoundByItsNumber) {
  db->associate_registers_signal_to_signal("a", "x");
  db->associate_registers_signal_to_signal("b", "y");
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("b");
  EXPECT_EQ(map.get_number(), 2U);
  EXPECT_EQ(db->get_transformation_set().get_map(2), map);
}

TEST_F(Handles, NumbersThatNoMapHasFindNone) {
  db->associate_registers_signal_to_signal("a", "x");
  EXPECT_TRUE(db->get_transformation_set().get_map(0).is_null());
  EXPECT_TRUE(db->get_transformation_set().get_map(2).is_null());
  EXPECT_TRUE(db->get_transformation_set().get_map(std::numeric_limits<std::uint32_t>::max()).is_null());
}

TEST_F(Handles, NumberOfTheMapOfARegisterIsAskedForBySide) {
  db->associate_registers_signal_to_signal("a", "x");
  db->associate_registers_signal_to_signal("b", "b");
  EXPECT_EQ(db->get_transformation_set().get_number_of_map(KPT_REFERENCE_SET, r("b")), 2U);
  EXPECT_EQ(db->get_transformation_set().get_number_of_map(KPT_TRANSFORMED_SET, t("b")), 2U);
  EXPECT_EQ(db->get_transformation_set().get_number_of_map(KPT_TRANSFORMED_SET, r("b")), 0U);
}

TEST_F(Handles, NumberOfTheMapIsNoneForARegisterWithoutAMap) {
  const DATABASE other;
  db->associate_registers_signal_to_signal("a", "x");
  db->associate_registers_signal_to_signal("b", "y");
  other->associate_registers_signal_to_signal("a", "x");
  db->set_eliminated_register_stuck_at_zero("x");
  const KPT_TRANSFORMATION_SET maps = db->get_transformation_set();
  EXPECT_EQ(maps.get_number_of_map(KPT_TRANSFORMED_SET, t("x")), 0U);
  EXPECT_EQ(maps.get_number_of_map(KPT_REFERENCE_SET, KPT_REGISTER_KEYPOINT()), 0U);
  EXPECT_EQ(maps.get_number_of_map(KPT_REFERENCE_SET, other->get_reference_set().get_register("a")), 0U);
}

TEST_F(Handles, NumberOfAnAbsorbedMapIsNeverGivenOutAgain) {
  db->associate_registers_signal_to_signal("a", "x");
  db->associate_registers_signal_to_signal("b", "y");
  db->set_merged_registers("x", "y");
  db->associate_registers_signal_to_signal("c", "z");
  EXPECT_TRUE(db->get_transformation_set().get_map(2).is_null());
  EXPECT_EQ(db->get_reference_register_transformation("c").get_number(), 3U);
}

TEST_F(Handles, MapOfABlockInstanceIsFoundByItsHandle) {
  db->associate_registers_instance_to_instance("u", "E", "dff", "v", "E", "dff");
  const KPT_REGISTER_KEYPOINT u = db->get_reference_set().get_register("u", "E", "dff");
  const KPT_REGISTER_KEYPOINT v = db->get_transformed_set().get_register("v", "E", "dff");
  EXPECT_EQ(db->get_register_transformation(u).get_transformed(0), v);
  EXPECT_EQ(db->get_register_transformation(v).get_reference(0), u);
  EXPECT_EQ(db->get_reference_register_transformation(u), db->get_register_transformation(u));
  EXPECT_EQ(db->get_transformed_register_transformation(v), db->get_register_transformation(u));
}

TEST_F(Handles, MapIsAskedForBySide) {
  db->associate_registers_signal_to_signal("a", "a");
  EXPECT_TRUE(db->get_transformed_register_transformation(r("a")).is_null());
  EXPECT_TRUE(db->get_reference_register_transformation(t("a")).is_null());
}

TEST_F(Handles, RegisterWithoutAMapHasANullMap) {
  const DATABASE other;
  db->associate_registers_signal_to_signal("a", "x");
  other->associate_registers_signal_to_signal("a", "x");
  db->set_eliminated_register_stuck_at_zero("x");
  KPT_REGISTER_KEYPOINT_IMPL alone(0, "a");
  EXPECT_TRUE(db->get_register_transformation(t("x")).is_null());
  EXPECT_TRUE(db->get_register_transformation(KPT_REGISTER_KEYPOINT()).is_null());
  EXPECT_TRUE(db->get_register_transformation(KPT_REGISTER_KEYPOINT(&alone)).is_null());
  EXPECT_TRUE(db->get_register_transformation(other->get_reference_set().get_register("a")).is_null());
}

// ---- the whole of a map ----

TEST_F(Handles, GroupsListWhatTheMapLists) {
  db->associate_registers_signal_to_signal("a", "x");
  db->set_replicated_registers("x", "y");
  db->set_inverter_retimed_register("y");
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("a");
  EXPECT_THAT(names_of(map.get_reference_group(0, false)), ElementsAre("a"));
  EXPECT_TRUE(map.get_reference_group(0, true).empty());
  EXPECT_THAT(names_of(map.get_transformed_group(0, false)), ElementsAre("x"));
  EXPECT_THAT(names_of(map.get_transformed_group(0, true)), ElementsAre("y"));
  EXPECT_EQ(map.get_transformed_group(0, true)[0], t("y"));
  EXPECT_TRUE(map.get_transformed_group(0, true)[1].is_null());
}

TEST_F(Handles, GroupsBeyondTheIndicesAreEmpty) {
  db.fsm("a b", "x y z", {"00 001", "11 110"});
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("a");
  EXPECT_EQ(map.get_number_of_indices(KPT_REFERENCE_SET), 2U);
  EXPECT_EQ(map.get_number_of_indices(KPT_TRANSFORMED_SET), 3U);
  EXPECT_THAT(names_of(map.get_reference_group(1, false)), ElementsAre("b"));
  EXPECT_TRUE(map.get_reference_group(2, false).empty());
  EXPECT_TRUE(map.get_transformed_group(std::numeric_limits<std::size_t>::max(), true).empty());
}

TEST_F(Handles, KeypointThatIsNoRegisterIsANullHandleInItsGroup) {
  kpt_test::REGISTERS k;
  const KPT_KEYPOINT_LIST group{nullptr, k.no_register("k")};
  const KPT_TRANSFORMATION_IMPL* map =
      db.impl().add_to_transformation_set({{group, {}}}, {{k.list("x"), {}}}, KPT_NOT_ELIMINATED);
  const KPT_REGISTER_TRANSFORMATION handle(const_cast<KPT_TRANSFORMATION_IMPL*>(map));
  EXPECT_THAT(names_of(handle.get_reference_group(0, false)), ElementsAre("null", "null"));
}

TEST_F(Handles, MapTellsItsElimination) {
  db->associate_registers_signal_to_signal("a", "x");
  EXPECT_EQ(db->get_reference_register_transformation("a").get_elimination(), KPT_NOT_ELIMINATED);
  db->set_eliminated_register_stuck_at_one("x");
  EXPECT_EQ(db->get_reference_register_transformation("a").get_elimination(), KPT_STUCK_AT_ONE);
}

TEST_F(Handles, MapListsItsAttributesByName) {
  db->associate_registers_signal_to_signal("a", "x");
  const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation("a");
  map.add_attribute("pass", "7");
  map.add_attribute("by", "opt");
  EXPECT_THAT(map.get_attributes(), ElementsAre(Pair("by", "opt"), Pair("pass", "7")));
}

// ---- ids ----

class IdCounters : public Handles {
 protected:
  ~IdCounters() override {
    KPT_KEYPOINTS_DB_IMPL::s_r_id = m_r_id;
    KPT_KEYPOINTS_DB_IMPL::s_t_id = m_t_id;
  }
  void set_counters(long r_id, long t_id) {
    KPT_KEYPOINTS_DB_IMPL::s_r_id = r_id;
    KPT_KEYPOINTS_DB_IMPL::s_t_id = t_id;
  }

 private:
  long m_r_id = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  long m_t_id = KPT_KEYPOINTS_DB_IMPL::s_t_id;
};

TEST_F(IdCounters, MovePastTheHighestIdOfEachSide) {
  set_counters(0, 0);
  db.impl().add_to_register_set(KPT_REFERENCE_SET, 7, "a");
  db.impl().add_to_register_set(KPT_REFERENCE_SET, 12, "u", "E", "dff");
  db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 3, "x");
  db->move_id_counters_past_own_ids();
  db->associate_registers_signal_to_signal("b", "y");
  EXPECT_EQ(r("b").get_id(), 13);
  EXPECT_EQ(t("y").get_id(), 4);
}

TEST_F(IdCounters, NeverMoveBack) {
  set_counters(100, 200);
  db.impl().add_to_register_set(KPT_REFERENCE_SET, 7, "a");
  db->move_id_counters_past_own_ids();
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 100);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, 200);
}

TEST_F(IdCounters, StopAtTheHighestNumber) {
  set_counters(0, 0);
  db.impl().add_to_register_set(KPT_REFERENCE_SET, std::numeric_limits<long>::max(), "a");
  db->move_id_counters_past_own_ids();
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, std::numeric_limits<long>::max());
}

}  // namespace
