// The registers of all netlists, each as a node. Netlist k, counted from 0, is
// the one between stage k - 1 and stage k. So n stages lead from netlist 0 to
// netlist n.
//
// Ownership: refers to the stages and the classes, which outlive it.
//
// A register in which one stage ends and from which the next starts is one node. A name
// identifies it, or for a block instance a name and a type. When the next stage does
// not start from a register, the register is lost, and its class is marked as partial.
#ifndef KPT_NETLISTS_H
#define KPT_NETLISTS_H

#include "db/kpt/composition/kpt_classes.h"
#include "db/kpt/containers/kpt_by_slot.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_steps.h"

class KPT_NETLISTS {
 public:
  using NODE = KPT_CLASSES::NODE;
  using STAGES = KPT_VECTOR<KPT_KEYPOINTS_DB_IMPL*>;
  static constexpr NODE NONE = UINT32_MAX;

  /// A register of the first or the last netlist, and the set that holds it.
  struct END {
    NODE node;
    const KPT_REGISTER_KEYPOINT_IMPL* keypoint;
    const KPT_KEYPOINT_SET_IMPL* set;
  };
  using ENDS = KPT_VECTOR<END>;
  /// How well a stage fits the stage before it.
  struct FIT {
    unsigned long starts_from;
    unsigned long known;
  };

  /// `keeps_unrecorded`: a stage does not change a register that it does not mention.
  /// Every register is a step.
  KPT_NETLISTS(const STAGES& stages, bool keeps_unrecorded, KPT_CLASSES& classes, KPT_STEPS& steps);

  /// NONE for a keypoint that is null or not in the stage's sets.
  NODE node(std::size_t stage, const KPT_KEYPOINT* keypoint) const {
    return m_nodes[stage].find(KPT_KEYPOINT::slot_of(keypoint)) - 1U;
  }
  const ENDS& first() const { return m_first; }
  const ENDS& last() const { return m_last; }
  /// For the stages from the second on.
  const KPT_VECTOR<FIT>& fits() const { return m_fits; }
  /// The register's name and netlist, for a message; netlists count from 1.
  KPT_STRING describe(NODE node) const;

 private:
  using PLACES = KPT_BY_SLOT<std::uint32_t>;  // a node + 1; 0 for none
  using REGISTER = const KPT_REGISTER_KEYPOINT_IMPL;

  KPT_KEYPOINT_SET_IMPL& r_set(std::size_t stage) const { return *m_stages[stage]->get_reference_set(); }
  KPT_KEYPOINT_SET_IMPL& t_set(std::size_t stage) const { return *m_stages[stage]->get_transformed_set(); }
  NODE node_in_t(std::size_t stage, REGISTER& keypoint, const KPT_KEYPOINT_SET_IMPL& its_set) const;
  void add_first(KPT_STEPS& steps);
  void link(std::size_t stage, KPT_STEPS& steps);
  void add_t(std::size_t stage, KPT_STEPS& steps);
  NODE kept_before(std::size_t stage, REGISTER& keypoint);
  bool is_kept_behind(std::size_t stage, REGISTER& keypoint) const;
  void mark_lost(std::size_t stage);
  bool take(NODE node);

  const STAGES& m_stages;
  const bool m_keeps_unrecorded;
  KPT_CLASSES& m_classes;
  KPT_VECTOR<PLACES> m_nodes;  // for each stage, both sides
  KPT_VECTOR<bool> m_taken;    // nodes from which a next stage starts
  ENDS m_first;
  ENDS m_last;
  KPT_VECTOR<FIT> m_fits;
};

#endif
