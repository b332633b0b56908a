#include "db/kpt/kpt_transformation_set.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "host/kpt_host.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::EMPTY_R_SIDE;
using kpt_test::EMPTY_T_SIDE;
using kpt_test::HOST_LINES;
using kpt_test::index_differences;
using kpt_test::make_table;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

class TransformationSet : public testing::Test {
 protected:
  std::vector<KPT_TRANSFORMATION_IMPL*> maps() const {
    std::vector<KPT_TRANSFORMATION_IMPL*> all;
    for (KPT_TRANSFORMATION_IMPL* map : set.get_list_of_register_transformations()) {
      all.push_back(map);
    }
    return all;
  }

  kpt_test::REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  const KPT_TRANSFORMATION_SET handle{&set};
};

TEST_F(TransformationSet, StartsEmpty) {
  EXPECT_THAT(maps(), IsEmpty());
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 0U);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 0U);
}

// --- add_map ---

TEST_F(TransformationSet, OneToOneMapIsFoundFromBothRegisters) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  EXPECT_EQ(text_of(*map), "a~ -> x~");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), map);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), map);
  EXPECT_THAT(maps(), ElementsAre(map));
}

TEST_F(TransformationSet, SidesAreIndexedApart) {
  set.add_map(k["a"], k["x"]);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["a"]), nullptr);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["x"]), nullptr);
}

TEST_F(TransformationSet, OneKeypointMayStandOnBothSides) {
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["b"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["b"], k["c"]);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["b"]), first);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), second);
}

TEST_F(TransformationSet, MapsAreListedInOrderOfCreation) {
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["b"], k["y"]);
  KPT_TRANSFORMATION_IMPL* third = set.add_map(k["a"], k["z"]);
  EXPECT_THAT(maps(), ElementsAre(first, second, third));
}

TEST_F(TransformationSet, MachineMapIsFoundFromEveryStateRegister) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k.list("a b"), k.list("x y z"), make_table({"00 001", "11 100"}));
  EXPECT_EQ(text_of(*map), "a~|b~ -> x~|y~|z~");
  EXPECT_TRUE(map->map_has_fsm_transformation());
  EXPECT_EQ(states_of(map->state_table()), (STATES{"00 001", "11 100"}));
  for (const char* name : {"a", "b"}) {
    EXPECT_EQ(set.get_map_of_r_keypoint(k[name]), map) << name;
  }
  for (const char* name : {"x", "y", "z"}) {
    EXPECT_EQ(set.get_map_of_t_keypoint(k[name]), map) << name;
  }
  EXPECT_THAT(maps(), ElementsAre(map));
}

TEST_F(TransformationSet, MachineMapKeepsACopyOfTheTable) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 0", "1 1"});
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k.list("a"), k.list("x"), table);
  table.set_transformed_entry(1, 1, true);
  EXPECT_EQ(states_of(map->state_table()), (STATES{"0 0", "1 1"}));
}

TEST_F(TransformationSet, MachineMapMayHaveNoRegisters) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(KPT_KEYPOINT_LIST(), KPT_KEYPOINT_LIST(), KPT_STATE_TABLE_IMPL(0, 0, 0));
  EXPECT_EQ(text_of(*map), " -> ");
  EXPECT_THAT(maps(), ElementsAre(map));
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 0U);
}

TEST_F(TransformationSet, GeneralMapIsFoundFromEveryGroupOfEveryIndex) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k.side("a b~c|~d"), k.side("x~y|z~"), KPT_STUCK_AT_ONE);
  EXPECT_EQ(text_of(*map), "a b~c|~d -> x~y|z~");
  EXPECT_EQ(map->get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_FALSE(map->map_has_fsm_transformation());
  for (const char* name : {"a", "b", "c", "d"}) {
    EXPECT_EQ(set.get_map_of_r_keypoint(k[name]), map) << name;
  }
  for (const char* name : {"x", "y", "z"}) {
    EXPECT_EQ(set.get_map_of_t_keypoint(k[name]), map) << name;
  }
}

TEST_F(TransformationSet, GeneralMapWithATableKeepsTableAndStatus) {
  const NI_PAIR_VECTOR r = k.side("a~b");
  const NI_PAIR_VECTOR t = k.side("x~|y~");
  KPT_TRANSFORMATION_IMPL* map = set.add_map(r, t, make_table({"0 01", "1 10"}), KPT_NO_FANOUT);
  EXPECT_TRUE(map->map_has_fsm_transformation());
  EXPECT_EQ(states_of(map->state_table()), (STATES{"0 01", "1 10"}));
  EXPECT_EQ(map->get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), map);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), map);
}

TEST_F(TransformationSet, GeneralMapCopiesWhatItIsGiven) {
  NI_PAIR_VECTOR r = k.side("a~");
  const NI_PAIR_VECTOR t = k.side("x~");
  KPT_TRANSFORMATION_IMPL* map = set.add_map(r, t, KPT_NOT_ELIMINATED);
  r[0].first.push_back(k["b"]);
  EXPECT_EQ(text_of(*map), "a~ -> x~");
}

TEST_F(TransformationSet, GeneralMapTakesOverWhatIsMovedIn) {
  KPT_TRANSFORMATION_IMPL* plain = set.add_map(k.side("a~"), k.side("x~"), KPT_NOT_ELIMINATED);
  KPT_TRANSFORMATION_IMPL* machine = set.add_map(k.side("b~"), k.side("y~"), make_table({"0 1"}), KPT_STUCK_AT_ZERO);
  EXPECT_EQ(text_of(*plain), "a~ -> x~");
  EXPECT_EQ(text_of(*machine), "b~ -> y~");
  EXPECT_EQ(states_of(machine->state_table()), (STATES{"0 1"}));
  EXPECT_THAT(index_differences(set, {}), IsEmpty());
}

TEST_F(TransformationSet, CopiedMapIsAMapOfItsOwnWithoutAttributes) {
  KPT_TRANSFORMATION_IMPL source(k.side("a~b"), k.side("x~|y~"), make_table({"0 01"}), KPT_NO_FANOUT);
  source.add_attribute("note", "first");
  KPT_TRANSFORMATION_IMPL* map = set.add_map(source);
  EXPECT_NE(map, &source);
  EXPECT_TRUE(*map == source);
  EXPECT_EQ(map->get_elim_status(), KPT_NO_FANOUT);
  EXPECT_EQ(map->get_attribute("note"), "");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), map);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), map);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), map);
  EXPECT_THAT(maps(), ElementsAre(map));
}

TEST_F(TransformationSet, CopyOfItsOwnMapTakesTheEntriesOver) {
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(*first);
  EXPECT_THAT(maps(), ElementsAre(first, second));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), second);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), second);
}

TEST_F(TransformationSet, CopyReportsEachEmptyIndexOfTheSourceTwice) {
  const KPT_TRANSFORMATION_IMPL source(k.side("~|a~"), k.side("x~|~|~"), KPT_NOT_ELIMINATED);
  const HOST_LINES lines;
  set.add_map(source);
  EXPECT_THAT(lines.debug(),
              ElementsAre(EMPTY_R_SIDE, EMPTY_R_SIDE, EMPTY_T_SIDE, EMPTY_T_SIDE, EMPTY_T_SIDE, EMPTY_T_SIDE));
}

TEST_F(TransformationSet, CopyEntersARegisterThatIsListedTwiceOnce) {
  const KPT_TRANSFORMATION_IMPL source(k.side("a a~a"), k.side("x~"), KPT_NOT_ELIMINATED);
  KPT_TRANSFORMATION_IMPL* map = set.add_map(source);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), map);
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 1U);
}

TEST_F(TransformationSet, NullKeypointsStayInTheMapAndAreEnteredNowhere) {
  set.add_map(nullptr, nullptr);
  set.add_map(k.list("null a"), k.list("null"), make_table({"00 0"}));
  set.add_map(k.side("null b~null"), k.side("~null"), KPT_NOT_ELIMINATED);
  set.add_map(KPT_TRANSFORMATION_IMPL(k.side("null~"), k.side("null x~null"), KPT_NOT_ELIMINATED));
  EXPECT_EQ(text_of(*maps()[2]), "null b~null -> ~null");
  EXPECT_EQ(set.get_map_of_r_keypoint(nullptr), nullptr);
  EXPECT_EQ(set.get_map_of_t_keypoint(nullptr), nullptr);
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 2U);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 1U);
}

// --- make_keypoint_mapping_hash_entries ---

TEST_F(TransformationSet, EnteringAVectorPointsBothGroupsToTheMap) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_TRANSFORMED_SET, k.side("y~z|w~"), map));
  for (const char* name : {"y", "z", "w"}) {
    EXPECT_EQ(set.get_map_of_t_keypoint(k[name]), map) << name;
    EXPECT_EQ(set.get_map_of_r_keypoint(k[name]), nullptr) << name;
  }
  EXPECT_EQ(text_of(*map), "a~ -> x~");
}

TEST_F(TransformationSet, EnteringOverwritesEarlierEntries) {
  set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["b"], k["y"]);
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("a~"), second));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), second);
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 2U);
}

TEST_F(TransformationSet, EnteringForAnUnknownSideMeansTheReferenceIndex) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(static_cast<KPT_SET_ENUM>(5), k.side("b~"), map));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), map);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["b"]), nullptr);
}

TEST_F(TransformationSet, EnteringForAMapThatIsNotOfTheSetEntersNothing) {
  KPT_TRANSFORMATION_IMPL stranger(k["a"], k["x"]);
  KPT_TRANSFORMATION_SET_IMPL other;
  KPT_TRANSFORMATION_IMPL* others = other.add_map(k["b"], k["y"]);
  set.add_map(k["c"], k["z"]);
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("a~"), &stranger));
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("b~"), others));
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("a~"), nullptr));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), nullptr);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), nullptr);
}

// --- lookups ---

TEST_F(TransformationSet, LookingUpAnUnknownKeypointEntersNothing) {
  set.add_map(k["a"], k["x"]);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), nullptr);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["y"]), nullptr);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 1U);
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 1U);
  EXPECT_EQ(maps().size(), 1U);
}

TEST_F(TransformationSet, TwoSetsMayIndexTheSameKeypoints) {
  KPT_TRANSFORMATION_SET_IMPL beside;
  KPT_TRANSFORMATION_IMPL* ours = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* theirs = beside.add_map(k["a"], k["x"]);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), ours);
  EXPECT_EQ(beside.get_map_of_r_keypoint(k["a"]), theirs);
  EXPECT_TRUE(set.delete_map(ours));
  EXPECT_EQ(beside.get_map_of_t_keypoint(k["x"]), theirs);
}

TEST_F(TransformationSet, EntriesOfADestroyedSetMeanNothingToTheNext) {
  auto earlier = std::make_unique<KPT_TRANSFORMATION_SET_IMPL>();
  earlier->add_map(k["a"], k["x"]);
  earlier.reset();
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["b"], k["y"]);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), nullptr);
  EXPECT_TRUE(set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("a~"), map));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), map);
}

// --- delete_map ---

TEST_F(TransformationSet, DeletedMapLeavesListAndIndexes) {
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k.side("b~c|d~"), k.side("y~|~z"), KPT_NOT_ELIMINATED);
  KPT_TRANSFORMATION_IMPL* third = set.add_map(k["e"], k["w"]);
  EXPECT_TRUE(set.delete_map(second));
  EXPECT_THAT(maps(), ElementsAre(first, third));
  for (const char* name : {"b", "c", "d"}) {
    EXPECT_EQ(set.get_map_of_r_keypoint(k[name]), nullptr) << name;
  }
  for (const char* name : {"y", "z"}) {
    EXPECT_EQ(set.get_map_of_t_keypoint(k[name]), nullptr) << name;
  }
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 2U);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 2U);
  EXPECT_THAT(index_differences(set, {}), IsEmpty());
}

TEST_F(TransformationSet, MapThatIsNotOfTheSetIsNotDeleted) {
  KPT_TRANSFORMATION_IMPL stranger(k["a"], k["x"]);
  KPT_TRANSFORMATION_SET_IMPL other;
  KPT_TRANSFORMATION_IMPL* others = other.add_map(k["b"], k["y"]);
  KPT_TRANSFORMATION_IMPL* ours = set.add_map(k["a"], k["x"]);
  EXPECT_FALSE(set.delete_map(&stranger));
  EXPECT_FALSE(set.delete_map(others));
  EXPECT_FALSE(set.delete_map(nullptr));
  EXPECT_THAT(maps(), ElementsAre(ours));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), ours);
  EXPECT_EQ(other.get_map_of_r_keypoint(k["b"]), others);
}

TEST_F(TransformationSet, DeletingAMapWhoseRegistersHaveNoEntryIsFine) {
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["a"], k["x"]);
  EXPECT_TRUE(set.delete_map(first));
  EXPECT_TRUE(set.delete_map(second));
  EXPECT_THAT(maps(), IsEmpty());
  EXPECT_EQ(set.index_size(KPT_REFERENCE_SET), 0U);
}

TEST_F(TransformationSet, DeletingReportsEachEmptyIndexOfTheMapTwice) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k.side("a~|~"), k.side("~"), KPT_NOT_ELIMINATED);
  const HOST_LINES lines;
  EXPECT_TRUE(set.delete_map(map));
  EXPECT_THAT(lines.debug(), ElementsAre(EMPTY_R_SIDE, EMPTY_R_SIDE, EMPTY_T_SIDE, EMPTY_T_SIDE));
}

TEST_F(TransformationSet, EntryOfARegisterThatTheDeletedMapDoesNotListIsAbsent) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  set.record_replicated_keypoint_map(k["copy"], map);
  EXPECT_TRUE(set.delete_map(map));
  EXPECT_EQ(set.get_map_of_t_keypoint(k["copy"]), nullptr);
}

// The entry that stayed must not lead to the map that gets the memory of the
// deleted one.
TEST_F(TransformationSet, EntryThatIsLeftBehindNeverLeadsToALaterMap) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  set.record_replicated_keypoint_map(k["copy"], map);
  set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, k.side("b~"), map);
  ASSERT_TRUE(set.delete_map(map));
  for (int n = 0; n < 1000; ++n) {
    set.add_map(k["c"], k["y"]);
    ASSERT_EQ(set.get_map_of_t_keypoint(k["copy"]), nullptr);
    ASSERT_EQ(set.get_map_of_r_keypoint(k["b"]), nullptr);
  }
  KPT_TRANSFORMATION_IMPL* anew = set.add_map(k["b"], k["copy"]);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["copy"]), anew);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), anew);
}

// --- record_replicated_keypoint_map ---

TEST_F(TransformationSet, ReplicaIsEnteredWithoutTouchingTheMap) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  EXPECT_TRUE(set.record_replicated_keypoint_map(k["copy"], map));
  EXPECT_EQ(set.get_map_of_t_keypoint(k["copy"]), map);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["copy"]), nullptr);
  EXPECT_EQ(text_of(*map), "a~ -> x~");
}

TEST_F(TransformationSet, ReplicaOfANullMapOrAStrangerIsEnteredNowhere) {
  KPT_TRANSFORMATION_IMPL stranger(k["a"], k["x"]);
  EXPECT_TRUE(set.record_replicated_keypoint_map(k["copy"], nullptr));
  EXPECT_TRUE(set.record_replicated_keypoint_map(k["copy"], &stranger));
  EXPECT_EQ(set.get_map_of_t_keypoint(k["copy"]), nullptr);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 0U);
}

TEST_F(TransformationSet, NullReplicaIsEnteredNowhere) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  EXPECT_TRUE(set.record_replicated_keypoint_map(nullptr, map));
  EXPECT_EQ(set.get_map_of_t_keypoint(nullptr), nullptr);
  EXPECT_EQ(set.index_size(KPT_TRANSFORMED_SET), 1U);
}

// --- find_eq_transformation_in_set ---

TEST_F(TransformationSet, LastOfSeveralMatchingMapsIsTheEqualOne) {
  set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["b"], k.another("x"));
  set.add_map(k["c"], k["y"]);
  const KPT_TRANSFORMATION_IMPL next(k.another("x"), k["z"]);
  EXPECT_EQ(set.find_eq_transformation_in_set(next), second);
}

TEST_F(TransformationSet, NoMapMatchesADifferentReferenceSide) {
  set.add_map(k["a"], k["x"]);
  const KPT_TRANSFORMATION_IMPL other_name(k["y"], k["z"]);
  const KPT_TRANSFORMATION_IMPL more_indices(k.side("x~|x~"), k.side("z~"), KPT_NOT_ELIMINATED);
  EXPECT_EQ(set.find_eq_transformation_in_set(other_name), nullptr);
  EXPECT_EQ(set.find_eq_transformation_in_set(more_indices), nullptr);
}

TEST_F(TransformationSet, NothingMatchesInAnEmptySet) {
  const KPT_TRANSFORMATION_IMPL map(k["a"], k["x"]);
  EXPECT_EQ(set.find_eq_transformation_in_set(map), nullptr);
}

// --- the handle ---

TEST_F(TransformationSet, HandleListsEveryMapInOrder) {
  set.add_map(k["a"], k["x"]);
  set.delete_map(set.add_map(k["b"], k["y"]));
  set.add_map(k["c"], k["z"]);
  const KPT_REGISTER_TRANSFORMATION_LIST list = handle.get_list_of_register_transformations();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].get_transformed(0).get_name(), "x");
  EXPECT_EQ(list[1].get_transformed(0).get_name(), "z");
}

TEST_F(TransformationSet, HandleOfAnEmptySetListsNothing) {
  EXPECT_THAT(handle.get_list_of_register_transformations(), IsEmpty());
}

TEST_F(TransformationSet, HandleIsNullWithoutASet) {
  EXPECT_TRUE(KPT_TRANSFORMATION_SET().is_null());
  EXPECT_FALSE(handle.is_null());
}

// --- destruction ---

// All memory of the maps is freed, and no keypoint is read: the address checks show that.
TEST(TransformationSetEnd, MapsMayListKeypointsThatAreGone) {
  const auto live_blocks = [] {
    unsigned long blocks = 0;
    for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
      blocks += tracker.live_blocks;
    }
    return blocks;
  };
  const unsigned long before = live_blocks();
  auto registers = std::make_unique<kpt_test::REGISTERS>();
  auto set = std::make_unique<KPT_TRANSFORMATION_SET_IMPL>();
  set->add_map((*registers)["a"], (*registers)["x"]);
  registers.reset();
  EXPECT_GT(live_blocks(), before);
  set.reset();
  EXPECT_EQ(live_blocks(), before);
}

// --- the checker itself ---

TEST_F(TransformationSet, CheckerReportsAMapThatDoesNotListTheRegister) {
  k.list("a x copy");  // ids 1 to 3
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  set.record_replicated_keypoint_map(k["copy"], map);
  EXPECT_THAT(index_differences(set, {k["copy"]}),
              ElementsAre("the transformed index leads from 'copy' (id 3) to map 0, not to no map"));
  kpt_test::EXPLANATIONS facts;
  facts.t.entered = {k["copy"]};
  EXPECT_THAT(index_differences(set, {}, facts), IsEmpty());
}

TEST_F(TransformationSet, CheckerCountsEntriesThatItWasNotShown) {
  KPT_TRANSFORMATION_IMPL* map = set.add_map(k["a"], k["x"]);
  set.record_replicated_keypoint_map(k["copy"], map);
  EXPECT_THAT(index_differences(set, {}),
              ElementsAre("the transformed index has 2 entries where 1 lead to a map and 0 may lead to none"));
  kpt_test::EXPLANATIONS facts;
  facts.t.dead = 1;
  EXPECT_THAT(index_differences(set, {}, facts), IsEmpty());
}

TEST_F(TransformationSet, CheckerReportsAnEntryThatIsMissing) {
  k.list("a x copy");  // ids 1 to 3
  set.add_map(k["a"], k["x"]);
  set.delete_map(set.add_map(k["a"], k["y"]));
  EXPECT_THAT(index_differences(set, {}),
              ElementsAre("the reference index leads from 'a' (id 1) to no map, not to map 0"));
  kpt_test::EXPLANATIONS facts;
  facts.r.erased = {k["a"]};
  EXPECT_THAT(index_differences(set, {}, facts), IsEmpty());
}

TEST_F(TransformationSet, CheckerReportsAnEntryThatLeadsToAnOlderMap) {
  k.list("a x copy");  // ids 1 to 3
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  set.add_map(k["a"], k["y"]);
  set.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, first->r_vec(), first);
  EXPECT_THAT(index_differences(set, {}),
              ElementsAre("the reference index leads from 'a' (id 1) to map 0, not to map 1"));
  kpt_test::EXPLANATIONS facts;
  facts.r.repointed = {k["a"]};
  EXPECT_THAT(index_differences(set, {}, facts), IsEmpty());
}

}  // namespace
