// Recognises registers that a pass made anew, by what they compute.
//
// A register before the pass is one after it, or the inverse of that, when both have the same clock
// and asynchronous controls and load the same value at each edge, given that all registers recognised
// hold the same now. That is found in two steps: what a simulation of both netlists from power-up
// does not refute is a candidate, and candidates stay as long as a SAT solver does not show that one
// of them fails while all of them hold. At power-up a register that had a value has it still.
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
  /// Copies the netlist as it is.
  explicit RECOGNITION(const NETLIST_VIEW& before);

  /// A register that is known before the pass and after it, by the names of its nets.
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

  /// What each of the registers `lost`, of before, is now, among the registers `after` below `top`; all by name.
  /// Throws as done_apart().
  std::vector<FOUND> find(const std::vector<KNOWN>& known, const std::vector<std::string>& lost,
                          const std::vector<std::string>& after, RTLIL::Module* top) const;

 private:
  std::string m_before;  // as RTLIL
  std::string m_top;     // as Yosys spells it
};

}  // namespace kpt_yosys

#endif
