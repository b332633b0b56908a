// A host that a program defines itself, and a record of its calls.
//
// Ownership: the record is a copy that exists until the process ends. The library owns the
// trackers.
#ifndef TESTS_HOST_OWN_HOST_H
#define TESTS_HOST_OWN_HOST_H

#include <set>
#include <string>
#include <vector>

#include "h/mem_alloc_sys.h"
#include "h/msg_sys.h"

namespace own_host {

struct RECORD {
  std::set<std::string> libraries;  // loaded and not unloaded
  std::set<const MEM_TRACKER_THUNK*> trackers;
  std::set<std::string> allocating_files;
  std::set<std::string> freeing_tags;
  bool unbound_tracker = false;  // whether a tracker had no type
  long live_blocks = 0;
  std::vector<std::string> debug_lines;
  std::vector<std::string> errors;
  std::vector<std::string> internal_errors;
  std::vector<std::string> switches;  // the keys that were read
  bool debug = true;
  std::vector<unsigned> argument_counts;  // the numbers that were passed with texts
  std::set<const MSG_REPORT*> reports;    // destinations of messages
  std::vector<std::string> tags;          // set on debug messages
  std::vector<std::string> path_calls;    // the calls for paths
  unsigned long ticks = 0;
  bool tells_of_the_end = false;  // whether it prints its calls at process exit
};

RECORD& record();

/// From now on debug messages note the tags that are set on them.
void hear_debug_messages();

}  // namespace own_host

#endif
