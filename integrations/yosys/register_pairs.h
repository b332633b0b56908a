// Registers of two netlists that hold the same value, or the inverse, at all times.
//
// Ownership: owns both netlists.
#ifndef REGISTER_PAIRS_H
#define REGISTER_PAIRS_H

#include <vector>

#include "register_pair.h"
#include "side_by_side.h"

namespace kpt_yosys {

class REGISTER_PAIRS {
 public:
  REGISTER_PAIRS(SIMULATION before, SIMULATION after) : m_both(std::move(before), std::move(after)) {}

  using PAIR = REGISTER_PAIR;

  const SIMULATION& before() const { return m_both.reference(); }
  const SIMULATION& after() const { return m_both.present(); }

  /// Adds a pair that is known to hold. It is ignored when a number is -1, for a register that does not exist.
  void add_known(const PAIR& pair);
  /// At most one pair for each register of the netlist before that is in no known pair.
  /// Empty for a netlist that is large or has loops, because that would take too long.
  std::vector<PAIR> proven();

 private:
  void find_candidates();
  bool starts_alike(const PAIR& pair) const;
  void choose_one_each();
  void add_by_nets();
  bool drop_what_fails();
  void drop(const std::vector<char>& fails);
  bool fails_at_random(std::uint64_t seed, std::vector<char>& fails) const;
  bool fails_by_solver(std::vector<char>& fails);

  SIDE_BY_SIDE m_both;
  std::vector<PAIR> m_known;
  std::vector<PAIR> m_candidates;
  bool m_gave_up = false;
};

}  // namespace kpt_yosys

#endif
