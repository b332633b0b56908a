#include "side_by_side.h"

#include <algorithm>

namespace kpt_yosys {

bool SIDE_BY_SIDE::is_clock(const std::string& name) const {
  const auto in = [&name](const std::vector<std::string>& clocks) {
    return std::find(clocks.begin(), clocks.end(), name) != clocks.end();
  };
  return in(m_reference.clocks()) || in(m_present.clocks());
}

void SIDE_BY_SIDE::drive(const std::string& name, TERNARY value) {
  for (SIMULATION* const side : {&m_reference, &m_present}) {
    const int net = side->net(name);
    if (net > 2) {
      side->set(net, value);
    }
  }
}

void SIDE_BY_SIDE::change_data(const std::vector<HABIT>& habits, bool settled) {
  std::size_t at = 0;
  for (const auto& [name, net] : m_reference.inputs()) {
    const HABIT& habit = habits[at++];
    if (is_clock(name)) {
      continue;
    }
    const std::uint64_t half = m_random();
    const std::uint64_t few = half & m_random() & m_random() & m_random();
    std::uint64_t ones = half;
    if (settled) {
      ones = (few & habit.m_seldom) | (~few & habit.m_mostly) | (half & ~habit.m_seldom & ~habit.m_mostly);
    }
    drive(name, {ones, ~ones});
  }
}

// Turns every clock once, in each run in a random order of the clocks: half of them before the others.
void SIDE_BY_SIDE::change_clocks(const std::function<void()>& look) {
  const bool single = m_reference.clocks().size() < 2;
  std::vector<std::uint64_t> early;
  for (std::size_t i = 0; i < m_reference.inputs().size(); ++i) {
    early.push_back(single ? ~std::uint64_t{0} : m_random());
  }
  for (const bool late : {false, true}) {
    if (late && single) {
      return;
    }
    for (std::size_t i = 0; i < early.size(); ++i) {
      const auto& [name, net] = m_reference.inputs()[i];
      if (is_clock(name)) {
        const TERNARY was = m_reference.value(net);
        drive(name, in_runs(late ? ~early[i] : early[i], ~was, was));
      }
    }
    settle();
    look();
  }
}

void SIDE_BY_SIDE::settle() {
  m_reference.settle();
  m_present.settle();
}

void SIDE_BY_SIDE::run(int runs, int cycles, const std::function<void()>& look) {
  constexpr int RUNS_AT_A_TIME = 64;
  constexpr int CYCLES_UNTIL_HABITS = 4;  // in which all resets are likely to be active once
  for (int run = 0; run < runs; run += RUNS_AT_A_TIME) {
    std::vector<HABIT> habits(m_reference.inputs().size());
    for (HABIT& habit : habits) {
      const std::uint64_t any = m_random();
      habit.m_seldom = any & m_random();
      habit.m_mostly = any & ~habit.m_seldom;
    }
    m_reference.power_up();
    m_present.power_up();
    for (const auto& [name, net] : m_reference.inputs()) {
      drive(name, ALL_ZERO);
    }
    change_data(habits, false);
    m_reference.begin();
    m_present.begin();
    // Inputs stay the same for both edges of each clock, from power-up on. Otherwise only an
    // asynchronous register would see a reset that is active between two edges.
    for (int cycle = 0; cycle < cycles; ++cycle) {
      if (cycle > 0) {
        change_data(habits, cycle >= CYCLES_UNTIL_HABITS);
      }
      settle();
      look();
      change_clocks(look);
      change_clocks(look);
    }
  }
}

}  // namespace kpt_yosys
