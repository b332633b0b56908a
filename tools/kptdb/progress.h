// A line on standard error during long work on a terminal: how much is
// done.
//
// Ownership: the line is removed when its PROGRESS ends.
#ifndef KPTDB_PROGRESS_H
#define KPTDB_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace kptdb {

class PROGRESS {
 public:
  enum UNIT : bool { BYTES, REGISTERS };
  /// When lines are shown. OFF: never; AUTO: on a terminal, after the work has
  /// taken a second; ON: from the beginning, wherever standard error goes.
  enum MODE : std::uint8_t { AUTO, ON, OFF };
  static void set_mode(MODE mode);

  /// `whole` is the size of the work; 0 when it is not known.
  PROGRESS(std::string what, std::uint64_t whole, UNIT unit = BYTES);
  ~PROGRESS();
  PROGRESS(const PROGRESS&) = delete;
  PROGRESS& operator=(const PROGRESS&) = delete;

  /// Reports how much is done. This takes almost no time.
  void at(std::uint64_t done) {
    if (m_is_wanted && done >= m_next_look) {
      look(done);
    }
  }

 private:
  using CLOCK = std::chrono::steady_clock;

  void look(std::uint64_t done);
  std::string text(std::uint64_t done) const;
  std::string m_what;
  std::uint64_t m_whole;
  UNIT m_unit;
  bool m_is_wanted;
  bool m_is_shown = false;
  std::uint64_t m_next_look = 0;
  CLOCK::time_point m_next;
};

/// The same for work that is one call of the library, which does not say how far it has come: how many
/// registers it is about, and for how long it has been at it. Shown by a thread of its own.
class WAITING {
 public:
  WAITING(std::string what, std::uint64_t registers);
  ~WAITING();
  WAITING(const WAITING&) = delete;
  WAITING& operator=(const WAITING&) = delete;

 private:
  void run();

  std::string m_text;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_is_over = false;
  std::thread m_thread;  // none while nothing is to be shown
};

}  // namespace kptdb

#endif
