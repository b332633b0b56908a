// Checks what is known of the registers in a simulation: the reference netlist, as it was when
// following began, and the present one side by side on the same random inputs, from power-up.
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
  /// Copies what stands below the top module of the view.
  explicit AUDIT(const NETLIST_VIEW& reference);

  struct EFFORT {
    int m_runs = 256;
    int m_cycles = 64;
  };
  struct FINDINGS {
    std::vector<int> m_false_points;    // of the tracker
    std::vector<int> m_false_machines;  // likewise
    std::size_t m_held = 0;
    std::size_t m_unseen = 0;  // facts whose values were never known on both sides
  };
  /// Throws when the system does not give what a process takes. A fact is false when it fails in one run at one moment
  /// at which its values are known.
  FINDINGS check(const TRACKER& tracker, const EFFORT& effort) const;

 private:
  FINDINGS simulate(const TRACKER& tracker, const EFFORT& effort) const;
  bool simulated_into(int to, const TRACKER& tracker, const EFFORT& effort) const;

  std::string m_reference;  // as RTLIL
  std::string m_top;        // as Yosys spells it
};

}  // namespace kpt_yosys

#endif
