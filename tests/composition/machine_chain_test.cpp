// A state machine that every stage of a long flow re-encodes.
#include <gtest/gtest.h>

#include <list>
#include <map>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"

namespace {

constexpr unsigned short STATES = 1000;
constexpr unsigned short BITS = 16;
constexpr unsigned STAGES = 10;

// The code of a state in a netlist: another bijection for each.
unsigned code(unsigned netlist, unsigned state) { return (state * (40503U + 2 * netlist) + 977U * netlist) & 0xffffU; }

bool bit(unsigned netlist, unsigned state, unsigned short column) {
  return (code(netlist, state) >> (column - 1U) & 1U) != 0;
}

KPT_STRING_VECTOR names(unsigned netlist) {
  KPT_STRING_VECTOR all;
  for (unsigned k = 0; k < BITS; ++k) {
    const std::string name = "n" + std::to_string(netlist) + "[" + std::to_string(k) + "]";
    all.emplace_back(name);
  }
  return all;
}

// Each stage lists the states in an order of its own.
KPT_STATE_TABLE table(unsigned stage) {
  KPT_STATE_TABLE table(STATES, BITS, BITS);
  for (unsigned short row = 1; row <= STATES; ++row) {
    const unsigned state = (row * 7U + 31U * stage) % STATES;
    for (unsigned short column = 1; column <= BITS; ++column) {
      table.set_reference_entry(row, column, bit(stage, state, column));
      table.set_transformed_entry(row, column, bit(stage + 1, state, column));
    }
  }
  return table;
}

TEST(MachineChain, IsOneMachineBetweenTheFirstAndTheLastEncoding) {
  std::list<KPT_UNREGISTERED_DB> stages;
  KPT_KEYPOINTS_DB_LIST handles;
  for (unsigned stage = 0; stage < STAGES; ++stage) {
    stages.push_back(KPT_UNREGISTERED_DB::create("stage"));
    ASSERT_TRUE(stages.back()->associate_registers_fsm_signals(names(stage), names(stage + 1), table(stage)));
    handles.push_back(*stages.back());
  }
  KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  ASSERT_TRUE(all->compose(handles));

  const KPT_REGISTER_TRANSFORMATION map = all->get_reference_register_transformation("n0[0]");
  ASSERT_TRUE(map.has_fsm());
  ASSERT_EQ(map.get_number_of_states(), STATES);
  const KPT_STATE_TABLE joined = map.get_state_table();
  std::map<unsigned, unsigned> last_of_first;
  for (unsigned short row = 1; row <= STATES; ++row) {
    unsigned first = 0;
    unsigned last = 0;
    for (unsigned short column = 1; column <= BITS; ++column) {
      first |= static_cast<unsigned>(joined.get_reference_entry(row, column)) << (column - 1U);
      last |= static_cast<unsigned>(joined.get_transformed_entry(row, column)) << (column - 1U);
    }
    last_of_first[first] = last;
  }
  for (unsigned state = 0; state < STATES; ++state) {
    EXPECT_EQ(last_of_first.at(code(0, state)), code(STAGES, state)) << state;
  }
}

}  // namespace
