#include "db/kpt/kpt_register_transformation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include <type_traits>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::REGISTERS;
using testing::ElementsAre;
using testing::IsEmpty;

using MAP = KPT_TRANSFORMATION_IMPL;

std::string names(const KPT_REGISTER_KEYPOINT_LIST& list) {
  std::string text;
  for (const KPT_REGISTER_KEYPOINT& keypoint : list) {
    text += (text.empty() ? "" : " ") + (keypoint.is_null() ? std::string("null") : std::string(keypoint.get_name()));
  }
  return text;
}

class RegisterTransformation : public testing::Test {
 protected:
  REGISTERS k;
};

TEST_F(RegisterTransformation, ANullHandle) {
  EXPECT_TRUE(KPT_REGISTER_TRANSFORMATION().is_null());
  EXPECT_TRUE(KPT_REGISTER_TRANSFORMATION(nullptr).is_null());
  MAP map(k["r"], k["t"]);
  EXPECT_FALSE(KPT_REGISTER_TRANSFORMATION(&map).is_null());
}

TEST_F(RegisterTransformation, IsOnePointerCopiedByValue) {
  static_assert(sizeof(KPT_REGISTER_TRANSFORMATION) == sizeof(void*));
  static_assert(std::is_trivially_copyable_v<KPT_REGISTER_TRANSFORMATION>);
  MAP map(k["r"], k["t"]);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  const KPT_REGISTER_TRANSFORMATION copy = handle;
  EXPECT_TRUE(copy.add_attribute("a", "b"));
  EXPECT_EQ(handle.get_attribute("a"), "b");
}

TEST_F(RegisterTransformation, AOneToOneMapAnswersForItsTwoRegisters) {
  MAP map(k["r"], k["t"]);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  EXPECT_FALSE(handle.has_fsm());
  EXPECT_EQ(handle.get_reference(0).get_name(), "r");
  EXPECT_EQ(handle.get_transformed(0).get_name(), "t");
  EXPECT_THAT(handle.get_reference_equivalents(0), IsEmpty());
  EXPECT_THAT(handle.get_transformed_equivalents(0), IsEmpty());
  EXPECT_THAT(handle.get_reference_inverted_equivalents(0), IsEmpty());
  EXPECT_THAT(handle.get_transformed_inverted_equivalents(0), IsEmpty());
  EXPECT_TRUE(handle.is_positive_unate(0, 0));
  EXPECT_FALSE(handle.is_negative_unate(0, 0));
  EXPECT_EQ(handle.get_state_reference_size(), 1);
  EXPECT_EQ(handle.get_state_transformed_size(), 1);
  EXPECT_EQ(handle.get_number_of_states(), 2);
  EXPECT_FALSE(handle.is_stuck_at_zero());
  EXPECT_FALSE(handle.is_stuck_at_one());
  EXPECT_FALSE(handle.has_no_fanout());
}

TEST_F(RegisterTransformation, AStateMachineAnswersByIndex) {
  MAP map(k.side("a b~c|d~"), k.side("x~|~y z|w~"), make_table({"00 001", "01 010", "11 100"}), KPT_STUCK_AT_ONE);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  EXPECT_TRUE(handle.has_fsm());
  EXPECT_EQ(handle.get_state_reference_size(), 2);
  EXPECT_EQ(handle.get_state_transformed_size(), 3);
  EXPECT_EQ(handle.get_number_of_states(), 3);
  EXPECT_EQ(names(handle.get_reference_equivalents(0)), "b");
  EXPECT_EQ(names(handle.get_reference_inverted_equivalents(0)), "c");
  EXPECT_EQ(handle.get_transformed(1).get_name(), "y");
  EXPECT_EQ(names(handle.get_transformed_equivalents(1)), "z");
  EXPECT_EQ(names(handle.get_transformed_inverted_equivalents(1)), "");
  EXPECT_TRUE(handle.is_positive_unate(0, 0));
  EXPECT_TRUE(handle.is_negative_unate(0, 0));
  EXPECT_FALSE(handle.is_positive_unate(1, 0));
  EXPECT_FALSE(handle.is_negative_unate(0, 2));
  EXPECT_TRUE(handle.is_stuck_at_one());

  const KPT_STATE_TABLE table = handle.get_state_table();
  EXPECT_EQ(table.get_number_of_states(), 3);
  EXPECT_EQ(table.get_state_reference_size(), 2);
  EXPECT_EQ(table.get_state_transformed_size(), 3);
  EXPECT_EQ(table.get_reference_entry(2, 2), 1);
  EXPECT_EQ(table.get_transformed_entry(1, 3), 1);
  EXPECT_EQ(table.get_transformed_entry(1, 1), 0);
}

TEST_F(RegisterTransformation, EachStatusHasItsQuestion) {
  for (const KPT_ELIM_ENUM status :
       {KPT_NOT_ELIMINATED, KPT_STUCK_AT_ZERO, KPT_STUCK_AT_ONE, KPT_NO_FANOUT, KPT_ELIMINATED}) {
    MAP map(k.side("a~"), k.side("x~"), status);
    const KPT_REGISTER_TRANSFORMATION handle(&map);
    EXPECT_EQ(handle.is_stuck_at_zero(), status == KPT_STUCK_AT_ZERO);
    EXPECT_EQ(handle.is_stuck_at_one(), status == KPT_STUCK_AT_ONE);
    EXPECT_EQ(handle.has_no_fanout(), status == KPT_NO_FANOUT);
  }
}

TEST_F(RegisterTransformation, TheTableIsAnIndependentCopyAlsoOfAPlainMap) {
  MAP map(k["r"], k["t"]);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  KPT_STATE_TABLE table = handle.get_state_table();
  EXPECT_EQ(table.get_number_of_states(), 2);
  EXPECT_EQ(table.get_reference_entry(2, 1), 1);
  EXPECT_EQ(table.get_transformed_entry(2, 1), 1);
  EXPECT_TRUE(table.set_reference_entry(2, 1, false));
  EXPECT_EQ(handle.get_state_table().get_reference_entry(2, 1), 1);
}

TEST_F(RegisterTransformation, RepeatsOfTheRepresentativeAreLeftOut) {
  MAP map(k.side("r~"), k.side("a b a~"), KPT_NOT_ELIMINATED);
  EXPECT_EQ(names(KPT_REGISTER_TRANSFORMATION(&map).get_transformed_equivalents(0)), "b");
}

TEST_F(RegisterTransformation, EmptyIndicesHaveNoRegistersAndTellSo) {
  HOST_LINES lines;
  MAP map(k.side("~"), k.side(""), KPT_NOT_ELIMINATED);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  for (const unsigned short index : std::initializer_list<unsigned short>{0, 1, 65535}) {
    EXPECT_TRUE(handle.get_reference(index).is_null());
    EXPECT_TRUE(handle.get_transformed(index).is_null());
    EXPECT_THAT(lines.take_debug(), IsEmpty());
    EXPECT_THAT(handle.get_reference_equivalents(index), IsEmpty());
    EXPECT_THAT(handle.get_reference_inverted_equivalents(index), IsEmpty());
    EXPECT_THAT(handle.get_transformed_equivalents(index), IsEmpty());
    EXPECT_THAT(handle.get_transformed_inverted_equivalents(index), IsEmpty());
    EXPECT_THAT(lines.take_debug(),
                ElementsAre("Info: R side of map seems to be empty", "Info: R side of map seems to be empty",
                            "Info: T side of map seems to be empty", "Info: T side of map seems to be empty"));
    EXPECT_FALSE(handle.is_positive_unate(index, index));
    EXPECT_FALSE(handle.is_negative_unate(index, index));
  }
}

TEST_F(RegisterTransformation, WhatIsNoRegisterComesAsANullHandle) {
  NI_PAIR_VECTOR r = k.side("a null b~null");
  r[0].first.push_back(k.no_register("n"));
  NI_PAIR_VECTOR t(1);
  t[0].first.push_back(k.no_register("n"));
  MAP map(r, t, KPT_NOT_ELIMINATED);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  EXPECT_EQ(names(handle.get_reference_equivalents(0)), "null b null");
  EXPECT_EQ(names(handle.get_reference_inverted_equivalents(0)), "null");
  EXPECT_TRUE(handle.get_transformed(0).is_null());
}

TEST_F(RegisterTransformation, AttributesReachTheMap) {
  MAP map(k["r"], k["t"]);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  EXPECT_EQ(handle.get_attribute("a"), "");
  EXPECT_FALSE(handle.remove_attribute("a"));
  EXPECT_TRUE(handle.add_attribute("a", "1"));
  EXPECT_TRUE(handle.add_attribute("a", "2"));
  EXPECT_EQ(handle.get_attribute("a"), "2");
  EXPECT_EQ(map.get_attribute("a"), "2");
  EXPECT_TRUE(handle.remove_attribute("a"));
  EXPECT_FALSE(handle.remove_attribute("a"));
}

}  // namespace
