// Two netlists with the same inputs, simulated with the same random values from power-up.
//
// Ownership: owns both simulations.
#ifndef SIDE_BY_SIDE_H
#define SIDE_BY_SIDE_H

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "simulation.h"

namespace kpt_yosys {

class SIDE_BY_SIDE {
 public:
  /// Uses the inputs of the reference.
  SIDE_BY_SIDE(SIMULATION reference, SIMULATION present)
      : m_reference(std::move(reference)), m_present(std::move(present)) {}

  const SIMULATION& reference() const { return m_reference; }
  const SIMULATION& present() const { return m_present; }

  /// Calls `look` each time that both have settled: three times in each cycle, five times if there
  /// are several clocks. 64 runs at a time.
  void run(int runs, int cycles, const std::function<void()>& look);

 private:
  // How often an input is 1 in each of the runs: half of the time, seldom, or mostly.
  struct HABIT {
    std::uint64_t m_seldom = 0;
    std::uint64_t m_mostly = 0;
  };

  void drive(const std::string& name, TERNARY value);
  void change_data(const std::vector<HABIT>& habits, bool settled);
  void change_clocks(const std::function<void()>& look);
  void settle();
  bool is_clock(const std::string& name) const;

  SIMULATION m_reference;
  SIMULATION m_present;
  std::mt19937_64 m_random{1};
};

}  // namespace kpt_yosys

#endif
