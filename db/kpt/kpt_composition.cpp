#include "db/kpt/kpt_composition.h"

#include <algorithm>
#include <utility>

#include "db/kpt/composition/kpt_composition_writer.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_steps.h"
#include "db/kpt/msg_kpt.h"
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

// What a composition passes: every register, every map, and the registers that are written.
struct PASSES {
  explicit PASSES(const KPT_COMPOSITION::STAGES& stages) {
    for (KPT_KEYPOINTS_DB_IMPL* stage : stages) {
      registers += stage->get_reference_set()->size() + stage->get_transformed_set()->size();
      maps += stage->get_transformation_set()->get_list_of_register_transformations().size();
    }
    ends = 2 * stages.front()->get_reference_set()->size() + stages.back()->get_transformed_set()->size();
  }
  std::size_t all() const { return registers + maps + ends; }

  std::size_t registers = 0;
  std::size_t maps = 0;
  std::size_t ends = 0;  // the first netlist twice: it is entered, and then written
};

}  // namespace

// One pass over the stages.
struct KPT_COMPOSITION::SOLUTION {
  SOLUTION(const STAGES& stages, bool keeps_unrecorded, KPT_STEPS& steps)
      : netlists(stages, keeps_unrecorded, classes, steps),
        machines(classes),
        statements(netlists, classes, machines) {}

  KPT_CLASSES classes;
  KPT_NETLISTS netlists;
  KPT_MACHINES machines;
  KPT_STATEMENTS statements;
};

KPT_COMPOSITION::KPT_COMPOSITION(STAGES stages, const KPT_COMPOSITION_OPTIONS& options)
    : m_stages(std::move(stages)), m_options(options) {}

bool KPT_COMPOSITION::compose(KPT_KEYPOINTS_DB_IMPL& result) {
  if (m_stages.empty()) {
    return refuse("there are no stages");
  }
  if (!result.get_reference_set()->is_empty() || !result.get_transformed_set()->is_empty() ||
      std::find(m_stages.begin(), m_stages.end(), &result) != m_stages.end()) {
    return refuse("the database that is to hold the composition is not empty");
  }
  const PASSES passes(m_stages);
  KPT_STEPS steps(m_options.progress, passes.all());
  steps.begin(passes.registers);
  SOLUTION solution(m_stages, m_options.keeps_unrecorded, steps);
  if (!stages_fit(solution)) {
    return false;
  }
  steps.begin(passes.maps);
  if (!solve(solution, SKIPPED(m_stages.size()), steps)) {
    tell_contradiction(solution);
    return false;
  }
  warn(solution);
  const KPT_COMPOSITION_FACTS facts(m_stages, solution.netlists, solution.statements, solution.classes);
  steps.begin(passes.ends);
  KPT_COMPOSITION_WRITER(solution.netlists, solution.classes, solution.machines, facts, result).write(steps);
  steps.finish();
  return true;
}

bool KPT_COMPOSITION::solve(SOLUTION& solution, const SKIPPED& skipped, KPT_STEPS& steps) const {
  for (std::size_t stage = 0; stage < m_stages.size(); ++stage) {
    if (!skipped[stage] && !solution.statements.read(stage, *m_stages[stage], steps)) {
      return false;
    }
  }
  return solution.machines.solve();
}

bool KPT_COMPOSITION::refuse(KPT_STRING reason) {
  kpt_msg_debug("Error: Stages not composed: %s", reason.c_str());
  m_report.errors.push_back(std::move(reason));
  return false;
}

bool KPT_COMPOSITION::stages_fit(const SOLUTION& solution) {
  std::size_t stage = 1;
  for (const auto& [starts_from, known] : solution.netlists.fits()) {
    ++stage;
    m_report.fits.push_back("stage " + text(stage) + " starts from " + text(starts_from) + " registers, " +
                            text(known) + " of them known to stage " + text(stage - 1));
    if (static_cast<double>(known) < m_options.least_share * static_cast<double>(starts_from)) {
      refuse("stage " + text(stage) + " does not follow stage " + text(stage - 1) + ": " + m_report.fits.back());
    }
  }
  return m_report.errors.empty();
}

// ---- Messages ----

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
  refuse(contradicting_stages() +
         (is_machine              ? " leave no state to the machine of "
          : registers.size() == 1 ? " say 0 and 1 of "
                                  : " say that these are equal and inverse: ") +
         listed(registers));
}

// The stages that contradict each other, none of which can be left out: each in
// turn is left out, and stays out if the contradiction remains.
KPT_STRING KPT_COMPOSITION::contradicting_stages() const {
  SKIPPED skipped(m_stages.size());
  KPT_STRING_VECTOR stages;
  for (std::size_t stage = 0; stage < m_stages.size(); ++stage) {
    skipped[stage] = true;
    KPT_STEPS untold(nullptr, 0);
    SOLUTION solution(m_stages, m_options.keeps_unrecorded, untold);
    if (solve(solution, skipped, untold)) {
      skipped[stage] = false;
      stages.push_back(text(stage + 1));
    }
  }
  return (stages.size() == 1 ? "the maps of stage " : "stages ") + listed(stages);
}

// One line for each kind, with the first case as the example.
void KPT_COMPOSITION::warn(const SOLUTION& solution) {
  const auto& silent = solution.statements.silent_machines();
  if (!silent.empty()) {
    const auto& [stage, map, node] = silent.front();
    m_report.warnings.push_back(text(silent.size()) +
                                " machines have tables that do not fit them and say nothing: of stage " +
                                text(stage + 1) + ", with " + solution.netlists.describe(node));
  }
  const auto& apart = solution.machines.left_apart();
  if (!apart.empty()) {
    const auto node = apart.front().empty() ? KPT_NETLISTS::NONE : apart.front().front();
    m_report.warnings.push_back(text(apart.size()) +
                                " joins of machines have more than 65535 rows or columns and were not made: with " +
                                solution.netlists.describe(node));
  }
  for (const KPT_STRING& warning : m_report.warnings) {
    kpt_msg_debug("Info: %s", warning.c_str());
  }
}
