// Maps that differ only in their elimination status or attributes are equal.
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

// A file that `save` writes has no attributes, and a later stage may eliminate a
// register. If the comparison included either, a map would differ from its
// reloaded copy and from its own earlier copy.
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
