#include "sampler.h"

#include <algorithm>

namespace kptdb {

void SAMPLER::sample_at_edges(std::uint32_t followed_clock, CLOCK_EDGE edge) {
  m_clock = followed_clock;
  m_edge = edge;
}

void SAMPLER::sample_at(std::vector<std::uint64_t> times) { m_times = std::move(times); }

// Only a change between 0 and 1 is an edge, because the value of a clock before its first value is unknown.
bool SAMPLER::is_edge() const {
  const char before = m_settled[m_clock];
  const char after = m_reader.value(m_clock);
  return (before == '0' && after == '1' && m_edge != FALLING_EDGE) ||
         (before == '1' && after == '0' && m_edge != RISING_EDGE);
}

void SAMPLER::settle() {
  for (const std::uint32_t bit : m_reader.changed()) {
    m_settled[bit] = m_reader.value(bit);
    if (!m_is_touched[bit]) {
      m_is_touched[bit] = true;
      m_touched.push_back(bit);
    }
  }
}

bool SAMPLER::sample_now(std::uint64_t time) {
  m_sample_time = time;
  m_was_sampled = true;
  return true;
}

void SAMPLER::begin_moment() {
  m_settled.resize(m_reader.followed(), 'x');
  m_is_touched.resize(m_reader.followed(), false);
  if (m_was_sampled) {
    for (const std::uint32_t bit : m_touched) {
      m_is_touched[bit] = false;
    }
    m_touched.clear();
    m_was_sampled = false;
  }
}

bool SAMPLER::read_step() {
  m_has_step = !m_is_over && m_reader.next_step();
  m_is_over = !m_has_step;
  return m_has_step;
}

bool SAMPLER::next_sample() {
  begin_moment();
  for (;;) {
    if (!m_has_step && read_step() && m_clock != NO_BIT && is_edge()) {
      return sample_now(m_reader.time());
    }
    const bool waits = m_next_time < m_times.size();
    if (waits && (m_has_step ? m_times[m_next_time] < m_reader.time() : m_times[m_next_time] == m_reader.time())) {
      return sample_now(m_times[m_next_time++]);
    }
    if (!m_has_step) {
      return false;
    }
    settle();
    m_has_step = false;
  }
}

bool SAMPLER::sample_before(std::uint64_t time) {
  begin_moment();
  while (m_has_step || read_step()) {
    if (m_reader.time() >= time) {
      return sample_now(time);
    }
    settle();
    m_has_step = false;
  }
  return false;
}

}  // namespace kptdb
