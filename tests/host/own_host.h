// A host that a program brings itself, and what it was told.
//
// Ownership: everything recorded is a copy that lives until the process ends; trackers are the
// library's.
#ifndef TESTS_HOST_OWN_HOST_H
#define TESTS_HOST_OWN_HOST_H

#include <set>
#include <string>
#include <vector>

#include "h/mem_alloc_sys.h"
#include "h/msg_sys.h"

namespace own_host {

struct RECORD {
  std::set<std::string> libraries;  // announced and not withdrawn
  std::set<const MEM_TRACKER_THUNK*> trackers;
  std::set<std::string> allocating_files;
  std::set<std::string> freeing_tags;
  bool unbound_tracker = false;  // a tracker came without a type
  long live_blocks = 0;
  std::vector<std::string> debug_lines;
  std::vector<std::string> errors;
  std::vector<std::string> internal_errors;
  std::vector<std::string> switches;  // asked for
  bool debug = true;
  std::vector<unsigned> argument_counts;  // the numbers that came with texts
  std::set<const MSG_REPORT*> reports;    // destinations of messages
  std::vector<std::string> tags;          // set on debug messages
  std::vector<std::string> path_calls;    // what was asked of paths
  unsigned long ticks = 0;
  bool tells_of_the_end = false;  // prints what happens when the process ends
};

RECORD& record();

/// From now on debug messages note the tags that are set on them.
void hear_debug_messages();

}  // namespace own_host

#endif
