// The composition of stages: what they say together, and nothing else.
//
// What a database says are statements about values. Of a map, the members of
// the n groups of an index are equal and those of its i groups are their
// inverse; an eliminated map says that its reference registers are constant,
// or drive nothing; a machine says that the columns of both sides take
// together only the rows of its table. The composition is the conjunction of
// what all stages say, with the registers between the first and the last
// netlist projected away. So it does not depend on the order of events, it is
// associative, and a stage that changes nothing is neutral.
//
// Normal form: a column that is always 0 or 1 is a status, columns that are
// always equal or inverse are groups, and a table comes apart into the parts
// that have nothing to do with each other. What is known among reference
// registers alone, or among transformed ones alone, is a map with one empty
// side. A map that does not show all that its registers became has the
// attribute "partial", which the next composition reads.
//
// Ownership: refers to the stages, which are left as they are and outlive it;
// owns its texts.
//
// Cost: near linear in the registers of all stages; a join of tables is
// bounded at 65,535 rows and columns.
#ifndef KPT_COMPOSITION_H
#define KPT_COMPOSITION_H

#include <vector>

#include "db/kpt/kpt_types.h"

struct KPT_COMPOSITION_OPTIONS {
  /// The share of the registers that a stage starts from and that the stage
  /// before must know, 0 to 1. It keeps stages from being swapped or repeated
  /// and is no part of the algebra.
  double least_share = 0.5;
  /// Takes a register that a stage does not mention for unchanged by it, and
  /// one that no earlier stage mentions for kept since the first netlist: for
  /// hosts that record changes only.
  bool keeps_unrecorded = false;
};

/// What is told of a composition, a line each.
struct KPT_COMPOSITION_REPORT {
  /// "stage 2 starts from N registers, M of them known to stage 1", and so on.
  KPT_STRING_VECTOR fits;
  /// What the stages say and the composition does not.
  KPT_STRING_VECTOR warnings;
  /// Why nothing was written.
  KPT_STRING_VECTOR errors;
};

class KPT_EXPORT KPT_COMPOSITION {
 public:
  using STAGES = std::vector<KPT_KEYPOINTS_DB_IMPL*, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB_IMPL*>>;

  /// The stages, first to last; a database may occur more than once.
  explicit KPT_COMPOSITION(STAGES stages, const KPT_COMPOSITION_OPTIONS& options = {});

  /// Fills an empty database that is none of the stages. False, writing
  /// nothing, when it is not, when there are no stages, when two do not fit, or
  /// when stages contradict each other: `report` and debug lines tell why.
  bool compose(KPT_KEYPOINTS_DB_IMPL& result);
  const KPT_COMPOSITION_REPORT& report() const { return m_report; }

 private:
  struct SOLUTION;
  using SKIPPED = std::vector<bool>;
  bool solve(SOLUTION& solution, const SKIPPED& skipped) const;
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
