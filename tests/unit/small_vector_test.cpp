#include "db/kpt/containers/kpt_small_vector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_types.h"
#include "tests/support/live_blocks.h"
#include "tests/support/seed.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using NUMBERS = KPT_SMALL_VECTOR<long>;
using TEXTS = KPT_SMALL_VECTOR<KPT_STRING>;

constexpr char LONG_TEXT[] = "a text too long to be stored within a string object";

TEST(SmallVector, IsEmptyAtFirst) {
  const NUMBERS numbers;
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(numbers.size(), 0U);
  EXPECT_EQ(numbers.begin(), numbers.end());
}

TEST(SmallVector, GroupsAndSidesAreSmall) {
  EXPECT_EQ(sizeof(KPT_KEYPOINT_LIST), 16U);
  EXPECT_EQ(sizeof(NI_PAIR_VECTOR), 40U);
}

TEST(SmallVector, OneElementNeedsNoAllocation) {
  const unsigned long before = kpt_test::live_blocks();
  KPT_KEYPOINT_LIST list{nullptr};
  EXPECT_EQ(list.size(), 1U);
  const KPT_KEYPOINT_LIST copy(list);
  EXPECT_EQ(kpt_test::live_blocks(), before);
  list.push_back(nullptr);
  EXPECT_EQ(kpt_test::live_blocks(), before + 1);
}

TEST(SmallVector, IsMadeOfAList) {
  EXPECT_THAT(NUMBERS({}), IsEmpty());
  EXPECT_THAT(NUMBERS({7}), ElementsAre(7));
  EXPECT_THAT((NUMBERS{1, 2, 3}), ElementsAre(1, 2, 3));
}

TEST(SmallVector, IsMadeOfACount) {
  EXPECT_THAT(NUMBERS(3), ElementsAre(0, 0, 0));
  EXPECT_THAT(NUMBERS(2, 9), ElementsAre(9, 9));
  EXPECT_THAT(NUMBERS(0, 9), IsEmpty());
}

TEST(SmallVector, IsMadeOfARange) {
  const std::vector<long> from{4, 5, 6};
  EXPECT_THAT(NUMBERS(from.begin(), from.end()), ElementsAre(4, 5, 6));
}

TEST(SmallVector, PushBackKeepsTheOrder) {
  NUMBERS numbers;
  for (long k = 0; k < 100; ++k) {
    numbers.push_back(k);
    ASSERT_EQ(numbers.back(), k);
  }
  for (long k = 0; k < 100; ++k) {
    ASSERT_EQ(numbers[static_cast<std::size_t>(k)], k);
  }
  EXPECT_EQ(numbers.front(), 0);
}

TEST(SmallVector, ElementOfItsOwnCanBePushed) {
  TEXTS texts{LONG_TEXT};
  for (int k = 0; k < 20; ++k) {
    texts.push_back(texts.front());
  }
  EXPECT_EQ(texts.size(), 21U);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), LONG_TEXT), 21);
}

TEST(SmallVector, CopyIsIndependent) {
  for (const std::size_t count : {0U, 1U, 2U, 5U}) {
    TEXTS texts(count, LONG_TEXT);
    TEXTS copy(texts);
    EXPECT_TRUE(copy == texts);
    copy.push_back("x");
    if (count > 0) {
      copy.front() = KPT_STRING("y");
      EXPECT_EQ(texts.front(), LONG_TEXT);
    }
    EXPECT_EQ(texts.size(), count);
  }
}

TEST(SmallVector, MovedFromVectorIsEmpty) {
  for (const std::size_t count : {0U, 1U, 2U, 5U}) {
    TEXTS texts(count, LONG_TEXT);
    const TEXTS taken(std::move(texts));
    EXPECT_EQ(taken.size(), count);
    EXPECT_TRUE(texts.empty());  // NOLINT(bugprone-use-after-move)
    texts.clear();
    texts.push_back("x");
    EXPECT_THAT(texts, ElementsAre("x"));
  }
}

TEST(SmallVector, AssignmentReplacesWhatWasThere) {
  for (const std::size_t from : {0U, 1U, 2U, 5U}) {
    for (const std::size_t to : {0U, 1U, 2U, 5U}) {
      TEXTS source(from, LONG_TEXT);
      TEXTS copied(to, "x");
      copied = source;
      EXPECT_TRUE(copied == source);
      TEXTS moved(to, "x");
      moved = std::move(source);
      EXPECT_TRUE(moved == copied);
      EXPECT_TRUE(source.empty());  // NOLINT(bugprone-use-after-move)
    }
  }
}

TEST(SmallVector, AssignmentToItselfChangesNothing) {
  for (const std::size_t count : {0U, 1U, 3U}) {
    TEXTS texts(count, LONG_TEXT);
    TEXTS& same = texts;
    texts = same;
    EXPECT_EQ(texts.size(), count);
    texts = std::move(same);
    EXPECT_EQ(texts.size(), count);
  }
}

TEST(SmallVector, SwapExchangesAnySizes) {
  for (const std::size_t a : {0U, 1U, 2U, 5U}) {
    for (const std::size_t b : {0U, 1U, 2U, 5U}) {
      TEXTS first(a, LONG_TEXT);
      TEXTS second(b, "x");
      first.swap(second);
      EXPECT_TRUE(first == TEXTS(b, "x"));
      EXPECT_TRUE(second == TEXTS(a, LONG_TEXT));
      swap(first, second);
      EXPECT_TRUE(first == TEXTS(a, LONG_TEXT));
    }
  }
}

// Not inline, and not of texts: a compiler that sees more of it warns of what is not so.
using LISTS = KPT_SMALL_VECTOR<std::vector<long>>;
[[gnu::noinline]] void swap_both(LISTS& a, LISTS& b) { a.swap(b); }

TEST(SmallVector, SwapWithItselfChangesNothing) {
  for (const std::size_t count : {0U, 1U, 3U}) {
    LISTS lists(count, {1, 2, 3});
    swap_both(lists, lists);
    EXPECT_TRUE(lists == LISTS(count, {1, 2, 3}));
  }
}

TEST(SmallVector, EraseClosesTheGapAndLeadsOn) {
  NUMBERS numbers{1, 2, 3, 4};
  EXPECT_EQ(*numbers.erase(numbers.begin()), 2);
  EXPECT_THAT(numbers, ElementsAre(2, 3, 4));
  EXPECT_EQ(*numbers.erase(numbers.begin() + 1), 4);
  EXPECT_THAT(numbers, ElementsAre(2, 4));
  const long* next = numbers.erase(numbers.begin() + 1);
  EXPECT_EQ(next, numbers.end());
  EXPECT_THAT(numbers, ElementsAre(2));
  next = numbers.erase(numbers.begin());
  EXPECT_EQ(next, numbers.end());
  EXPECT_THAT(numbers, IsEmpty());
}

TEST(SmallVector, EraseOfARangeClosesTheGap) {
  NUMBERS numbers{1, 2, 3, 4, 5};
  EXPECT_EQ(*numbers.erase(numbers.begin() + 1, numbers.begin() + 3), 4);
  EXPECT_THAT(numbers, ElementsAre(1, 4, 5));
  EXPECT_EQ(*numbers.erase(numbers.begin(), numbers.begin()), 1);
  numbers.erase(numbers.begin(), numbers.end());
  EXPECT_THAT(numbers, IsEmpty());
}

TEST(SmallVector, OnlyElementInPlaceCanBeErased) {
  TEXTS texts{LONG_TEXT};
  texts.erase(texts.begin());
  EXPECT_THAT(texts, IsEmpty());
  texts.push_back("x");
  EXPECT_THAT(texts, ElementsAre("x"));
}

TEST(SmallVector, ResizeAddsFreshElementsOrDropsTheLast) {
  NUMBERS numbers{5};
  numbers.resize(3);
  EXPECT_THAT(numbers, ElementsAre(5, 0, 0));
  numbers.resize(1);
  EXPECT_THAT(numbers, ElementsAre(5));
  numbers.resize(0);
  EXPECT_THAT(numbers, IsEmpty());
}

TEST(SmallVector, ClearAndPopBackDestroyElements) {
  TEXTS texts{LONG_TEXT, LONG_TEXT};
  texts.pop_back();
  EXPECT_THAT(texts, ElementsAre(LONG_TEXT));
  texts.clear();
  EXPECT_THAT(texts, IsEmpty());
  texts.push_back("x");
  EXPECT_THAT(texts, ElementsAre("x"));
}

TEST(SmallVector, ReserveKeepsTheElements) {
  TEXTS texts{LONG_TEXT};
  texts.reserve(10);
  EXPECT_GE(texts.capacity(), 10U);
  const KPT_STRING* const place = texts.data();
  for (int k = 0; k < 9; ++k) {
    texts.push_back("x");
  }
  EXPECT_EQ(texts.data(), place);
  EXPECT_EQ(texts.front(), LONG_TEXT);
}

TEST(SmallVector, EqualityIsThatOfElementsInOrder) {
  EXPECT_TRUE((NUMBERS{1, 2}) == (NUMBERS{1, 2}));
  EXPECT_FALSE((NUMBERS{1, 2}) == (NUMBERS{2, 1}));
  EXPECT_FALSE((NUMBERS{1, 2}) == (NUMBERS{1}));
  EXPECT_TRUE(NUMBERS(0) == NUMBERS(0));
}

struct FRAGILE {
  explicit FRAGILE(int* copies_left) : m_copies_left(copies_left) {}
  FRAGILE(const FRAGILE& other) : m_copies_left(other.m_copies_left), m_text(other.m_text) {
    if ((*m_copies_left)-- == 0) {
      throw std::runtime_error("no more copies");
    }
  }
  FRAGILE(FRAGILE&&) noexcept = default;
  FRAGILE& operator=(FRAGILE&&) noexcept = default;
  FRAGILE& operator=(const FRAGILE&) = delete;
  ~FRAGILE() = default;

  int* m_copies_left;
  KPT_STRING m_text = LONG_TEXT;
};

TEST(SmallVector, FailedCopyLeavesNothingBehind) {
  int copies_left = 1000;
  KPT_SMALL_VECTOR<FRAGILE> source;
  for (int k = 0; k < 5; ++k) {
    source.emplace_back(&copies_left);
  }
  const unsigned long before = kpt_test::live_blocks();
  for (copies_left = 0; copies_left < 5;) {
    const int allowed = copies_left;
    EXPECT_THROW(KPT_SMALL_VECTOR<FRAGILE>{source}, std::runtime_error);
    copies_left = allowed + 1;
  }
  EXPECT_EQ(kpt_test::live_blocks(), before);
}

TEST(SmallVector, RandomStepsMatchAnOrdinaryVector) {
  std::mt19937 random(kpt_test::seed());
  TEXTS texts;
  std::vector<std::string> model;
  for (int step = 0; step < 20000; ++step) {
    const std::string text = std::string(random() % 40, 'x') + std::to_string(step);
    switch (random() % 8) {
      case 0:
      case 1:
      case 2:
        texts.push_back(KPT_STRING(text));
        model.push_back(text);
        break;
      case 3:
      case 4:
        if (!model.empty()) {
          const auto at = static_cast<std::ptrdiff_t>(random() % model.size());
          texts.erase(texts.begin() + at);
          model.erase(model.begin() + at);
        }
        break;
      case 5:
        if (random() % 20 == 0) {
          texts.clear();
          model.clear();
        }
        break;
      case 6: {
        TEXTS other(texts);
        texts.swap(other);
        break;
      }
      default: {
        const std::size_t count = random() % 6;
        texts.resize(count);
        model.resize(count);
        break;
      }
    }
    ASSERT_EQ(texts.size(), model.size());
    ASSERT_TRUE(std::equal(texts.begin(), texts.end(), model.begin(),
                           [](const KPT_STRING& a, const std::string& b) { return std::string_view(a) == b; }));
  }
}

}  // namespace
