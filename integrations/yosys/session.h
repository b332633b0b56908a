// The tracking that is going on in this process, and how passes are watched for it.
//
// Ownership: the session owns the tracker. The passes stay Yosys' own; what is put around them
// stays for good and does nothing while no tracking goes on.
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

/// Null when no tracking goes on.
TRACKER* current_tracker();
/// Null unless the reference is kept.
const AUDIT* current_audit();
/// Whether the followed design is put aside by `design`.
bool is_away();
const std::string& current_stage();
/// Goes on with the next stage.
void next_stage(const std::string& name);

/// Seconds of processor time since tracking started.
struct COST {
  double m_tracking = 0;
  double m_all = 0;  // of the synthesis with its tracking, and of the programs that passes start
};
COST tracking_cost();

}  // namespace kpt_yosys

#endif
