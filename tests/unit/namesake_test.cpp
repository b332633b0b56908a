// Registers of one set are looked up and deleted in another set by their present names.
#include <gtest/gtest.h>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"

namespace {

class Namesake : public testing::Test {
 protected:
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT_SET_IMPL other;
};

TEST_F(Namesake, OfASignalIsTheSignalOfThatName) {
  KPT_KEYPOINT* x = set.add_register(1, "x");
  set.add_register(2, "x", "u", "dff");
  EXPECT_EQ(set.get_namesake(*other.add_register(1, "x"), other), x);
}

TEST_F(Namesake, OfAnInstanceIsTheInstanceOfThatNameAndType) {
  set.add_register(1, "x");
  KPT_KEYPOINT* x = set.add_register(2, "x", "u", "dff");
  EXPECT_EQ(set.get_namesake(*other.add_register(1, "x", "v", "dff"), other), x);
  EXPECT_EQ(set.get_namesake(*other.add_register(1, "x", "u", "latch"), other), nullptr);
}

TEST_F(Namesake, FollowsARenaming) {
  KPT_KEYPOINT* y = set.add_register(1, "y");
  KPT_REGISTER_KEYPOINT_IMPL* renamed = other.add_register(1, "x");
  renamed->set_element_name("y");
  EXPECT_EQ(set.get_namesake(*renamed, other), y);
}

TEST_F(Namesake, FollowsAChangeOfKind) {
  KPT_KEYPOINT* instance = set.add_register(1, "x", "u", "dff");
  KPT_REGISTER_KEYPOINT_IMPL* changed = other.add_register(1, "x");
  changed->substitute_with_instance("x", "u", "dff");
  EXPECT_EQ(set.get_namesake(*changed, other), instance);
}

// A set has no hash for a register of another set.
TEST_F(Namesake, IsFoundAlsoForARegisterOfAThirdSetOrOfNone) {
  KPT_KEYPOINT_SET_IMPL third;
  KPT_KEYPOINT* x = set.add_register(1, "x");
  const KPT_REGISTER_KEYPOINT_IMPL outside(1, "x");
  EXPECT_EQ(set.get_namesake(*third.add_register(1, "x"), other), x);
  EXPECT_EQ(set.get_namesake(outside, other), x);
}

TEST_F(Namesake, IsDeletedWhereTheRegisterItselfHasLeft) {
  KPT_REGISTER_KEYPOINT_IMPL* earlier = set.add_register(1, "x");
  set.add_register(2, "x");
  EXPECT_TRUE(set.delete_namesake(*earlier));
  EXPECT_EQ(set.get_register("x"), nullptr);
  EXPECT_FALSE(set.delete_namesake(*earlier));
}

TEST_F(Namesake, IsDeletedForARegisterOfAnotherSet) {
  set.add_register(1, "y");
  set.add_register(2, "x");
  EXPECT_TRUE(set.delete_namesake(*other.add_register(1, "x")));
  EXPECT_EQ(set.get_register("x"), nullptr);
  EXPECT_NE(set.get_register("y"), nullptr);
  EXPECT_NE(other.get_register("x"), nullptr);
}

TEST_F(Namesake, IsDeletedAndNotTheRegisterThatWasRenamed) {
  KPT_REGISTER_KEYPOINT_IMPL* renamed = set.add_register(1, "x");
  set.add_register(2, "y");
  renamed->set_element_name("y");
  EXPECT_TRUE(set.delete_namesake(*renamed));
  EXPECT_EQ(set.get_register("x"), renamed);
  EXPECT_EQ(set.get_register("y"), nullptr);
}

}  // namespace
