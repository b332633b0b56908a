// Everything that a load of one file comes to, in a form that can be compared:
// what a manager answers, what it saves, and what the host hears, in order.
//
// Ownership: plain values. One load at a time: it takes over the reference
// host's sinks and gives the default ones back.
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

/// The way of a manager that has no database yet.
LOAD_OUTCOME load_outcome(const std::string& path, LOAD_WAY way);

}  // namespace kpt_test

#endif
