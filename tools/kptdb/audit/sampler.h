// The values of a dump at some moments only: just before each edge of a clock, or at given times.
//
// Just before an edge everything has settled, also in a simulation with delays.
// The changes that the edge itself starts are seen at the next edge.
//
// Ownership: a sampler owns its reader.
#ifndef KPTDB_SAMPLER_H
#define KPTDB_SAMPLER_H

#include <cstdint>
#include <string>
#include <vector>

#include "../wave/vcd_reader.h"

namespace kptdb {

enum CLOCK_EDGE { RISING_EDGE, FALLING_EDGE, BOTH_EDGES };

class SAMPLER {
 public:
  explicit SAMPLER(const std::string& path) : m_reader(path) {}
  VCD_READER& reader() { return m_reader; }

  void sample_at_edges(std::uint32_t followed_clock, CLOCK_EDGE edge);
  /// In the units of the dump, sorted. The values are those after all changes of that time.
  void sample_at(std::vector<std::uint64_t> times);

  /// Whether this sampler has moments of its own, from its clock or its times.
  bool has_moments() const { return m_clock != NO_BIT || !m_times.empty(); }

  /// Goes to the next moment; false when the dump has no more.
  bool next_sample();
  /// Goes to the moment just before a time, for a dump without moments of its own; false when the dump ends earlier.
  bool sample_before(std::uint64_t time);
  /// In units of the dump.
  std::uint64_t time() const { return m_sample_time; }
  /// The value at the moment: '0', '1', 'x' or 'z'.
  char value(std::uint32_t followed_bit) const { return m_settled[followed_bit]; }
  /// The bits that changed since the previous moment; at the first moment, all that have a value.
  const std::vector<std::uint32_t>& touched() const { return m_touched; }

 private:
  void begin_moment();
  bool read_step();
  bool is_edge() const;
  bool sample_now(std::uint64_t time);
  void settle();

  VCD_READER m_reader;
  std::uint32_t m_clock = NO_BIT;
  CLOCK_EDGE m_edge = RISING_EDGE;
  std::vector<std::uint64_t> m_times;
  std::size_t m_next_time = 0;
  std::uint64_t m_sample_time = 0;
  std::vector<char> m_settled;  // the values before the step that the reader is at
  std::vector<bool> m_is_touched;
  std::vector<std::uint32_t> m_touched;
  bool m_was_sampled = false;
  bool m_has_step = false;  // the reader is at a step that is not settled
  bool m_is_over = false;
};

}  // namespace kptdb

#endif
