// Compares the claims of composed databases with simulated netlists.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/composition/simulated_flow.h"
#include "tests/support/seed.h"

namespace {

using namespace kpt_test;

// The trace of an index according to its registers, and whether all agree.
struct BIT {
  TRACE trace = 0;
  bool is_known = false;
};

BIT bit_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index,
           const SIMULATED_NETLIST& netlist) {
  BIT bit;
  for (const bool inverted : {false, true}) {
    for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_group(side, index, inverted)) {
      const auto found = netlist.find(std::string(keypoint.get_name()));
      if (found == netlist.end()) {
        ADD_FAILURE() << keypoint.get_name() << " is in no netlist";
        continue;
      }
      const TRACE trace = inverted ? ~found->second.trace : found->second.trace;
      EXPECT_TRUE(!bit.is_known || bit.trace == trace) << keypoint.get_name() << " differs from its group";
      bit = {trace, true};
    }
  }
  return bit;
}

std::vector<TRACE> columns_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side,
                              const SIMULATED_NETLIST& netlist) {
  std::vector<TRACE> columns;
  for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
    columns.push_back(bit_of(map, side, k, netlist).trace);
  }
  return columns;
}

void check_machine(const KPT_REGISTER_TRANSFORMATION& map, const SIMULATED_FLOW& flow) {
  const std::vector<TRACE> r = columns_of(map, KPT_REFERENCE_SET, flow.first);
  const std::vector<TRACE> t = columns_of(map, KPT_TRANSFORMED_SET, flow.last);
  const KPT_STATE_TABLE table = map.get_state_table();
  ASSERT_EQ(table.get_state_reference_size(), r.size());
  ASSERT_EQ(table.get_state_transformed_size(), t.size());
  TRACE said = 0;
  for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
    TRACE here = ~TRACE{0};
    for (std::size_t k = 0; k < r.size(); ++k) {
      const auto column = static_cast<unsigned short>(k + 1);
      here &= table.get_reference_entry(row, column) == 1 ? r[k] : ~r[k];
    }
    for (std::size_t k = 0; k < t.size(); ++k) {
      const auto column = static_cast<unsigned short>(k + 1);
      here &= table.get_transformed_entry(row, column) == 1 ? t[k] : ~t[k];
    }
    said |= here;
  }
  EXPECT_EQ(said, ~TRACE{0}) << "a state that the netlists reach is in no row";
}

void check_plain(const KPT_REGISTER_TRANSFORMATION& map, const SIMULATED_FLOW& flow) {
  const BIT r = bit_of(map, KPT_REFERENCE_SET, 0, flow.first);
  const BIT t = bit_of(map, KPT_TRANSFORMED_SET, 0, flow.last);
  EXPECT_TRUE(!r.is_known || !t.is_known || r.trace == t.trace) << "the two sides differ";
  if (map.is_stuck_at_zero() || map.is_stuck_at_one()) {
    const bool is_turned = map.get_group(r.is_known ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET, 0, false).empty();
    const TRACE value = is_turned ? ~(r.is_known ? r.trace : t.trace) : r.is_known ? r.trace : t.trace;
    EXPECT_EQ(value, map.is_stuck_at_one() ? ~TRACE{0} : TRACE{0});
  }
}

// Everything that is known of a register without a machine between is in one map.
void check_copies(const KPT_KEYPOINTS_DB& all, const SIMULATED_FLOW& flow) {
  for (const auto& [name, simulated] : flow.last) {
    const KPT_REGISTER_TRANSFORMATION map = all.get_transformed_register_transformation(name);
    for (const std::string& origin : simulated.origins) {
      EXPECT_FALSE(map.is_null());
      const KPT_REGISTER_TRANSFORMATION of_origin = all.get_reference_register_transformation(origin);
      // Each register of a constant is said to be constant.
      EXPECT_TRUE(map == of_origin || ((map.is_stuck_at_zero() || map.is_stuck_at_one()) &&
                                       (of_origin.is_stuck_at_zero() || of_origin.is_stuck_at_one())))
          << origin << " became " << name;
    }
  }
}

// "Without fanout" is claimed only of registers of which nothing is left. It is
// claimed of all of them that no machine encodes.
void check_without_fanout(const KPT_KEYPOINTS_DB& all, const SIMULATED_FLOW& flow, long* said) {
  std::set<std::string> alive = flow.with_lost_copies;
  for (const auto& [name, simulated] : flow.last) {
    alive.insert(simulated.ancestors.begin(), simulated.ancestors.end());
  }
  const auto is_in = [](const std::set<std::string>& set) {
    return [&set](const std::string& name) { return set.contains(name); };
  };
  for (const auto& [name, simulated] : flow.first) {
    const KPT_FATE_ENUM fate = all.get_reference_register_transformation(name).get_fate(0);
    const std::set<std::string> related = flow.related_to(name);
    const auto none = [&](const std::set<std::string>& set) {
      return std::none_of(related.begin(), related.end(), is_in(set));
    };
    if (fate == KPT_FATE_WITHOUT_FANOUT) {
      ++*said;
      EXPECT_FALSE(alive.contains(name)) << name << " is said to be without fanout";
    } else if (fate != KPT_FATE_CONSTANT && none(alive) && none(flow.encoded)) {
      ADD_FAILURE() << name << " is without fanout and said to be " << kpt_fate_word(fate);
    }
  }
}

TEST(Composition, MakesNoFalseClaimAndLosesNoCopyInSimulatedFlows) {
  std::mt19937 random(seed() + 10);
  const int rounds = steps(40);
  long maps = 0;
  long machines = 0;
  long constants = 0;
  long without_fanout = 0;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    SIMULATED_FLOW flow(random, 3 + static_cast<unsigned>(random() % 58), 2 + static_cast<unsigned>(random() % 4));
    KPT_KEYPOINTS_DB_LIST stages;
    for (const KPT_UNREGISTERED_DB& stage : flow.stages) {
      stages.push_back(*stage);
    }
    const KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
    KPT_COMPOSITION_REPORT report;
    ASSERT_TRUE(all->compose(stages, {0.0, false}, &report)) << report.errors.front();
    for (const KPT_REGISTER_TRANSFORMATION& map : all->get_transformation_set()) {
      ++maps;
      machines += map.has_fsm() ? 1 : 0;
      constants += map.is_stuck_at_zero() || map.is_stuck_at_one() ? 1 : 0;
      map.has_fsm() ? check_machine(map, flow) : check_plain(map, flow);
    }
    check_copies(*all, flow);
    check_without_fanout(*all, flow, &without_fanout);
  }
  EXPECT_GT(maps, rounds * 5);
  EXPECT_GT(machines, rounds / 10);
  EXPECT_GT(constants, rounds / 10);
  EXPECT_GT(without_fanout, rounds / 40);
  std::cout << rounds << " flows: " << maps << " maps, " << machines << " machines, " << constants << " constants, "
            << without_fanout << " without fanout\n";
}

}  // namespace
