// Counts the registers and maps that a long operation passes, and tells a
// listener of them.
//
// Ownership: the listener outlives the count.
#ifndef KPT_STEPS_H
#define KPT_STEPS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "db/kpt/kpt_progress.h"

class KPT_STEPS {
 public:
  /// `all` is the sum of all passes, as far as it is known. Nothing is told when
  /// there is no listener.
  KPT_STEPS(KPT_PROGRESS* progress, std::size_t all)
      : m_progress(progress), m_all(all), m_next(progress == nullptr ? SIZE_MAX : 1) {}

  /// Begins a pass. The one before it is over, however many steps it took.
  void begin(std::size_t count) {
    m_done = m_end;
    m_end += count;
  }
  /// One register or map is passed.
  void next() {
    if (++m_done >= m_next) {
      tell(std::min({m_done, m_end, m_all}));
    }
  }
  /// Everything is passed.
  void finish() {
    if (m_progress != nullptr) {
      tell(m_all);
    }
  }

 private:
  void tell(std::size_t done) {
    constexpr std::size_t INTERVAL = 1024;
    m_next = m_done + INTERVAL;
    m_progress->at(done, m_all);
  }

  KPT_PROGRESS* m_progress;
  std::size_t m_all;
  std::size_t m_next;
  std::size_t m_done = 0;
  std::size_t m_end = 0;  // of the pass
};

#endif
