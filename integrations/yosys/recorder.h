// Writes the results of a tracker into a keypoint database, with the names that registers
// have at the end of the stage, because the database does not record a change of name.
//
// Ownership: the manager owns the database; tracker and handle are used only during the call.
#ifndef RECORDER_H
#define RECORDER_H

#include <map>
#include <string>

#include "db/kpt/kpt.h"
#include "tracker.h"

namespace kpt_yosys {

/// What became of the reference registers; each is counted once.
struct TOTALS {
  std::map<std::string, std::size_t> m_unknown_after;  // by the pass in which they were lost
  std::size_t m_reference = 0;
  std::size_t m_kept = 0;
  std::size_t m_renamed = 0;
  std::size_t m_inverted = 0;
  std::size_t m_instance = 0;
  std::size_t m_merged = 0;
  std::size_t m_zero = 0;
  std::size_t m_one = 0;
  std::size_t m_undefined = 0;
  std::size_t m_no_fanout = 0;
  std::size_t m_machine = 0;
  std::size_t m_unknown = 0;
  std::size_t m_machines = 0;
  std::size_t m_new = 0;           // registers of the netlist without a reference register
  std::size_t m_front_end = 0;     // reference registers that the front end made
  std::size_t m_not_recorded = 0;  // facts that the database refused
};

/// Records a stage and returns what became of its registers.
TOTALS record(const TRACKER& tracker, const KPT_KEYPOINTS_DB& db);

/// Prints the totals to the log of Yosys.
void print(const TOTALS& totals, const std::string& name);

}  // namespace kpt_yosys

#endif
