#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "h/mem_alloc_sys.h"
#include "host/kpt_host.h"
#include "tests/support/live_blocks.h"

namespace {

constexpr const char* HERE = "tests/host";

// Each test has its own type, so that each has its own account.
template <int N>
struct ACCOUNT {};

template <int N>
MEM_TRACKER_THUNK* thunk() {
  static MEM_TRACKER_THUNK instance{};
  instance.m_type = &typeid(ACCOUNT<N>);
  return &instance;
}

std::optional<kpt_host::TRACKER> tracker(std::string_view type) {
  const auto all = kpt_host::trackers();
  const auto found = std::find_if(all.begin(), all.end(), [type](const auto& one) { return one.type == type; });
  return found != all.end() ? std::optional(*found) : std::nullopt;
}

TEST(Memory, CountsLiveAndPeak) {
  void* const a = MEM_MANAGER::new_wrapper(100, thunk<1>(), HERE);
  void* const b = MEM_MANAGER::new_wrapper(50, thunk<1>(), HERE);
  MEM_MANAGER::delete_wrapper(a, "KPT");
  const auto seen = tracker("(anonymous namespace)::ACCOUNT<1>");
  ASSERT_TRUE(seen.has_value());
  EXPECT_EQ(seen->live_bytes, 50U);
  EXPECT_EQ(seen->live_blocks, 1U);
  EXPECT_EQ(seen->peak_bytes, 150U);
  EXPECT_EQ(seen->peak_blocks, 2U);
  MEM_MANAGER::delete_wrapper(b, "KPT");
  EXPECT_EQ(tracker("(anonymous namespace)::ACCOUNT<1>")->live_blocks, 0U);
}

TEST(Memory, ListsATypeFromItsFirstBlockOnAndOnce) {
  EXPECT_FALSE(tracker("(anonymous namespace)::ACCOUNT<2>").has_value());
  for (int round = 0; round < 3; ++round) {
    MEM_MANAGER::delete_wrapper(MEM_MANAGER::new_wrapper(1, thunk<2>(), HERE), "KPT");
  }
  const auto all = kpt_host::trackers();
  const auto count = std::count_if(all.begin(), all.end(),
                                   [](const auto& one) { return one.type == "(anonymous namespace)::ACCOUNT<2>"; });
  EXPECT_EQ(count, 1);
}

TEST(Memory, AnEmptyBlockIsABlock) {
  void* const a = MEM_MANAGER::new_wrapper(0, thunk<3>(), HERE);
  void* const b = MEM_MANAGER::new_wrapper(0, thunk<3>(), HERE);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(thunk<3>()->m_live_blocks, 2U);
  EXPECT_EQ(thunk<3>()->m_live_bytes, 0U);
  MEM_MANAGER::delete_wrapper(a, "KPT");
  MEM_MANAGER::delete_wrapper(b, "KPT");
}

TEST(Memory, BlocksAreAlignedForEveryType) {
  for (unsigned long size = 1; size < 70; ++size) {
    void* const block = MEM_MANAGER::new_wrapper(size, thunk<4>(), HERE);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U) << size;
    MEM_MANAGER::delete_wrapper(block, "KPT");
  }
}

TEST(Memory, ExhaustionThrowsAndChargesNothing) {
  const unsigned long most = std::numeric_limits<unsigned long>::max();
  for (const unsigned long size : {most, most - 8, most - 16, most / 2}) {
    EXPECT_THROW(MEM_MANAGER::new_wrapper(size, thunk<5>(), HERE), std::bad_alloc) << size;
  }
  EXPECT_EQ(thunk<5>()->m_peak_blocks, 0U);
}

TEST(Memory, ANullBlockIsNoBlock) {
  const unsigned long before = kpt_test::live_blocks();
  MEM_MANAGER::delete_wrapper(nullptr, "KPT");
  EXPECT_EQ(kpt_test::live_blocks(), before);
}

TEST(Memory, AnInitializerOutsideAnyLibraryTakesNothingAlong) {
  void* const block = MEM_MANAGER::new_wrapper(1, thunk<6>(), HERE);
  { const MEM_INITIALIZER passing("KPT"); }
  EXPECT_TRUE(tracker("(anonymous namespace)::ACCOUNT<6>").has_value());
  MEM_MANAGER::delete_wrapper(block, "KPT");
}

}  // namespace
