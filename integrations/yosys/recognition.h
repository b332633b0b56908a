// Recognises registers that a pass made anew by their functions.
//
// A register after the pass equals one before it, or is the inverse, when both have the same clock
// and asynchronous controls and load the same value at each edge, if all recognised registers hold
// the same now. There are two steps. The pairs that a simulation of both netlists from power-up does
// not refute are candidates. A candidate is dropped when a SAT solver shows that it fails while all
// of them hold. A register that had a power-up value has to have the same one after the pass.
//
// Ownership: owns a copy of the netlist before the pass.
#ifndef RECOGNITION_H
#define RECOGNITION_H

#include <string>
#include <vector>

#include "netlist_view.h"

namespace kpt_yosys {

class RECOGNITION {
 public:
  /// Copies the present netlist.
  explicit RECOGNITION(const NETLIST_VIEW& before);

  /// A register that is known both before the pass and after it, by the names of its nets.
  struct KNOWN {
    std::string m_before;
    std::string m_after;
    bool m_inverted = false;
  };
  enum class ANSWER { UNKNOWN, ZERO, ONE, REGISTER };
  struct FOUND {
    ANSWER m_answer = ANSWER::UNKNOWN;
    int m_register = -1;  // among `after`
    bool m_inverted = false;
  };

  /// For each register in `lost`, of the netlist before, the register in `after`,
  /// below `top`, that it is now; all by name. Throws like done_apart().
  std::vector<FOUND> find(const std::vector<KNOWN>& known, const std::vector<std::string>& lost,
                          const std::vector<std::string>& after, RTLIL::Module* top) const;

 private:
  std::string m_before;  // as RTLIL
  std::string m_top;     // as Yosys spells it
};

}  // namespace kpt_yosys

#endif
