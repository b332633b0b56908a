// A line on standard error during long work on a terminal: how much is
// done.
//
// Ownership: the line is removed when its PROGRESS ends.
#ifndef KPTDB_PROGRESS_H
#define KPTDB_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

#include "db/kpt/kpt.h"

namespace kptdb {

class PROGRESS : public KPT_PROGRESS {
 public:
  enum UNIT : std::uint8_t { BYTES, REGISTERS, MAPS, REGISTERS_AND_MAPS };
  /// When lines are shown. OFF: never; AUTO: on a terminal, after the work has
  /// taken a second; ON: from the beginning, wherever standard error goes.
  enum MODE : std::uint8_t { AUTO, ON, OFF };
  static void set_mode(MODE mode);

  /// `whole` is the size of the work; 0 when it is not known.
  PROGRESS(std::string what, std::uint64_t whole, UNIT unit = BYTES);
  /// For an operation of the library, which says how large its work is.
  explicit PROGRESS(std::string what) : PROGRESS(std::move(what), 0, REGISTERS_AND_MAPS) {}
  ~PROGRESS() override;
  PROGRESS(const PROGRESS&) = delete;
  PROGRESS& operator=(const PROGRESS&) = delete;

  /// Reports how much is done. This takes almost no time.
  void at(std::uint64_t done) {
    if (m_is_wanted && done >= m_next_look) {
      look(done);
    }
  }
  void at(std::size_t done, std::size_t all) override {
    m_whole = all;
    at(done);
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

}  // namespace kptdb

#endif
