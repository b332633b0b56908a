// The cost of a union of large groups: thousands of registers that were merged
// into one are in one group, and the union looks each of them up in it.
#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <string>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace {

using DB = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

enum SHAPE { ONE_GROUP, A_MAP_EACH };

DB stage(SHAPE shape, int registers, const char* r_name, const char* t_name) {
  DB db = std::make_unique<KPT_KEYPOINTS_DB_IMPL>("stage");
  NI_PAIR_VECTOR r(1);
  NI_PAIR_VECTOR t(1);
  for (int k = 0; k < registers; ++k) {
    KPT_KEYPOINT* reference = db->add_to_register_set(KPT_REFERENCE_SET, k, r_name + std::to_string(k));
    KPT_KEYPOINT* transformed = db->add_to_register_set(KPT_TRANSFORMED_SET, k, t_name + std::to_string(k));
    if (shape == A_MAP_EACH) {
      db->get_transformation_set()->add_map(reference, transformed);
    }
    // Every second register is inverted, so that the union needs the polarities of both groups.
    (k % 2 == 0 ? r[0].first : r[0].second).push_back(reference);
    (k % 2 == 0 ? t[0].first : t[0].second).push_back(transformed);
  }
  if (shape == ONE_GROUP) {
    db->add_to_transformation_set(r, t, KPT_NOT_ELIMINATED);
  }
  return db;
}

// Processor time, which does not depend on other programs; the least of three runs.
double seconds_to_unite(SHAPE first, SHAPE second, int registers) {
  double least = 0;
  for (int run = 0; run < 3; ++run) {
    const DB db1 = stage(first, registers, "a", "b");
    const DB db2 = stage(second, registers, "b", "c");
    const auto now = [] {
      timespec time{};
      clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
      return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    EXPECT_TRUE(db1->unite_db(*db2));
    const double spent = now() - start;
    least = run == 0 ? spent : std::min(least, spent);
  }
  return least;
}

class UnionCost : public testing::TestWithParam<std::pair<SHAPE, SHAPE>> {};

// If each register were searched for among all of them, four times the registers
// would take sixteen times as long.
TEST_P(UnionCost, OfAGroupGrowsWithItsRegistersAndNotWithTheirSquare) {
  const auto [first, second] = GetParam();
  const double few = seconds_to_unite(first, second, 6000);
  const double many = seconds_to_unite(first, second, 24000);
  EXPECT_LT(many, 10 * few);
}

INSTANTIATE_TEST_SUITE_P(EveryShape, UnionCost,
                         testing::Values(std::pair(ONE_GROUP, ONE_GROUP), std::pair(ONE_GROUP, A_MAP_EACH),
                                         std::pair(A_MAP_EACH, ONE_GROUP)));

}  // namespace
