// Finds registers again, by their functions, that a pass made anew.
#include <exception>

#include "tracker.h"

namespace kpt_yosys {

// Registers that cannot be found stay unknown; tracking continues.
void TRACKER::recognise(const STEP& step, const std::vector<POINT>& before) {
  try {
    search(step, before);
  } catch (const std::exception& failure) {
    Yosys::log_warning("%s: registers stay unknown.\n", failure.what());
  }
}

void TRACKER::search(const STEP& step, const std::vector<POINT>& before) {
  std::vector<RECOGNITION::KNOWN> known;
  std::vector<std::string> lost;
  std::vector<std::size_t> lost_points;
  for (std::size_t i = 0; i < before.size(); ++i) {
    const POINT& now = m_now.m_points[i];
    if (before[i].m_fate != FATE::LIVE) {
      continue;
    }
    const std::string name = step.m_before.name(before[i].m_location);
    if (now.m_fate == FATE::LIVE) {
      known.push_back({name, step.m_after.name(now.m_location), now.m_inverted != before[i].m_inverted});
    } else if (now.m_fate == FATE::UNKNOWN) {
      lost.push_back(name);
      lost_points.push_back(i);
    }
  }
  if (lost.empty()) {
    return;
  }
  std::vector<LOCATION> after;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < step.m_after.instances().size(); ++i) {
    const auto instance = static_cast<int>(i);
    for (std::size_t flop = 0; flop < step.m_after.module(instance).flops().size(); ++flop) {
      after.push_back({instance, static_cast<int>(flop)});
      names.push_back(step.m_after.name(after.back()));
    }
  }
  const std::vector<RECOGNITION::FOUND> found =
      m_recognition->find(known, lost, names, step.m_after.module(0).module());
  for (std::size_t i = 0; i < found.size(); ++i) {
    settle_found(step, m_now.m_points[lost_points[i]], found[i], after);
  }
}

void TRACKER::settle_found(const STEP& step, POINT& point, const RECOGNITION::FOUND& found,
                           const std::vector<LOCATION>& after) {
  switch (found.m_answer) {
    case RECOGNITION::ANSWER::UNKNOWN:
      return;
    case RECOGNITION::ANSWER::ZERO:
    case RECOGNITION::ANSWER::ONE:
      point.m_fate = (found.m_answer == RECOGNITION::ANSWER::ONE) != point.m_inverted ? FATE::ONE : FATE::ZERO;
      point.m_pass = step.m_pass;
      return;
    case RECOGNITION::ANSWER::REGISTER:
      move(step, point, after[static_cast<std::size_t>(found.m_register)], point.m_inverted != found.m_inverted);
      return;
  }
}

}  // namespace kpt_yosys
