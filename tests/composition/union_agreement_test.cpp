// Where a union is right it says what the composition says: in flows that rename,
// replicate and merge registers of one polarity, and record every register.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/seed.h"

namespace {

using NETLIST = std::vector<std::string>;
using NAMES = std::set<std::string>;

class FLOW {
 public:
  explicit FLOW(std::mt19937& random) : m_random(random) {
    for (unsigned k = 0; k < 3 + below(12); ++k) {
      m_now.push_back(fresh_name());
    }
  }

  const NETLIST& now() const { return m_now; }

  // One stage; afterwards the netlist is the one in which it ends.
  void record(const KPT_KEYPOINTS_DB& db) {
    NETLIST next;
    for (const std::string& name : m_now) {
      next.push_back(fresh_name());
      EXPECT_TRUE(db.associate_registers_signal_to_signal(name, next.back()));
    }
    for (unsigned event = below(6); event > 0; --event) {
      below(2) == 0 ? replicate(db, next) : merge(db, next);
    }
    m_now = next;
  }

 private:
  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
  std::string fresh_name() { return "r" + std::to_string(m_names++); }

  void replicate(const KPT_KEYPOINTS_DB& db, NETLIST& next) {
    const std::string replica = fresh_name();
    EXPECT_TRUE(db.set_replicated_registers(next[below(static_cast<unsigned>(next.size()))], replica));
    next.push_back(replica);
  }
  void merge(const KPT_KEYPOINTS_DB& db, NETLIST& next) {
    const std::size_t kept = below(static_cast<unsigned>(next.size()));
    const std::size_t merged = below(static_cast<unsigned>(next.size()));
    if (kept != merged) {
      EXPECT_TRUE(db.set_merged_registers(next[kept], next[merged]));
      next.erase(next.begin() + static_cast<std::ptrdiff_t>(merged));
    }
  }

  std::mt19937& m_random;
  NETLIST m_now;
  unsigned m_names = 0;
};

NAMES group(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, bool inverse) {
  NAMES names;
  for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_group(side, 0, inverse)) {
    names.insert(std::string(std::string_view(keypoint.get_name())));
  }
  return names;
}

TEST(UnionWhereItIsRight, SaysWhatTheCompositionSays) {
  std::mt19937 random(kpt_test::seed() + 11);
  const int rounds = kpt_test::steps(1000);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    FLOW flow(random);
    const NETLIST first = flow.now();
    const unsigned count = 2 + static_cast<unsigned>(random() % 3);
    std::vector<KPT_UNREGISTERED_DB> stages;
    KPT_KEYPOINTS_DB_LIST handles;
    for (unsigned stage = 0; stage < count; ++stage) {
      stages.push_back(KPT_UNREGISTERED_DB::create("stage"));
      flow.record(*stages.back());
    }
    for (const KPT_UNREGISTERED_DB& stage : stages) {
      handles.push_back(*stage);
    }
    const KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
    ASSERT_TRUE(all->compose(handles));
    for (unsigned stage = 1; stage < count; ++stage) {
      ASSERT_TRUE(stages.front()->unite(*stages[stage]));
    }
    for (const std::string& name : first) {
      const KPT_REGISTER_TRANSFORMATION in_union = stages.front()->get_reference_register_transformation(name);
      const KPT_REGISTER_TRANSFORMATION in_composition = all->get_reference_register_transformation(name);
      for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
        EXPECT_EQ(group(in_union, side, false), group(in_composition, side, false)) << name;
        EXPECT_TRUE(group(in_union, side, true).empty() && group(in_composition, side, true).empty()) << name;
      }
    }
  }
}

}  // namespace
