#include "db/kpt/kpt_composition.h"

#include <utility>

#include "db/kpt/composition/kpt_composition_writer.h"
#include "h/gen_sys.h"

namespace {

KPT_STRING text(std::size_t number) { return gen_itoa(static_cast<int>(number), 10); }

// "1", "1 and 2", "1, 2 and 3".
KPT_STRING listed(const KPT_STRING_VECTOR& items) {
  KPT_STRING result;
  for (std::size_t k = 0; k < items.size(); ++k) {
    result += k == 0 ? "" : k + 1 == items.size() ? " and " : ", ";
    result += items[k];
  }
  return result;
}

}  // namespace

// One run over the stages.
struct KPT_COMPOSITION::SOLUTION {
  SOLUTION(const STAGES& stages, bool keeps_unrecorded)
      : netlists(stages, keeps_unrecorded, classes), machines(classes), statements(netlists, classes, machines) {}

  KPT_CLASSES classes;
  KPT_NETLISTS netlists;
  KPT_MACHINES machines;
  KPT_STATEMENTS statements;
};

KPT_COMPOSITION::KPT_COMPOSITION(STAGES stages, const KPT_COMPOSITION_OPTIONS& options)
    : m_stages(std::move(stages)), m_options(options) {}

bool KPT_COMPOSITION::compose(KPT_KEYPOINTS_DB_IMPL& result) {
  if (m_stages.empty()) {
    m_errors.push_back("there are no stages");
    return false;
  }
  SOLUTION solution(m_stages, m_options.keeps_unrecorded);
  if (!stages_fit(solution)) {
    return false;
  }
  if (!solve(solution, SKIPPED(m_stages.size()))) {
    tell_contradiction(solution);
    return false;
  }
  warn(solution);
  const KPT_COMPOSITION_FACTS facts(m_stages, solution.netlists, solution.statements, solution.classes);
  KPT_COMPOSITION_WRITER(solution.netlists, solution.classes, solution.machines, facts, result).write();
  return true;
}

bool KPT_COMPOSITION::solve(SOLUTION& solution, const SKIPPED& skipped) const {
  for (std::size_t stage = 0; stage < m_stages.size(); ++stage) {
    if (!skipped[stage] && !solution.statements.read(stage, *m_stages[stage])) {
      return false;
    }
  }
  return solution.machines.solve();
}

bool KPT_COMPOSITION::stages_fit(const SOLUTION& solution) {
  std::size_t stage = 1;
  for (const auto& [starts_from, known] : solution.netlists.fits()) {
    ++stage;
    m_fits.push_back("stage " + text(stage) + " starts from " + text(starts_from) + " registers, " + text(known) +
                     " of them known to stage " + text(stage - 1));
    if (static_cast<double>(known) < m_options.least_share * static_cast<double>(starts_from)) {
      m_errors.push_back("stage " + text(stage) + " does not follow stage " + text(stage - 1) + ": " + m_fits.back());
    }
  }
  return m_errors.empty();
}

// ---- What is told ----

void KPT_COMPOSITION::tell_contradiction(const SOLUTION& solution) {
  constexpr std::size_t MOST = 4;
  const auto& of_maps = solution.statements.conflict();
  const auto& nodes = of_maps.empty() ? solution.machines.conflict() : of_maps;
  KPT_STRING_VECTOR registers;
  for (const auto node : nodes) {
    KPT_STRING name = solution.netlists.describe(node);
    if (registers.size() < MOST && (registers.empty() || registers.back() != name)) {
      registers.push_back(std::move(name));
    }
  }
  const bool is_machine = nodes.size() > 2 || of_maps.empty();
  m_errors.push_back(contradicting_stages() +
                     (is_machine              ? " leave no state to the machine of "
                      : registers.size() == 1 ? " say 0 and 1 of "
                                              : " say that these are equal and inverse: ") +
                     listed(registers));
}

// The stages without any of which nothing contradicts: each in turn is left
// out, and stays out unless that ends the contradiction.
KPT_STRING KPT_COMPOSITION::contradicting_stages() const {
  SKIPPED skipped(m_stages.size());
  KPT_STRING_VECTOR stages;
  for (std::size_t stage = 0; stage < m_stages.size(); ++stage) {
    skipped[stage] = true;
    SOLUTION solution(m_stages, m_options.keeps_unrecorded);
    if (solve(solution, skipped)) {
      skipped[stage] = false;
      stages.push_back(text(stage + 1));
    }
  }
  return (stages.size() == 1 ? "the maps of stage " : "stages ") + listed(stages);
}

void KPT_COMPOSITION::warn(const SOLUTION& solution) {
  for (const auto& [stage, map, node] : solution.statements.silent_machines()) {
    m_warnings.push_back("stage " + text(stage + 1) + ": the table of a machine has not its size and says nothing" +
                         (node == KPT_NETLISTS::NONE ? KPT_STRING() : ": " + solution.netlists.describe(node)));
  }
  for (std::size_t k = 0; k < solution.machines.left_apart().size(); ++k) {
    m_warnings.push_back("machines stay apart whose join has more than 65535 rows or columns");
  }
}
