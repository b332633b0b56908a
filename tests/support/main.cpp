// Runs the tests of a program, and fails every test that leaves memory of the host allocated.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "host/kpt_host.h"
#include "tests/support/live_blocks.h"
#include "tests/support/seed.h"

namespace {

bool s_live_blocks_allowed = false;

class LIVE_BLOCKS_CHECK : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    s_live_blocks_allowed = false;
    m_before = kpt_test::live_blocks();
  }

  void OnTestEnd(const testing::TestInfo&) override {
    const unsigned long after = kpt_test::live_blocks();
    if (after > m_before && !s_live_blocks_allowed) {
      ADD_FAILURE() << "the test leaves " << after - m_before << " more live blocks than it found";
    }
  }

  unsigned long m_before = 0;
};

bool lists_only() { return testing::GTEST_FLAG(list_tests); }

}  // namespace

unsigned long kpt_test::live_blocks() {
  unsigned long blocks = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    blocks += tracker.live_blocks;
  }
  return blocks;
}

void kpt_test::allow_live_blocks() { s_live_blocks_allowed = true; }

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (!lists_only()) {
    std::cout << "seed " << kpt_test::seed() << " (KPT_SEED)" << std::endl;
  }
  auto check = std::make_unique<LIVE_BLOCKS_CHECK>();
  testing::UnitTest::GetInstance()->listeners().Append(check.release());
  return RUN_ALL_TESTS();
}
