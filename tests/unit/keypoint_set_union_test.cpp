// Unions of keypoint sets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "tests/support/keypoint_sets.h"

namespace {

using kpt_test::ids_in;
using kpt_test::names_in;
using testing::ElementsAre;

TEST(KeypointSetUnion, AddsWhatIsMissingWithFreshIds) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(101, "a");
  other.add_register(102, "q", "u1", "dff");
  other.add_register(103, "b");
  long next_id = 40;
  EXPECT_TRUE(set.make_union(other, next_id));
  EXPECT_EQ(next_id, 42);
  EXPECT_THAT(names_in(set), ElementsAre("a", "b", "q"));
  EXPECT_THAT(ids_in(set), ElementsAre(1, 41, 42));
  EXPECT_EQ(set.get_register("q", "", "dff")->get_entity_name(), "u1");
  EXPECT_TRUE(set.get_register("q", "", "dff")->register_is_blockinstance());
}

TEST(KeypointSetUnion, AddsManyToAnEmptySetInTheirOrder) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  for (int k = 0; k < 100; ++k) {
    other.add_register(k, "signal " + std::to_string(k));
    other.add_register(k, "instance " + std::to_string(k), "u1", "dff");
  }
  long next_id = 0;
  EXPECT_TRUE(set.make_union(other, next_id));
  EXPECT_EQ(names_in(set), names_in(other));
}

// The register may be the same as the other set's register of its present kind.
TEST(KeypointSetUnion, TellsNoNamesakeOfARegisterWhoseKindHasChanged) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  KPT_REGISTER_KEYPOINT_IMPL* const changed = other.add_register(101, "a");
  KPT_REGISTER_KEYPOINT_IMPL* const same = other.add_register(102, "b");
  changed->substitute_with_instance("a", "u1", "dff");
  long next_id = 0;
  KPT_NAMESAKES namesakes;
  EXPECT_TRUE(set.make_union(other, next_id, &namesakes));
  EXPECT_EQ(namesakes.find(KPT_KEYPOINT::slot_of(changed)), nullptr);
  EXPECT_EQ(namesakes.find(KPT_KEYPOINT::slot_of(same)), set.get_register("b"));
  EXPECT_THAT(names_in(set), ElementsAre("a", "b"));
}

TEST(KeypointSetUnion, LeavesTheOtherSetAlone) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = other.add_register(101, "a");
  long next_id = 0;
  set.make_union(other, next_id);
  EXPECT_THAT(ids_in(other), ElementsAre(101));
  EXPECT_EQ(other.get_register("a"), keypoint);
  EXPECT_NE(set.get_register("a"), keypoint);
}

TEST(KeypointSetUnion, CarriesNoAttributesOver) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(101, "a")->add_attribute("note", "x");
  long next_id = 0;
  set.make_union(other, next_id);
  EXPECT_EQ(set.get_register("a")->get_attribute("note"), "");
}

TEST(KeypointSetUnion, InstanceThatDiffersInItsEntityAloneIsThere) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a", "u1", "dff");
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(2, "a", "u2", "dff");
  long next_id = 5;
  EXPECT_TRUE(set.make_union(other, next_id));
  EXPECT_EQ(next_id, 5);
  EXPECT_EQ(set.get_register("a", "", "dff")->get_entity_name(), "u1");
}

TEST(KeypointSetUnion, WithItselfAddsNothing) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "q", "u1", "dff");
  long next_id = 5;
  EXPECT_TRUE(set.make_union(set, next_id));
  EXPECT_EQ(next_id, 5);
  EXPECT_THAT(ids_in(set), ElementsAre(1, 2));
}

TEST(KeypointSetUnion, WithAnEmptySetAddsNothing) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  long next_id = 5;
  EXPECT_TRUE(set.make_union(other, next_id));
  EXPECT_EQ(next_id, 5);
  EXPECT_TRUE(set.is_empty());
}

TEST(KeypointSetUnion, LooksARenamedRegisterUpUnderItsNewName) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "new");
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(101, "old")->set_element_name("new");
  other.add_register(102, "other")->set_element_name("newer");
  long next_id = 5;
  EXPECT_TRUE(set.make_union(other, next_id));
  EXPECT_EQ(next_id, 6);
  EXPECT_THAT(names_in(set), ElementsAre("new", "newer"));
  EXPECT_EQ(set.get_register("newer")->get_kpid(), 6);
}

// The register that was entered as "a" has the name "b" now, which this set does
// not have. The walk visits only what was there before.
TEST(KeypointSetUnion, WithItselfAddsARenamedRegisterUnderItsNewName) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a")->set_element_name("b");
  long next_id = 5;
  EXPECT_TRUE(set.make_union(set, next_id));
  EXPECT_EQ(next_id, 6);
  EXPECT_THAT(ids_in(set), ElementsAre(1, 6));
}

TEST(KeypointSetUnion, SignalThatBecameAnInstanceIsAddedAsASignal) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(101, "a")->substitute_with_instance("b", "u1", "dff");
  long next_id = 0;
  EXPECT_TRUE(set.make_union(other, next_id));
  ASSERT_NE(set.get_register("b"), nullptr);
  EXPECT_TRUE(set.get_register("b")->register_is_signal());
}

TEST(KeypointSetUnion, LeavesDeletedRegistersOut) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
  other.add_register(101, "a");
  other.add_register(102, "b");
  other.delete_register("a");
  long next_id = 0;
  set.make_union(other, next_id);
  EXPECT_THAT(names_in(set), ElementsAre("b"));
}

// --- saving ---

}  // namespace
