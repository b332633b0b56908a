// A map that is united into another one brings its elimination status.
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(AUnionTakesTheStatusOfTheOtherMap, WhateverTheOwnStatusWas) {
  REGISTERS k;
  for (const KPT_ELIM_ENUM own : {KPT_NOT_ELIMINATED, KPT_STUCK_AT_ZERO}) {
    for (const KPT_ELIM_ENUM status : {KPT_NOT_ELIMINATED, KPT_STUCK_AT_ONE, KPT_NO_FANOUT}) {
      const MAP plain(k.side("b~"), k.side("y~"), status);
      MAP map(k.side("a~"), k.side("x~"), own);
      EXPECT_TRUE(map.make_union(plain));
      EXPECT_EQ(map.get_elim_status(), status);
      MAP machine(k.side("a~"), k.side("x~"), make_table({"0 0", "1 1"}), own);
      EXPECT_TRUE(machine.make_union(plain));
      EXPECT_EQ(machine.get_elim_status(), status);
      MAP first_stage(k.side("a~"), k.side("b~"), own);
      KPT_KEYPOINT_LIST entered;
      KPT_KEYPOINT_LIST left;
      EXPECT_TRUE(first_stage.update_transformations(plain, entered, left));
      EXPECT_EQ(first_stage.get_elim_status(), status);
    }
  }
}

// A register that was merged with a living register lives again. With its old
// status, a union of stages would not compose the map, and the living register
// would be lost.
TEST(AUnionTakesTheStatusOfTheOtherMap, AMapUnitedWithALivingOneIsAlive) {
  REGISTERS k;
  MAP map(k.side("a~"), k.side("~"), KPT_NO_FANOUT);
  EXPECT_FALSE(map.r_representative_is_eliminated());
  EXPECT_TRUE(map.make_union(MAP(k["b"], k["y"])));
  EXPECT_TRUE(map.r_representative_is_eliminated());
  EXPECT_EQ(map.get_t_representative(0), k["y"]);
}

}  // namespace
