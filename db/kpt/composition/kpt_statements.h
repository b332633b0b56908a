// Adds what the maps of a stage say to classes and machines.
//
// Ownership: refers to netlists, classes and machines, which outlive it.
#ifndef KPT_STATEMENTS_H
#define KPT_STATEMENTS_H

#include "db/kpt/composition/kpt_machines.h"
#include "db/kpt/composition/kpt_netlists.h"

class KPT_STATEMENTS {
 public:
  using NODE = KPT_CLASSES::NODE;
  /// A map as the composition refers to it: by its number among the maps of all stages.
  struct FACT {
    std::size_t stage;
    const KPT_TRANSFORMATION_IMPL* map;
    NODE node;  // one of its registers, or NONE
  };

  KPT_STATEMENTS(const KPT_NETLISTS& netlists, KPT_CLASSES& classes, KPT_MACHINES& machines)
      : m_netlists(netlists), m_classes(classes), m_machines(machines) {}

  /// False at the first contradiction; `conflict` then has the registers. Every map is a step.
  bool read(std::size_t stage, KPT_KEYPOINTS_DB_IMPL& db, KPT_STEPS& steps);
  const KPT_VECTOR<NODE>& conflict() const { return m_conflict; }
  /// One register of each machine whose table does not fit it.
  const KPT_VECTOR<FACT>& silent_machines() const { return m_silent; }
  bool has_attributes() const { return m_has_attributes; }
  std::size_t maps() const { return m_maps; }
  /// A register that the map lists, or NONE.
  static NODE node_of(const KPT_TRANSFORMATION_IMPL& map, const KPT_NETLISTS& netlists, std::size_t stage);

 private:
  using MAP = const KPT_TRANSFORMATION_IMPL;
  // One value and the registers that hold it: one index of a map, or one side of
  // an index.
  struct BIT {
    NODE node = KPT_NETLISTS::NONE;  // the first register
    bool inverted = false;           // that register holds the inverse of the n group
    bool has_unknown = false;        // a listed keypoint is not a register of the stage
  };
  struct COLUMNS;

  bool take_up(KPT_CLASSES::OUTCOME outcome, NODE a, NODE b);
  bool read_group(const KPT_KEYPOINT_LIST& group, bool inverted, BIT* bit);
  bool read_pair(const NI_PAIR& pair, BIT* bit);
  bool read_plain(MAP& map);
  bool read_status(MAP& map, const BIT& bit);
  void judge_copies(MAP& map, std::size_t index, const BIT& r, const BIT& t);
  bool read_machine(MAP& map);
  bool read_columns(MAP& map, COLUMNS* columns);
  bool read_table(MAP& map, COLUMNS& columns);
  bool take_up_table(KPT_RELATION relation, COLUMNS& columns);
  void mark_partial(const COLUMNS& columns);

  const KPT_NETLISTS& m_netlists;
  KPT_CLASSES& m_classes;
  KPT_MACHINES& m_machines;
  std::size_t m_stage = 0;
  std::size_t m_maps = 0;
  bool m_has_attributes = false;
  KPT_VECTOR<FACT> m_silent;
  KPT_VECTOR<NODE> m_conflict;
};

#endif
