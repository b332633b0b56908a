// When the registers of two maps have different polarity, the map of the later
// stage is swapped: the one that lists the register on its reference side.
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(AligningSwapsTheLaterMap, WhicheverOfTheTwoIsAsked) {
  REGISTERS k;
  MAP earlier(k.side("a~b"), k.side("m~"), KPT_NOT_ELIMINATED);
  MAP later(k.side("~m"), k.side("x~y"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(later.align_r_register(k["m"], &earlier, k["m"]));
  EXPECT_EQ(text_of(earlier), "a~b -> m~");
  EXPECT_EQ(text_of(later), "m~ -> y~x");
  ASSERT_TRUE(later.interchange_registers_in_r_n_i_groups_of_map());
  EXPECT_TRUE(earlier.align_t_register(k["m"], &later, k["m"]));
  EXPECT_EQ(text_of(earlier), "a~b -> m~");
  EXPECT_EQ(text_of(later), "m~ -> x~y");
}

// The first stage says what the values of its registers mean. If its map were
// swapped, a second map that another pair of it feeds would swap it back, and the
// two would never both agree with it.
TEST(AligningSwapsTheLaterMap, SeveralLaterMapsCanBeAlignedWithOneEarlierMap) {
  REGISTERS k;
  const MAP earlier(k.side("a~"), k.side("m~n"), KPT_NOT_ELIMINATED);
  MAP of_m(k.side("~m"), k.side("x~"), KPT_NOT_ELIMINATED);
  MAP of_n(k.side("n~"), k.side("y~"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(of_m.align_r_register(k["m"], &earlier, k["m"]));
  EXPECT_TRUE(of_n.align_r_register(k["n"], &earlier, k["n"]));
  EXPECT_EQ(text_of(earlier), "a~ -> m~n");
  EXPECT_EQ(text_of(of_m), "m~ -> ~x");
  EXPECT_EQ(text_of(of_n), "~n -> ~y");
  EXPECT_TRUE(of_m.make_union(of_n));
  EXPECT_TRUE(earlier.t_equals_r(of_m));
  EXPECT_EQ(text_of(of_m), "m~n -> ~x y");
}

}  // namespace
