#include "db/kpt/containers/kpt_map_index.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"

namespace {

KPT_KEYPOINT::POOL_SLOT slot(const KPT_KEYPOINT* keypoint) { return KPT_KEYPOINT::slot_of(keypoint); }

// The origin of a keypoint. An index stores the keypoints of the first sets that
// it meets in another way than the rest, so the tests run for each origin.
enum ORIGIN { FIRST_SET, SECOND_SET, THIRD_SET, NO_SET };

class MapIndex : public testing::TestWithParam<ORIGIN> {
 protected:
  MapIndex() {
    for (KPT_KEYPOINT_SET_IMPL& set : sets) {
      KPT_KEYPOINT* met = set.add_register(0, "met");
      if (GetParam() != FIRST_SET) {
        index.set(slot(met), 1);
        index.erase(slot(met));
      }
    }
    if (GetParam() == NO_SET) {
      a = &outside_a;
      b = &outside_b;
    } else {
      a = sets[GetParam()].add_register(1, "a");
      b = sets[GetParam()].add_register(2, "b");
    }
  }

  KPT_KEYPOINT_SET_IMPL sets[3];
  KPT_REGISTER_KEYPOINT_IMPL outside_a{1, "a"};
  KPT_REGISTER_KEYPOINT_IMPL outside_b{2, "b"};
  KPT_KEYPOINT* a;
  KPT_KEYPOINT* b;
  KPT_MAP_INDEX index;
  KPT_MAP_INDEX second;
};

INSTANTIATE_TEST_SUITE_P(, MapIndex, testing::Values(FIRST_SET, SECOND_SET, THIRD_SET, NO_SET));

TEST_P(MapIndex, StartsEmpty) {
  EXPECT_EQ(index.size(), 0U);
  EXPECT_EQ(index.find(slot(a)), 0U);
  EXPECT_EQ(index.find(slot(nullptr)), 0U);
}

TEST_P(MapIndex, FindsWhatWasEntered) {
  index.set(slot(a), 7);
  index.set(slot(b), 8);
  EXPECT_EQ(index.find(slot(a)), 7U);
  EXPECT_EQ(index.find(slot(b)), 8U);
  EXPECT_EQ(index.size(), 2U);
}

// A look-up by name passes on the slot of a register without reading the register.
TEST_P(MapIndex, FindsTheSameByTheSlotOfARegister) {
  index.set(slot(a), 7);
  for (const KPT_KEYPOINT_SET_IMPL& set : sets) {
    const KPT_KEYPOINT::POOL_SLOT by_name = set.get_slot(KPT_REGISTER_TEXTS("a"));
    EXPECT_EQ(by_name.object, set.get_register("a"));
    EXPECT_EQ(index.find(by_name), index.find(slot(set.get_register("a"))));
    EXPECT_EQ(index.find(set.get_slot(KPT_REGISTER_TEXTS("absent"))), 0U);
  }
}

TEST_P(MapIndex, LastWriterWins) {
  index.set(slot(a), 7);
  index.set(slot(a), 9);
  EXPECT_EQ(index.find(slot(a)), 9U);
  EXPECT_EQ(index.size(), 1U);
}

TEST_P(MapIndex, NullIsNeverEntered) {
  index.set(slot(nullptr), 7);
  EXPECT_EQ(index.find(slot(nullptr)), 0U);
  EXPECT_EQ(index.size(), 0U);
  EXPECT_FALSE(index.erase(slot(nullptr)));
}

TEST_P(MapIndex, FindingEntersNothing) {
  EXPECT_EQ(index.find(slot(a)), 0U);
  EXPECT_EQ(index.size(), 0U);
}

TEST_P(MapIndex, ErasedKeypointIsAbsent) {
  index.set(slot(a), 7);
  EXPECT_TRUE(index.erase(slot(a)));
  EXPECT_EQ(index.find(slot(a)), 0U);
  EXPECT_EQ(index.size(), 0U);
}

TEST_P(MapIndex, ErasingAnAbsentKeypointIsFalse) {
  index.set(slot(a), 7);
  EXPECT_FALSE(index.erase(slot(b)));
  EXPECT_TRUE(index.erase(slot(a)));
  EXPECT_FALSE(index.erase(slot(a)));
}

TEST_P(MapIndex, ErasingFromOneIndexLeavesTheOthers) {
  index.set(slot(a), 7);
  second.set(slot(a), 8);
  EXPECT_TRUE(second.erase(slot(a)));
  EXPECT_EQ(index.find(slot(a)), 7U);
  EXPECT_EQ(second.find(slot(a)), 0U);
  second.set(slot(a), 9);
  EXPECT_TRUE(index.erase(slot(a)));
  EXPECT_EQ(second.find(slot(a)), 9U);
}

TEST_P(MapIndex, OneKeypointStandsInSeveralIndexes) {
  index.set(slot(a), 7);
  second.set(slot(a), 8);
  second.set(slot(a), 9);
  EXPECT_EQ(index.find(slot(a)), 7U);
  EXPECT_EQ(second.find(slot(a)), 9U);
}

TEST_P(MapIndex, NamesakeIsAnotherKeypoint) {
  const KPT_REGISTER_KEYPOINT_IMPL namesake(1, "a");
  index.set(slot(a), 7);
  EXPECT_EQ(index.find(slot(&namesake)), 0U);
  EXPECT_EQ(index.find(slot(b)), 0U);
}

TEST_P(MapIndex, CopyOfAKeypointHasNoEntry) {
  index.set(slot(a), 7);
  KPT_REGISTER_KEYPOINT_IMPL copy(*static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(a));
  EXPECT_EQ(index.find(slot(&copy)), 0U);
  index.set(slot(&copy), 8);
  EXPECT_EQ(index.find(slot(a)), 7U);
  EXPECT_EQ(index.size(), 2U);
}

TEST_P(MapIndex, EntriesOfADestroyedIndexAreDead) {
  auto earlier = std::make_unique<KPT_MAP_INDEX>();
  earlier->set(slot(a), 7);
  earlier.reset();
  KPT_MAP_INDEX later;
  EXPECT_EQ(later.find(slot(a)), 0U);
  later.set(slot(a), 8);
  EXPECT_EQ(later.find(slot(a)), 8U);
  EXPECT_EQ(later.size(), 1U);
  EXPECT_TRUE(later.erase(slot(a)));
  EXPECT_EQ(later.find(slot(a)), 0U);
}

// The keypoints may be anywhere in their set, and most of them may have no entry.
TEST_P(MapIndex, ManyKeypointsAreToldApart) {
  KPT_KEYPOINT_SET_IMPL& set = sets[GetParam() == NO_SET ? 0 : GetParam()];
  std::vector<KPT_KEYPOINT*> keypoints;
  keypoints.reserve(3000);
  for (int n = 0; n < 3000; ++n) {
    keypoints.push_back(set.add_register(n, "q" + std::to_string(n)));
  }
  for (std::size_t n = 3000; n > 0; n -= 3) {
    index.set(slot(keypoints[n - 1]), static_cast<std::uint32_t>(n - 1));
  }
  EXPECT_EQ(index.size(), 1000U);
  for (std::size_t n = 0; n < 3000; ++n) {
    ASSERT_EQ(index.find(slot(keypoints[n])), n % 3 == 2 ? n : 0U) << n;
  }
}

TEST_P(MapIndex, KeypointThatItsSetDeletedKeepsItsEntry) {
  if (GetParam() == NO_SET) {
    return;
  }
  index.set(slot(a), 7);
  ASSERT_TRUE(sets[GetParam()].delete_register("a"));
  KPT_KEYPOINT* anew = sets[GetParam()].add_register(3, "a");
  EXPECT_EQ(index.find(slot(a)), 7U);
  EXPECT_EQ(index.find(slot(anew)), 0U);
}

}  // namespace
