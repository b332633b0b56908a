// Two maps are equal whatever their elimination status and attributes.
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(EqualityIgnoresStatusAndAttributes, MapsThatDifferInThemAloneAreEqual) {
  REGISTERS k;
  MAP map(k.side("a~"), k.side("x~"), KPT_STUCK_AT_ONE);
  MAP other(k.side("a~"), k.side("x~"), KPT_NOT_ELIMINATED);
  other.add_attribute("pass", "retime");
  EXPECT_TRUE(map == other);
}

// A file does not carry attributes, and a stage may have eliminated a register
// since: with either in the comparison, a map would differ from what it was
// loaded from and from its own earlier copy.
TEST(EqualityIgnoresStatusAndAttributes, AMapEqualsItsEarlierCopyAndItsReloadedSelf) {
  REGISTERS k;
  MAP map(k["a"], k["x"]);
  map.add_attribute("pass", "retime");
  const MAP copy(map);
  MAP gone(k.side("b~"), k.side(""), KPT_NO_FANOUT);
  ASSERT_TRUE(map.make_simple_union(MAP(k.side(""), k.side(""), KPT_NO_FANOUT)));
  EXPECT_EQ(map.get_elim_status(), KPT_NO_FANOUT);
  EXPECT_TRUE(map == copy);
  EXPECT_TRUE(map == MAP(k.side("a~"), k.side("x~"), KPT_NO_FANOUT));
  EXPECT_FALSE(map == gone);
}

}  // namespace
