// The steps of an id counter. Databases in different threads use the same
// counters, and each id is given to one register only.
//
// Ownership: none; the counter is the caller's.
#ifndef KPT_ID_COUNTER_H
#define KPT_ID_COUNTER_H

#include <atomic>

#include "db/kpt/kpt_types.h"

namespace kpt_id_counter {

/// Returns the counter's value, and then raises the counter by one.
inline long take(long& counter) { return std::atomic_ref<long>(counter).fetch_add(1, std::memory_order_relaxed); }

/// Raises the counter by one and returns its new value.
inline long take_next(long& counter) { return take(counter) + 1; }

/// Undoes the last `take`. When another thread has taken a later id since, the
/// id stays unused.
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
