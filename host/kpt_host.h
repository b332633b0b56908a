// The reference host: a complete, small implementation of the host services for programs that
// bring none, with knobs to watch and steer it.
//
// Ownership: a sink belongs to the host from the call that sets it until it is replaced; an empty
// function restores the default. Texts handed to a sink live for the duration of the call.
//
// Threads: the services are safe in any thread, `trackers` too. Debug output, sinks and switches
// are set while no other thread uses the library; a sink is called in the thread that has something
// to say, so in several at once when databases are used in several.
#ifndef KPT_HOST_H
#define KPT_HOST_H

#include <functional>
#include <string>
#include <vector>

#include "h/mem_alloc_sys.h"

namespace kpt_host {

/// The account of one allocated type. Sizes are those asked for.
struct TRACKER {
  std::string type;
  unsigned long live_bytes;
  unsigned long live_blocks;
  unsigned long peak_bytes;
  unsigned long peak_blocks;
};

/// Debug output. Off at start unless the environment variable KPT_DEBUG is set, not empty and
/// not "0". A line goes to the sink, by default to standard error.
KPT_HOST_API void set_debug(bool on);
KPT_HOST_API void set_debug_sink(std::function<void(const char* tag, const char* text)> sink);

/// Posted errors; by default they go to standard error.
KPT_HOST_API void set_error_sink(std::function<void(const char* tag, const char* text)> sink);

/// Failed checks; by default they go to standard error.
KPT_HOST_API void set_internal_error_sink(
    std::function<void(const char* condition, const char* tag, const char* file, int line)> sink);

/// Sets a switch, over the environment's KPT_SWITCH_<key> (1, on, true or yes; 0, off, false or
/// no). clear_switches takes back what was set here and leaves the environment in force.
KPT_HOST_API void set_switch(const char* key, bool on);
KPT_HOST_API void clear_switches();

/// Every type that was ever allocated, in order of first allocation.
KPT_HOST_API std::vector<TRACKER> trackers();

}  // namespace kpt_host

#endif
