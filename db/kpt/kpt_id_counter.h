// The steps of an id counter. Databases in different threads count on the same
// counters, and each id is handed out once.
//
// Ownership: none; the counter is the caller's.
#ifndef KPT_ID_COUNTER_H
#define KPT_ID_COUNTER_H

#include <atomic>

#include "db/kpt/kpt_types.h"

namespace kpt_id_counter {

/// The counter's value, which is then raised by one.
inline long take(long& counter) { return std::atomic_ref<long>(counter).fetch_add(1, std::memory_order_relaxed); }

/// The counter is raised by one, and its new value taken.
inline long take_next(long& counter) { return take(counter) + 1; }

/// Takes back the last `take`. An id that another thread has gone past since
/// stays unused.
inline void give_back(long& counter, long id) {
  long behind = id + 1;
  std::atomic_ref<long>(counter).compare_exchange_strong(behind, id, std::memory_order_relaxed);
}

/// Never lowers the counter.
inline void raise(long& counter, long id) {
  const std::atomic_ref<long> shared(counter);
  long value = shared.load(std::memory_order_relaxed);
  while (value < id && !shared.compare_exchange_weak(value, id, std::memory_order_relaxed)) {
  }
}

}  // namespace kpt_id_counter

#endif
