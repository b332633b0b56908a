// Nets of two netlists that hold the same value, or the inverse, at all times.
//
// A pass may simplify a register's function by what is true of all states that occur. Then the
// functions before and after agree only in these states. Classes of equal nets describe the states:
// at first, nets that a simulation does not tell apart. A class is split when a SAT solver finds
// either that it need not hold at power-up, or that it can fail for some inputs after a step from a
// state and inputs for which all classes hold. What is left holds at all times, for a choice of the
// power-up values that are not given.
//
// Ownership: refers to both netlists, which outlive it.
#ifndef NET_CLASSES_H
#define NET_CLASSES_H

#include <ctime>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "literals.h"
#include "register_pair.h"
#include "side_by_side.h"
#include "words.h"

namespace kpt_yosys {

class NET_CLASSES {
 public:
  using PAIR = REGISTER_PAIR;

  /// `known` are pairs that hold at all times.
  NET_CLASSES(SIDE_BY_SIDE& both, const std::vector<PAIR>& known) : m_both(both), m_known(known) {}

  /// All pairs of a register before and a register after, or a constant, that are in one class. Empty for
  /// netlists that are large, have loops, or have a register whose clock comes through logic.
  std::vector<PAIR> pairs();

 private:
  // A net of one netlist whose value is compared. The first one of all is the constant 0.
  struct SIGNAL {
    bool m_after = false;
    int m_net = 0;
    bool m_inverted = false;
    std::size_t m_class = 0;  // the class's first signal
  };

  bool find_clocks();
  void add_signals(bool after);
  void simulate();
  bool settle();
  bool holds_at_power_up();
  bool choose_power_up(std::vector<bool>& held);
  bool holds_after_step();
  bool search(ezSAT& solver, const std::vector<int>& values, const std::vector<int>& held);
  void see_what_follows(const std::vector<bool>& held, std::vector<std::uint64_t>& seen);
  void split(const std::vector<std::uint64_t>& seen);
  template <class ALGEBRA, class MOMENT>
  std::vector<typename ALGEBRA::VALUE> values_of(ALGEBRA& algebra, MOMENT& moment) const;
  template <class ALGEBRA, class MOMENT>
  typename ALGEBRA::VALUE after_step(ALGEBRA& algebra, MOMENT& now,
                                     std::vector<typename ALGEBRA::VALUE> (&next)[2]) const;
  template <class MOMENT>
  void demand_known(LITERALS& literals, MOMENT& moment) const;
  template <class MOMENT>
  int set_asynchronously(LITERALS& literals, MOMENT& moment) const;
  void demand_classes(ezSAT& solver, const std::vector<int>& values) const;
  std::vector<PAIR> pairs_found() const;
  const SIMULATION& netlist(bool after) const { return after ? m_both.present() : m_both.reference(); }

  SIDE_BY_SIDE& m_both;
  const std::vector<PAIR>& m_known;
  std::vector<SIGNAL> m_signals;
  std::vector<std::pair<std::string, bool>> m_clocks[2];  // of each register: the input, and whether inverted
  WORDS m_words{std::mt19937_64(1)};
  std::clock_t m_end = 0;  // the processor time at which the search gives up
  bool m_gave_up = false;
};

}  // namespace kpt_yosys

#endif
