// A simple union uses only the first NI pair of each side.
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(SimpleUnionTakesTheFirstPairsOnly, FurtherPairsOfTheOtherMapAreLeftBehind) {
  REGISTERS k;
  MAP map(k.side("a~|b~"), k.side("x~"), KPT_NOT_ELIMINATED);
  const MAP other(k.side("c~d|e~"), k.side("y~|z~"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(map.make_simple_union(other));
  EXPECT_EQ(text_of(map), "a c~d|b~ -> x y~");
}

// A plain map has no table for several indices. If the other pairs were appended,
// it would have registers that no query of its index 0 shows.
TEST(SimpleUnionTakesTheFirstPairsOnly, AUnitedPlainMapKeepsItsNumberOfIndices) {
  REGISTERS k;
  MAP map(k["a"], k["x"]);
  EXPECT_TRUE(map.make_union(MAP(k.side("c~|e~"), k.side("y~|z~"), KPT_NOT_ELIMINATED)));
  EXPECT_EQ(map.get_num_reference_registers(), 1);
  EXPECT_EQ(map.get_num_transformed_registers(), 1);
  EXPECT_EQ(text_of(map.get_t_registers_at_index(0)), "x y");
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
}

}  // namespace
