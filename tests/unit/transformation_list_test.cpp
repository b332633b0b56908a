#include "db/kpt/kpt_transformation_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "tests/support/maps.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using MAPS = std::vector<KPT_TRANSFORMATION_IMPL*>;

// Only a set can fill a list.
class TransformationList : public testing::Test {
 protected:
  KPT_TRANSFORMATION_IMPL* add() { return set.add_map(k["a"], k["x"]); }
  MAPS walked() const {
    MAPS maps;
    for (KPT_TRANSFORMATION_IMPL* map : list) {
      maps.push_back(map);
    }
    return maps;
  }

  kpt_test::REGISTERS k;
  KPT_TRANSFORMATION_SET_IMPL set;
  const KPT_TRANSFORMATION_LIST& list = set.get_list_of_register_transformations();
};

TEST_F(TransformationList, EmptyListHasNoEnds) {
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(list.front(), nullptr);
  EXPECT_EQ(list.back(), nullptr);
  EXPECT_TRUE(list.begin() == list.end());
}

TEST_F(TransformationList, PositionsCountFromOneInOrderOfCreation) {
  KPT_TRANSFORMATION_IMPL* first = add();
  KPT_TRANSFORMATION_IMPL* second = add();
  EXPECT_EQ(KPT_TRANSFORMATION_LIST::position_of(*first), 1U);
  EXPECT_EQ(KPT_TRANSFORMATION_LIST::position_of(*second), 2U);
  EXPECT_EQ(list.at(1), first);
  EXPECT_EQ(list.at(2), second);
}

TEST_F(TransformationList, PositionThatWasNeverGivenOutHoldsNothing) {
  add();
  EXPECT_EQ(list.at(0), nullptr);
  EXPECT_EQ(list.at(2), nullptr);
  EXPECT_EQ(list.at(0xFFFFFFFFU), nullptr);
}

TEST_F(TransformationList, MapOutsideASetHasNoPosition) {
  const KPT_TRANSFORMATION_IMPL map(k["a"], k["x"]);
  EXPECT_EQ(KPT_TRANSFORMATION_LIST::position_of(map), 0U);
}

TEST_F(TransformationList, CopyOfAMapOfTheSetHasNoPosition) {
  const KPT_TRANSFORMATION_IMPL copy(*add());
  EXPECT_EQ(KPT_TRANSFORMATION_LIST::position_of(copy), 0U);
}

TEST_F(TransformationList, PositionIsNeverGivenOutAgain) {
  KPT_TRANSFORMATION_IMPL* first = add();
  ASSERT_TRUE(set.delete_map(first));
  KPT_TRANSFORMATION_IMPL* second = add();
  EXPECT_EQ(list.at(1), nullptr);
  EXPECT_EQ(KPT_TRANSFORMATION_LIST::position_of(*second), 2U);
}

TEST_F(TransformationList, DeletedMapsAreNeitherWalkedNorCounted) {
  KPT_TRANSFORMATION_IMPL* first = add();
  KPT_TRANSFORMATION_IMPL* second = add();
  KPT_TRANSFORMATION_IMPL* third = add();
  KPT_TRANSFORMATION_IMPL* fourth = add();
  set.delete_map(first);
  set.delete_map(third);
  EXPECT_THAT(walked(), ElementsAre(second, fourth));
  EXPECT_EQ(list.size(), 2U);
  EXPECT_EQ(list.front(), second);
  set.delete_map(fourth);
  EXPECT_EQ(list.back(), second);
}

TEST_F(TransformationList, ListIsEmptyAgainOnceEveryMapIsDeleted) {
  set.delete_map(add());
  set.delete_map(add());
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.front(), nullptr);
  EXPECT_EQ(list.back(), nullptr);
  EXPECT_THAT(walked(), IsEmpty());
  EXPECT_TRUE(list.begin() == list.end());
}

TEST_F(TransformationList, WalkGoesOnOverMapsThatItDeletes) {
  for (int n = 0; n < 10; ++n) {
    add();
  }
  int count = 0;
  for (KPT_TRANSFORMATION_IMPL* map : list) {
    ++count;
    set.delete_map(map);
  }
  EXPECT_EQ(count, 10);
  EXPECT_TRUE(list.empty());
}

TEST_F(TransformationList, WalkPassesOverMapsThatAreDeletedAheadOfIt) {
  MAPS maps;
  for (int n = 0; n < 6; ++n) {
    maps.push_back(add());
  }
  MAPS seen;
  for (KPT_TRANSFORMATION_IMPL* map : list) {
    seen.push_back(map);
    if (map == maps[1]) {
      set.delete_map(maps[2]);
      set.delete_map(maps[3]);
      set.delete_map(maps[5]);
    }
  }
  EXPECT_THAT(seen, ElementsAre(maps[0], maps[1], maps[4]));
}

TEST_F(TransformationList, WalkOutlivesTheListsGrowth) {
  KPT_TRANSFORMATION_IMPL* first = add();
  auto at = list.begin();
  for (int n = 0; n < 1000; ++n) {
    add();
  }
  EXPECT_EQ(*at, first);
  EXPECT_EQ(*++at, list.at(2));
}

TEST_F(TransformationList, WalkEndsWhereTheListEndedWhenItBegan) {
  KPT_TRANSFORMATION_IMPL* first = add();
  MAPS seen;
  for (KPT_TRANSFORMATION_IMPL* map : list) {
    seen.push_back(map);
    set.delete_map(add());
    add();
  }
  EXPECT_THAT(seen, ElementsAre(first));
}

TEST_F(TransformationList, IteratorsStepLikeAnyForwardIterator) {
  KPT_TRANSFORMATION_IMPL* first = add();
  KPT_TRANSFORMATION_IMPL* second = add();
  auto at = list.begin();
  EXPECT_EQ(*at++, first);
  EXPECT_EQ(*at, second);
  EXPECT_FALSE(at == list.begin());
  EXPECT_TRUE(++at == list.end());
  EXPECT_TRUE(KPT_TRANSFORMATION_LIST::ITERATOR() == list.end());
}

}  // namespace
