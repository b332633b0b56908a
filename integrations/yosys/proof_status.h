// Records the result of a proof for the facts of a keypoint database in that database.
//
// Ownership: database and module are used only during the call, which does not change the module.
#ifndef PROOF_STATUS_H
#define PROOF_STATUS_H

#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "kernel/yosys.h"

namespace kpt_yosys {

struct PROOF_STATUS {
  std::size_t m_proved = 0;
  std::size_t m_claimed = 0;           // in the proof, which does not settle them
  std::size_t m_absent = 0;            // not in the proof; what is known of them stays as it was
  std::size_t m_unproven_cells = 0;    // of the whole module
  std::vector<std::string> m_refuted;  // by power-up values: the first register of each
  std::vector<std::string> m_open;     // whose own cells are unproven: likewise
};

/// Sets the attribute `status` of each map for which prepare_proof() changed the module: "proved"
/// when no cell of the module is unproven, "refuted" when power-up values contradict the map, and
/// otherwise "claimed", with a `note` that says whether its own cells or only others are unproven.
PROOF_STATUS read_proof_status(const KPT_KEYPOINTS_DB& db, Yosys::RTLIL::Module* equiv);

}  // namespace kpt_yosys

#endif
