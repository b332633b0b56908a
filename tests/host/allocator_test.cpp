#include <gtest/gtest.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <deque>
#include <limits>
#include <list>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "h/mem_alloc_sys.h"

namespace {

template <class T>
using VECTOR = std::vector<T, MEM_STL_ALLOCATOR<T>>;

struct FRESH {
  int m_value;
};

TEST(Allocator, BindsTheTrackerOnFirstUse) {
  const MEM_TRACKER_THUNK& thunk = MEM_TRACKER_TEMPLATE_KPT<FRESH, 1255, 1>::s_thunk;
  EXPECT_EQ(thunk.m_type, nullptr);
  const VECTOR<FRESH> values(3);
  ASSERT_NE(thunk.m_type, nullptr);
  EXPECT_EQ(*thunk.m_type, typeid(FRESH));
}

TEST(Allocator, ChargesAndDischargesTheTracker) {
  const MEM_TRACKER_THUNK& thunk = *MEM_STL_ALLOCATOR<long double>::tracker();
  {
    const VECTOR<long double> values(10);
    EXPECT_EQ(thunk.m_live_blocks, 1U);
    EXPECT_EQ(thunk.m_live_bytes, 10 * sizeof(long double));
  }
  EXPECT_EQ(thunk.m_live_blocks, 0U);
  EXPECT_EQ(thunk.m_live_bytes, 0U);
  EXPECT_EQ(thunk.m_peak_blocks, 1U);
  EXPECT_EQ(thunk.m_peak_bytes, 10 * sizeof(long double));
}

TEST(Allocator, AllInstancesAreEqual) {
  const MEM_STL_ALLOCATOR<int> ints;
  const MEM_STL_ALLOCATOR<char> chars(ints);
  EXPECT_TRUE(ints == chars);
  EXPECT_FALSE(ints != chars);
  EXPECT_TRUE(std::allocator_traits<MEM_STL_ALLOCATOR<int>>::is_always_equal::value);
}

TEST(Allocator, RefusesACountWhoseSizeOverflows) {
  MEM_STL_ALLOCATOR<int> ints;
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  EXPECT_THROW(std::ignore = ints.allocate(most / 2), std::bad_array_new_length);
  EXPECT_THROW(std::ignore = ints.allocate(most / sizeof(int)), std::bad_alloc);
}

TEST(Allocator, ServesEveryKindOfContainer) {
  using PAIR = std::pair<const int, int>;
  std::list<int, MEM_STL_ALLOCATOR<int>> list{1, 2};
  std::deque<int, MEM_STL_ALLOCATOR<int>> deque{1, 2};
  std::map<int, int, std::less<>, MEM_STL_ALLOCATOR<PAIR>> map{{1, 2}};
  std::unordered_map<int, int, std::hash<int>, std::equal_to<>, MEM_STL_ALLOCATOR<PAIR>> hash{{1, 2}};
  boost::unordered_flat_map<int, int, std::hash<int>, std::equal_to<>, MEM_STL_ALLOCATOR<PAIR>> flat{{1, 2}};
  EXPECT_EQ(list.back() + deque.back() + map[1] + hash[1] + flat[1], 10);
}

TEST(Allocator, ContainersSwapAndMove) {
  VECTOR<char> a(100, 'a');
  VECTOR<char> b(200, 'b');
  const char* const memory = a.data();
  a.swap(b);
  EXPECT_EQ(b.data(), memory);
  const VECTOR<char> c = std::move(b);
  EXPECT_EQ(c.data(), memory);
  EXPECT_EQ(a.size(), 200U);
}

}  // namespace
