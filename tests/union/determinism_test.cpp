// The union of the same two databases gives the same bytes, wherever in memory
// their registers and maps are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

#include "tests/support/seed.h"
#include "tests/union/random_stage.h"
#include "tests/union/stages.h"

namespace {

using namespace kpt_test;

// Blocks of odd sizes between the objects, so that the order of their addresses differs.
class JUNK {
 public:
  explicit JUNK(unsigned amount) : m_random(amount), m_amount(amount) {}
  void scatter() {
    for (unsigned k = 0; k < m_amount; ++k) {
      m_blocks.emplace_back(new char[1 + m_random() % 30000]);
    }
    for (unsigned k = 0; k < m_amount / 2; ++k) {
      m_blocks[m_random() % m_blocks.size()].reset();
    }
  }

 private:
  std::mt19937 m_random;
  unsigned m_amount;
  std::vector<std::unique_ptr<char[]>> m_blocks;
};

// Three stages with many maps that are fused, united and saved.
std::string united_bytes(unsigned amount_of_junk) {
  JUNK junk(amount_of_junk);
  std::mt19937 random(seed());
  std::string bytes;
  for (int round = 0; round < 20; ++round) {
    set_next_ids(0, 0);
    RENAMED renamed;
    junk.scatter();
    KPT_KEYPOINTS_DB_IMPL first("first");
    RECORDER(first, random, 'a', 'b', renamed).record_passes();
    for (const char netlist : {'b', 'c'}) {
      junk.scatter();
      KPT_KEYPOINTS_DB_IMPL next("next");
      RECORDER(next, random, netlist, static_cast<char>(netlist + 1), renamed).record_passes();
      junk.scatter();
      const std::string before = saved(next);
      first.unite_db(next);
      EXPECT_EQ(saved(next), before);
      bytes += saved(first);
    }
  }
  return bytes;
}

// A set of maps that are all fed by one register and are fused in order of creation.
std::string fused_bytes(unsigned amount_of_junk) {
  JUNK junk(amount_of_junk);
  set_next_ids(0, 0);
  KPT_KEYPOINTS_DB_IMPL first("first");
  KPT_KEYPOINTS_DB_IMPL next("next");
  first.associate_registers_signal_to_signal("a", "x");
  std::vector<std::string> names;
  for (int k = 0; k < 40; ++k) {
    names.push_back("x" + std::to_string(k));
    first.set_replicated_registers("x", names.back());
  }
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  for (const std::string& name : names) {
    junk.scatter();
    next.associate_registers_signal_to_signal(name, "p" + name);
  }
  EXPECT_TRUE(first.unite_db(next));
  return saved(first);
}

TEST(Determinism, GivesTheSameBytesWhateverLiesBetweenTheObjects) {
  const std::string bytes = united_bytes(0);
  EXPECT_GT(bytes.size(), 10000U);
  for (const unsigned amount : {3U, 10U, 50U}) {
    EXPECT_EQ(united_bytes(amount), bytes);
  }
}

TEST(Determinism, FusesInOrderOfCreationWhateverLiesBetweenTheMaps) {
  const std::string bytes = fused_bytes(0);
  for (const unsigned amount : {1U, 5U, 20U}) {
    EXPECT_EQ(fused_bytes(amount), bytes);
  }
}

// Not a test by itself: a process with another memory layout writes its bytes for the test below.
TEST(Determinism, DISABLED_WritesItsBytes) {
  const char* const file = std::getenv("KPT_UNION_BYTES");
  ASSERT_NE(file, nullptr);
  const auto amount = static_cast<unsigned>(std::strtoul(std::getenv("KPT_UNION_JUNK"), nullptr, 10));
  std::ofstream(file, std::ios::binary) << united_bytes(amount) << fused_bytes(amount);
}

TEST(Determinism, GivesTheSameBytesInProcessesOfOtherAddressLayouts) {
  const std::string bytes = united_bytes(0) + fused_bytes(0);
  for (const char* amount : {"0", "7", "31"}) {
    const std::string file = "union_bytes_" + std::to_string(getpid()) + "_" + amount;
    const pid_t child = fork();
    if (child == 0) {
      setenv("KPT_UNION_BYTES", file.c_str(), 1);
      setenv("KPT_UNION_JUNK", amount, 1);
      setenv("MALLOC_PERTURB_", amount, 1);
      if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        _exit(2);
      }
      execl("/proc/self/exe", "kpt_union", "--gtest_filter=Determinism.DISABLED_WritesItsBytes",
            "--gtest_also_run_disabled_tests", static_cast<char*>(nullptr));
      _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(stream), {}) == bytes);
    std::remove(file.c_str());
  }
}

}  // namespace
