// A union consumes a translated copy: the second database does not change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using namespace kpt_test;

class SecondDatabaseLeft : public testing::Test {
 protected:
  void SetUp() override {
    db2.associate_registers_signal_to_signal("x", "p");
    db2.associate_registers_signal_to_signal("y", "q");
    db2.set_merged_registers("p", "q");
    db2.associate_registers_signal_to_signal("z", "s");
    db2.set_inverter_retimed_register("s");
    db2.set_replicated_registers("s", "s_copy");
    db2.associate_registers_signal_to_signal("v", "w");
    db2.set_eliminated_register_no_fanout("w");
    db2.associate_registers_fsm_signals({"f0", "f1"}, {"g0"}, client_table({"00 1", "11 0"}));
    db2.associate_registers_instance_to_instance("u", "e", "dff", "u", "e", "dff");
  }
  static void record_first(KPT_KEYPOINTS_DB_IMPL& db) {
    db.associate_registers_signal_to_signal("a", "x");
    db.associate_registers_signal_to_signal("b", "z");
    db.set_replicated_registers("x", "v");
    db.associate_registers_signal_to_signal("c", "f1");
  }

  KPT_KEYPOINTS_DB_IMPL db2{"second"};
};

TEST_F(SecondDatabaseLeft, ByteForByteWhenSaved) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  record_first(db1);
  const std::string before = saved(db2);
  EXPECT_TRUE(db1.unite_db(db2));
  EXPECT_EQ(saved(db2), before);
}

TEST_F(SecondDatabaseLeft, WithEveryRegisterLeadingToTheMapThatItLedTo) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  record_first(db1);
  const auto entries = [&] {
    std::vector<const void*> maps;
    for (const KPT_KEYPOINT* k : db2.get_reference_set()->get_list_of_keypoints()) {
      maps.push_back(db2.get_transformation_set()->get_map_of_r_keypoint(k));
    }
    for (const KPT_KEYPOINT* k : db2.get_transformed_set()->get_list_of_keypoints()) {
      maps.push_back(db2.get_transformation_set()->get_map_of_t_keypoint(k));
    }
    return maps;
  };
  const auto before = entries();
  db1.unite_db(db2);
  EXPECT_EQ(entries(), before);
}

TEST_F(SecondDatabaseLeft, AfterAUnionThatFailed) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  db1.associate_registers_fsm_signals({"a"}, {"x"}, client_table({"0 0", "1 1"}));
  db1.associate_registers_fsm_signals({"b"}, {"y"}, client_table({"0 0", "1 1"}));
  const std::string before = saved(db2);
  EXPECT_FALSE(db1.unite_db(db2));
  EXPECT_EQ(saved(db2), before);
}

// If the union consumed the second database itself, to save the copy, flows in
// which two variants of the first stage share the second would fail.
TEST_F(SecondDatabaseLeft, BecauseSeveralFirstStagesMayShareIt) {
  KPT_KEYPOINTS_DB_IMPL variant_1("first");
  KPT_KEYPOINTS_DB_IMPL variant_2("first");
  record_first(variant_1);
  record_first(variant_2);
  EXPECT_TRUE(variant_1.unite_db(db2));
  EXPECT_TRUE(variant_2.unite_db(db2));
  EXPECT_EQ(maps_of(variant_1), maps_of(variant_2));
  EXPECT_EQ(names_of(variant_1.get_transformed_set()), names_of(variant_2.get_transformed_set()));
}

TEST_F(SecondDatabaseLeft, AndOutlivedByWhatWasUnitedFromIt) {
  KPT_KEYPOINTS_DB_IMPL db1("first");
  {
    KPT_KEYPOINTS_DB_IMPL other("other");
    db1.associate_registers_signal_to_signal("a", "x");
    other.associate_registers_signal_to_signal("x", "p");
    EXPECT_TRUE(db1.unite_db(other));
  }
  EXPECT_THAT(maps_of(db1), ElementsAre("a~ -> p~"));
}

}  // namespace
