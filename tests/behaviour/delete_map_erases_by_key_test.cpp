// Deleting a map erases the entries of all keypoints that it lists, whatever map
// an entry leads to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/kpt/kpt_transformation_set_impl.h"
#include "tests/support/index_checker.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::index_differences;
using kpt_test::REGISTERS;
using kpt_test::text_of;
using testing::IsEmpty;

TEST(DeleteMapErasesByKey, RegistersOfANewerMapAreFoundNoMore) {
  REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  KPT_TRANSFORMATION_IMPL* older = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* newer = set.add_map(k.side("a b~"), k.side("x y~"), KPT_NOT_ELIMINATED);
  ASSERT_EQ(set.get_map_of_r_keypoint(k["a"]), newer);
  EXPECT_TRUE(set.delete_map(older));
  EXPECT_EQ(set.get_map_of_r_keypoint(k["a"]), nullptr);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["x"]), nullptr);
  EXPECT_EQ(set.get_map_of_r_keypoint(k["b"]), newer);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["y"]), newer);
  EXPECT_EQ(text_of(*newer), "a b~ -> x y~");
}

// If only entries of the deleted map were erased, a merged register that a third
// map has taken over would still be found after the merge, as if it were in the
// netlist.
TEST(DeleteMapErasesByKey, AMergeLeavesNothingOfTheAbsorbedMapToBeFound) {
  REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  KPT_TRANSFORMATION_IMPL* survivor = set.add_map(k["a"], k["x"]);
  KPT_TRANSFORMATION_IMPL* absorbed = set.add_map(k.side("b~|c~"), k.side("y~|z~"), KPT_NOT_ELIMINATED);
  KPT_TRANSFORMATION_IMPL* third = set.add_map(k["c"], k["z"]);
  ASSERT_EQ(set.get_map_of_t_keypoint(k["y"]), absorbed);
  ASSERT_EQ(set.get_map_of_t_keypoint(k["z"]), third);
  EXPECT_TRUE(set.merge_keypoints(k["x"], k["y"]));
  EXPECT_EQ(text_of(*survivor), "a b~ -> x~");
  EXPECT_EQ(set.get_map_of_r_keypoint(k["c"]), nullptr);
  EXPECT_EQ(set.get_map_of_t_keypoint(k["z"]), nullptr);
  kpt_test::EXPLANATIONS facts;
  facts.r.erased = {k["c"]};
  facts.t.erased = {k["z"]};
  EXPECT_THAT(index_differences(set, {k["y"]}, facts), IsEmpty());
}

}  // namespace
