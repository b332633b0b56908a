// The composition of stages: what they say together, and nothing else.
//
// A database makes statements about values. A plain map says that the members of
// its non-inverting groups are equal, and that those of its inverting groups are
// their inverse. An eliminated map says that its reference registers are
// constant or drive nothing. A machine says that the columns of both sides
// together take only the rows of its table. The composition is the conjunction
// of all statements, with the registers between the first and the last netlist
// projected away. So it does not depend on the order of events, it is
// associative, and a stage that changes nothing does not change it.
//
// Normal form: a column that is constant becomes a status. Columns that are
// equal or inverse in every row become groups. A table is split into parts that
// do not depend on each other. A fact that is only about reference registers, or
// only about transformed ones, becomes a map with one empty side. A map that
// does not show everything that its registers became has the attribute
// "partial", which the next composition reads.
//
// Ownership: refers to the stages, which do not change and have to outlive it.
// Owns its texts.
//
// Cost: nearly linear in the registers of all stages. A join of tables has at
// most 65,535 rows and columns.
#ifndef KPT_COMPOSITION_H
#define KPT_COMPOSITION_H

#include <vector>

#include "db/kpt/kpt_types.h"

class KPT_PROGRESS;
class KPT_STEPS;

struct KPT_COMPOSITION_OPTIONS {
  /// The least share, 0 to 1, of a stage's reference registers that the stage before
  /// has to know. Stages that are swapped or repeated are usually below it, and are
  /// refused. Otherwise it does not change the result.
  double least_share = 0.5;
  /// For hosts that record only changes: a stage does not change a register that
  /// it does not mention, and a register that no earlier stage mentions is a
  /// register of the first netlist.
  bool keeps_unrecorded = false;
  /// Gets how far the composition has come, unless it is null.
  KPT_PROGRESS* progress = nullptr;
};

/// What a composition reports, in lines of text.
struct KPT_COMPOSITION_REPORT {
  /// "stage 2 starts from N registers, M of them known to stage 1", and so on.
  KPT_STRING_VECTOR fits;
  /// What the stages say and the composition leaves out.
  KPT_STRING_VECTOR warnings;
  /// Why nothing was written.
  KPT_STRING_VECTOR errors;
};

class KPT_EXPORT KPT_COMPOSITION {
 public:
  using STAGES = std::vector<KPT_KEYPOINTS_DB_IMPL*, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB_IMPL*>>;

  /// The stages, first to last. A database may occur more than once if it fits each time.
  explicit KPT_COMPOSITION(STAGES stages, const KPT_COMPOSITION_OPTIONS& options = {});

  /// Fills an empty database that is none of the stages. False, and nothing is
  /// written, when it is not such a database, when there are no stages, or when
  /// stages do not fit or contradict each other. `report` and debug lines say why.
  bool compose(KPT_KEYPOINTS_DB_IMPL& result);
  const KPT_COMPOSITION_REPORT& report() const { return m_report; }

 private:
  struct SOLUTION;
  using SKIPPED = std::vector<bool>;
  bool solve(SOLUTION& solution, const SKIPPED& skipped, KPT_STEPS& steps) const;
  bool stages_fit(const SOLUTION& solution);
  void tell_contradiction(const SOLUTION& solution);
  KPT_STRING contradicting_stages() const;
  void warn(const SOLUTION& solution);
  bool refuse(KPT_STRING reason);

  STAGES m_stages;
  KPT_COMPOSITION_OPTIONS m_options;
  KPT_COMPOSITION_REPORT m_report;
};

#endif
