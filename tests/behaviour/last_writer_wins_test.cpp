// Entering a keypoint does not look for an earlier entry: the entry leads to the
// newest map, while older maps still list the keypoint.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_set_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;
using kpt_test::text_of;

TEST(LastWriterWins, ARegisterLeadsToItsNewestMapOnEitherSide) {
  REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  KPT_TRANSFORMATION_IMPL* first = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* second = set.add_map(k["a"], k["y"]);
  KPT_TRANSFORMATION_IMPL* third = set.add_map(k["b"], k["y"]);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), second);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), third);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), first);
  EXPECT_EQ(text_of(*first), "a~ -> x~");
  EXPECT_EQ(text_of(*second), "a~ -> y~");
}

// If the first entry were kept, a register that is recorded again would lead to a
// map that later events do not reach. The new map would get the events, and the
// old one would answer.
TEST(LastWriterWins, EventsReachTheMapThatWasRecordedLast) {
  REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  KPT_TRANSFORMATION_IMPL* stale = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* anew = set.add_map(k.side("a~"), k.side("x y~"), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(set.set_eliminated_map(k["x"], KPT_STUCK_AT_ONE));
  EXPECT_EQ(text_of(*anew), "a~ -> y~");
  EXPECT_TRUE(set.get_map_of_r_keypoint(k["a"])->r_representative_is_stuck_at_one());
  EXPECT_EQ(text_of(*stale), "a~ -> x~");
  EXPECT_EQ(stale->get_elim_status(), KPT_NOT_ELIMINATED);
}

}  // namespace
