// The whole result of a load in a form that can be compared: the answer of the
// manager, the saved database, and the lines that the host gets, in order.
//
// Ownership: plain values. One load at a time: it sets the reference host's sinks
// and then restores the default ones.
#ifndef TESTS_SUPPORT_LOAD_OUTCOME_H
#define TESTS_SUPPORT_LOAD_OUTCOME_H

#include <iosfwd>
#include <string>
#include <vector>

namespace kpt_test {

struct LOAD_OUTCOME {
  bool is_loaded = false;
  std::string saved;                // as the file that the database saves
  std::vector<std::string> groups;  // of each map, null keypoints included
  std::vector<std::string> lines;   // with times and ticks masked
  long r_id = 0;                    // the counters, from 0
  long t_id = 0;

  bool operator==(const LOAD_OUTCOME&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LOAD_OUTCOME& outcome);

enum class LOAD_WAY { SCANNER_FIRST, GENERAL_SOURCE, DOCUMENT };

/// Loads like a manager that has no database yet.
LOAD_OUTCOME load_outcome(const std::string& path, LOAD_WAY way);

}  // namespace kpt_test

#endif
