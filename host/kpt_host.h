// The reference host: a complete, small implementation of the host services for programs that
// have none, with functions to observe and control it.
//
// Ownership: the host owns a sink from the call that sets it until another call replaces it. An
// empty function restores the default. The texts that a sink gets are valid only during the call.
//
// Threads: the services and `trackers` are safe in any thread. Debug output, sinks and switches may
// be set only while no other thread uses the library. A sink is called in the thread that issues the
// message. So it may be called in several threads at once when several threads use databases.
#ifndef KPT_HOST_H
#define KPT_HOST_H

#include <functional>
#include <string>
#include <vector>

#include "h/mem_alloc_sys.h"

namespace kpt_host {

/// The account of one allocated type. Sizes are the requested ones.
struct TRACKER {
  std::string type;
  unsigned long live_bytes;
  unsigned long live_blocks;
  unsigned long peak_bytes;
  unsigned long peak_blocks;
};

/// Debug output. It is off at start, unless the environment variable KPT_DEBUG is set and is neither
/// empty nor "0". A line goes to the sink, which is standard error by default.
KPT_HOST_API void set_debug(bool on);
KPT_HOST_API void set_debug_sink(std::function<void(const char* tag, const char* text)> sink);

/// Posted errors; by default they go to standard error.
KPT_HOST_API void set_error_sink(std::function<void(const char* tag, const char* text)> sink);

/// Failed checks; by default they go to standard error.
KPT_HOST_API void set_internal_error_sink(
    std::function<void(const char* condition, const char* tag, const char* file, int line)> sink);

/// Sets a switch. It then takes precedence over the environment variable KPT_SWITCH_<key> (1, on,
/// true or yes; 0, off, false or no). clear_switches removes all switches that were set here.
KPT_HOST_API void set_switch(const char* key, bool on);
KPT_HOST_API void clear_switches();

/// Every type that was allocated, in the order of the first allocations.
KPT_HOST_API std::vector<TRACKER> trackers();

}  // namespace kpt_host

#endif
