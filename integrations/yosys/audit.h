// Checks in a simulation what is known of the registers. It simulates the reference netlist, as it was
// when tracking began, and the present netlist side by side with the same random inputs from power-up.
//
// Ownership: an audit owns a copy of the reference.
#ifndef AUDIT_H
#define AUDIT_H

#include <string>
#include <vector>

#include "tracker.h"

namespace kpt_yosys {

class AUDIT {
 public:
  /// Copies the top module of the view and the modules below it.
  explicit AUDIT(const NETLIST_VIEW& reference);

  struct EFFORT {
    int m_runs = 256;
    int m_cycles = 64;
  };
  struct FINDINGS {
    std::vector<int> m_false_points;    // points of the tracker
    std::vector<int> m_false_machines;  // machines of the tracker
    std::size_t m_held = 0;
    std::size_t m_unseen = 0;  // facts whose values were never known on both sides
  };
  /// Throws when the system cannot start a process. A fact is false when it fails
  /// in any run at any moment at which its values are known.
  FINDINGS check(const TRACKER& tracker, const EFFORT& effort) const;

 private:
  FINDINGS simulate(const TRACKER& tracker, const EFFORT& effort) const;
  bool simulated_into(int to, const TRACKER& tracker, const EFFORT& effort) const;

  std::string m_reference;  // as RTLIL
  std::string m_top;        // as Yosys spells it
};

}  // namespace kpt_yosys

#endif
