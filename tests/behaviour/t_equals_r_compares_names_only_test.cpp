// Two stages fit together when the second names every register of the first, at
// any index and in any group.
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(TEqualsRComparesNamesOnly, IndexGroupAndKeypointDoNotMatter) {
  REGISTERS first;
  REGISTERS second;
  const MAP earlier(first.side("a~"), first.side("m~n|o~"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(earlier.t_equals_r(MAP(second.side("o~|~n m"), second.side("x~"), KPT_NOT_ELIMINATED)));
  EXPECT_TRUE(earlier.t_equals_r(MAP(second.side("~|m n o p~"), second.side("x~"), KPT_NOT_ELIMINATED)));
  EXPECT_FALSE(earlier.t_equals_r(MAP(second.side("m~n|~"), second.side("x~"), KPT_NOT_ELIMINATED)));
  EXPECT_FALSE(earlier.t_equals_r(MAP(second.side("m n o~"), second.side("x~"), KPT_NOT_ELIMINATED)));
}

// Stages are matched before they are aligned. A comparison that looked at groups
// would call a map unmatched that one swap aligns.
TEST(TEqualsRComparesNamesOnly, AMapThatIsYetToBeAlignedMatches) {
  REGISTERS k;
  const MAP earlier(k.side("a~"), k.side("m~n"), KPT_NOT_ELIMINATED);
  MAP later(k.side("n~m"), k.side("x~"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(earlier.t_equals_r(later));
  EXPECT_TRUE(earlier.align_t_register(k["m"], &later, k["m"]));
  EXPECT_EQ(text_of(later), "m~n -> ~x");
  EXPECT_TRUE(earlier.t_equals_r(later));
}

}  // namespace
