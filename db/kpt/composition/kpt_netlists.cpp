#include "db/kpt/composition/kpt_netlists.h"

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_texts.h"
#include "h/gen_sys.h"

KPT_NETLISTS::KPT_NETLISTS(const STAGES& stages, bool keeps_unrecorded, KPT_CLASSES& classes, KPT_STEPS& steps)
    : m_stages(stages), m_keeps_unrecorded(keeps_unrecorded), m_classes(classes), m_nodes(stages.size()) {
  std::size_t registers = r_set(0).size();
  for (std::size_t stage = 0; stage < stages.size(); ++stage) {
    registers += t_set(stage).size();
  }
  classes.reserve(registers);
  m_taken.reserve(registers);
  add_first(steps);
  for (std::size_t stage = 0; stage < stages.size(); ++stage) {
    if (stage > 0) {
      link(stage, steps);
    }
    add_t(stage, steps);
  }
  for (std::size_t stage = 0; stage + 1 < stages.size(); ++stage) {
    mark_lost(stage);
  }
}

void KPT_NETLISTS::add_first(KPT_STEPS& steps) {
  m_first.reserve(r_set(0).size());
  r_set(0).for_each_keypoint([&](REGISTER* keypoint) {
    steps.next();
    const NODE node = m_classes.add(KPT_CLASSES::AT_AN_END);
    m_first.push_back({node, keypoint, &r_set(0)});
    m_nodes[0].at(KPT_KEYPOINT::slot_of(keypoint)) = node + 1;
    return true;
  });
  m_taken.resize(m_classes.size());
}

void KPT_NETLISTS::add_t(std::size_t stage, KPT_STEPS& steps) {
  const bool is_last = stage + 1 == m_stages.size();
  if (is_last) {
    m_last.reserve(t_set(stage).size());
  }
  t_set(stage).for_each_keypoint([&](REGISTER* keypoint) {
    steps.next();
    const NODE node = m_classes.add(is_last ? KPT_CLASSES::AT_AN_END : KPT_CLASSES::UNMARKED);
    if (is_last) {
      m_last.push_back({node, keypoint, &t_set(stage)});
    }
    m_nodes[stage].at(KPT_KEYPOINT::slot_of(keypoint)) = node + 1;
    return true;
  });
  m_taken.resize(m_classes.size());
}

// A node is one register of the stage after it. When two registers have one name,
// it is the first in the order of the set.
bool KPT_NETLISTS::take(NODE node) {
  if (node == NONE || m_taken[node]) {
    return false;
  }
  m_taken[node] = true;
  return true;
}

KPT_NETLISTS::NODE KPT_NETLISTS::node_in_t(std::size_t stage, REGISTER& keypoint,
                                           const KPT_KEYPOINT_SET_IMPL& its_set) const {
  return node(stage, t_set(stage).get_namesake(keypoint, its_set));
}

void KPT_NETLISTS::link(std::size_t stage, KPT_STEPS& steps) {
  FIT fit{0, 0};
  const KPT_KEYPOINT_SET_IMPL& before = t_set(stage - 1);
  r_set(stage).for_each_keypoint([&](REGISTER* keypoint) {
    steps.next();
    before.fetch_namesakes_behind(*keypoint, r_set(stage));
    NODE node = node_in_t(stage - 1, *keypoint, r_set(stage));
    if (!take(node)) {
      node = m_keeps_unrecorded ? kept_before(stage, *keypoint) : NONE;
    }
    ++fit.starts_from;
    fit.known += node != NONE ? 1 : 0;
    if (node == NONE) {
      node = m_classes.add(KPT_CLASSES::UNMARKED);
      m_taken.push_back(true);
    }
    m_nodes[stage].at(KPT_KEYPOINT::slot_of(keypoint)) = node + 1;
    return true;
  });
  m_fits.push_back(fit);
}

// The register in which the last stage that mentions it ends, or a register of
// the first netlist when no stage mentions it. NONE when a stage starts from it
// and does not end in it: the register at hand is then another one.
KPT_NETLISTS::NODE KPT_NETLISTS::kept_before(std::size_t stage, REGISTER& keypoint) {
  for (std::size_t before = stage; before-- > 0;) {
    const NODE node = node_in_t(before, keypoint, r_set(stage));
    if (node != NONE) {
      return take(node) ? node : NONE;
    }
    if (r_set(before).get_namesake(keypoint, r_set(stage)) != nullptr) {
      return NONE;
    }
  }
  const NODE node = m_classes.add(KPT_CLASSES::AT_AN_END);
  m_taken.push_back(true);
  m_first.push_back({node, &keypoint, &r_set(stage)});
  return node;
}

// Whether no later stage starts from the register; such a stage has taken it already.
bool KPT_NETLISTS::is_kept_behind(std::size_t stage, REGISTER& keypoint) const {
  for (std::size_t behind = stage + 1; behind < m_stages.size(); ++behind) {
    if (r_set(behind).get_namesake(keypoint, t_set(stage)) != nullptr ||
        t_set(behind).get_namesake(keypoint, t_set(stage)) != nullptr) {
      return false;
    }
  }
  return true;
}

void KPT_NETLISTS::mark_lost(std::size_t stage) {
  t_set(stage).for_each_keypoint([&](REGISTER* keypoint) {
    const NODE node = this->node(stage, keypoint);
    if (m_taken[node]) {
      return true;
    }
    if (m_keeps_unrecorded && is_kept_behind(stage, *keypoint)) {
      m_classes.mark(node, KPT_CLASSES::AT_AN_END);
      m_last.push_back({node, keypoint, &t_set(stage)});
    } else {
      m_classes.mark(node, KPT_CLASSES::PARTIAL);
    }
    return true;
  });
}

// Searches all netlists: there are few messages.
KPT_STRING KPT_NETLISTS::describe(NODE node) const {
  KPT_STRING text;
  const auto look_in = [&](std::size_t stage, const KPT_KEYPOINT_SET_IMPL& set, std::size_t netlist) {
    set.for_each_keypoint([&](REGISTER* keypoint) {
      if (this->node(stage, keypoint) == node) {
        text = "\"" + keypoint->get_element_name() + "\" of netlist " + gen_itoa(static_cast<int>(netlist), 10);
      }
      return text.empty();
    });
  };
  for (std::size_t stage = 0; stage < m_stages.size() && text.empty(); ++stage) {
    look_in(stage, r_set(stage), stage + 1);
    if (text.empty()) {
      look_in(stage, t_set(stage), stage + 2);
    }
  }
  return text.empty() ? KPT_STRING("a bit without a register") : text;
}
