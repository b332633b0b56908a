// A stuck-at status is stored as soon as the register has left its group, before
// the map decides whether the index is removed.
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(StuckAtStatusComesFirst, OneOfSeveralRegistersSetsTheStatusOfTheWholeMap) {
  REGISTERS k;
  MAP map(k.list("a"), k.list("x y"), make_table({"0 00", "1 11"}));
  ASSERT_TRUE(map.add_replicated_register(k["x"], k["x2"]));
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_STUCK_AT_ZERO));
  EXPECT_EQ(text_of(map), "a~ -> x2~|y~");
  EXPECT_TRUE(map.r_representative_is_stuck_at_zero());
  EXPECT_TRUE(map.set_eliminated(k["x2"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(map), "a~ -> y~");
  EXPECT_TRUE(map.r_representative_is_stuck_at_one());
}

// If only the last register stored the status, the constant could be lost:
// several passes remove the replicas of a constant register one by one, and the
// value is known from the first report on.
TEST(StuckAtStatusComesFirst, TheConstantIsKnownWhileReplicasRemain) {
  REGISTERS k;
  MAP stuck(k.side("a~"), k.side("x x2~"), KPT_NOT_ELIMINATED);
  MAP idle(stuck);
  EXPECT_TRUE(stuck.set_eliminated(k["x2"], KPT_STUCK_AT_ONE));
  EXPECT_TRUE(idle.set_eliminated(k["x2"], KPT_NO_FANOUT));
  EXPECT_TRUE(stuck.r_representative_is_stuck_at_one());
  EXPECT_FALSE(idle.has_no_fanout());
  EXPECT_TRUE(stuck == idle);
}

}  // namespace
