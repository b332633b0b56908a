// The bits of a state table, compared with a set of positions, near and far.
#include "db/kpt/containers/kpt_bit_table.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "host/kpt_host.h"
#include "tests/support/seed.h"

namespace {

constexpr std::uint64_t LAST = std::uint64_t{65535} * 65535 - 1;

unsigned long host_bytes() {
  unsigned long bytes = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    bytes += tracker.live_bytes;
  }
  return bytes;
}

TEST(BitTable, CostsWhatIsSetInItWhereverThatIs) {
  const unsigned long before = host_bytes();
  KPT_BIT_TABLE table;
  table.set(LAST, true);
  EXPECT_TRUE(table.get(LAST));
  EXPECT_FALSE(table.get(LAST - 1));
  EXPECT_LE(host_bytes() - before, 2048U);
}

// Each bit is as far after the one before as the vector still reaches.
TEST(BitTable, DoesNotGrowFasterThanWhatIsSetInIt) {
  const unsigned long before = host_bytes();
  KPT_BIT_TABLE table;
  std::uint64_t position = 0;
  for (int k = 0; k < 25; ++k) {
    table.set(position, true);
    position = 2 * position + 4095;
  }
  EXPECT_LE(host_bytes() - before, 16384U);
}

TEST(BitTable, TakesNoRoomForWhatIsFalse) {
  const unsigned long before = host_bytes();
  KPT_BIT_TABLE table;
  table.set(LAST, false);
  table.set_bits(LAST - 64, 64, 0);
  EXPECT_EQ(host_bytes(), before);
  EXPECT_EQ(table, KPT_BIT_TABLE());
}

TEST(BitTable, IsEqualToOneThatWasFilledInAnotherOrder) {
  KPT_BIT_TABLE ascending;
  KPT_BIT_TABLE descending;
  for (std::uint64_t k = 0; k < 1000; ++k) {
    ascending.set(97 * k, true);
    descending.set(97 * (999 - k), true);
  }
  EXPECT_EQ(ascending, descending);
  descending.flip(97);
  EXPECT_FALSE(ascending == descending);
  EXPECT_FALSE(descending == ascending);
}

TEST(BitTable, HoldsWhatASetOfPositionsHolds) {
  std::mt19937_64 random(kpt_test::seed());
  KPT_BIT_TABLE table;
  std::set<std::uint64_t> model;
  const auto position = [&] {
    const std::uint64_t reach = random() % 3 == 0 ? LAST : random() % 2 == 0 ? 300 : 40000;
    return random() % reach;
  };
  for (int k = 0; k < 20000; ++k) {
    const std::uint64_t at = position();
    switch (random() % 4) {
      case 0:
        table.set(at, true);
        model.insert(at);
        break;
      case 1:
        table.set(at, false);
        model.erase(at);
        break;
      case 2:
        table.flip(at);
        if (model.erase(at) == 0) {
          model.insert(at);
        }
        break;
      default: {
        const auto count = static_cast<unsigned>(1 + random() % 64);
        const std::uint64_t bits = random() & (~std::uint64_t{0} >> (64 - count));
        table.set_bits(at, count, bits);
        for (unsigned bit = 0; bit < count; ++bit) {
          model.erase(at + bit);
          if ((bits >> bit & 1U) != 0) {
            model.insert(at + bit);
          }
        }
        ASSERT_EQ(table.get_bits(at, count), bits);
      }
    }
    ASSERT_EQ(table.get(at), model.contains(at));
    ASSERT_TRUE(model.empty() || *model.rbegin() < table.kept());
  }
  KPT_BIT_TABLE copy(table);
  EXPECT_EQ(copy, table);
  for (const std::uint64_t at : model) {
    ASSERT_TRUE(copy.get(at));
    copy.flip(at);
  }
  EXPECT_EQ(copy, KPT_BIT_TABLE());
}

}  // namespace
