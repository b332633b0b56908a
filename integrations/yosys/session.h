// The tracking in this process, and how it watches passes.
//
// Ownership: the session owns the tracker. Yosys owns the passes. The wrappers
// around them stay until the process ends and do nothing without tracking.
#ifndef SESSION_H
#define SESSION_H

#include <string>

#include "audit.h"
#include "tracker.h"

namespace kpt_yosys {

/// Starts tracking `top` (empty: the design's top module); the stage's database gets that name.
/// Ends an earlier tracking.
/// With `audit`, keeps the reference for current_audit().
void start_tracking(RTLIL::Design* design, const std::string& top, const std::string& name, bool audit);
void stop_tracking();

/// Null without tracking.
TRACKER* current_tracker();
/// Null when the reference is not kept.
const AUDIT* current_audit();
/// Whether `design` has saved the followed design, which is not the present one.
bool is_away();
const std::string& current_stage();
/// Continues with the next stage.
void next_stage(const std::string& name);

/// Seconds of processor time since tracking started.
struct COST {
  double m_tracking = 0;
  double m_all = 0;  // of the synthesis with its tracking, and of the programs that passes start
};
COST tracking_cost();

}  // namespace kpt_yosys

#endif
