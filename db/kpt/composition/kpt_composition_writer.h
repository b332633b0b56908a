// Writes classes and machines into a database as maps, in the order of the
// first netlist.
//
// Ownership: refers to everything that it is given. The database owns what is
// written into it.
#ifndef KPT_COMPOSITION_WRITER_H
#define KPT_COMPOSITION_WRITER_H

#include <boost/unordered/unordered_flat_map.hpp>

#include "db/kpt/composition/kpt_composition_facts.h"

class KPT_COMPOSITION_WRITER {
 public:
  using NODE = KPT_CLASSES::NODE;

  KPT_COMPOSITION_WRITER(const KPT_NETLISTS& netlists, KPT_CLASSES& classes, const KPT_MACHINES& machines,
                         const KPT_COMPOSITION_FACTS& facts, KPT_KEYPOINTS_DB_IMPL& db);
  /// Every register is a step, those of the first netlist twice.
  void write(KPT_STEPS& steps);

 private:
  using NUMBER = std::uint32_t;  // of a register of the first netlist, then of the last one
  static constexpr NUMBER NONE = UINT32_MAX;
  struct MEMBERS;

  void enter_first(KPT_STEPS& steps);
  void chain(const KPT_NETLISTS::ENDS& ends, NUMBER from);
  void place_machines();
  bool is_first(NUMBER number) const { return number < m_netlists.first().size(); }
  const KPT_NETLISTS::END& end(NUMBER number) const {
    return is_first(number) ? m_netlists.first()[number] : m_netlists.last()[number - m_netlists.first().size()];
  }
  KPT_KEYPOINT* keypoint(NUMBER number);
  void fetch_behind(NUMBER number) const;
  MEMBERS members_of(NODE leader);
  void write_class(NODE leader);
  void write_plain(NODE leader, MEMBERS members, KPT_ELIM_ENUM status, bool is_partial);
  void write_machine(const KPT_MACHINES::MACHINE& machine);
  KPT_STATE_TABLE_IMPL table_of(const KPT_RELATION& relation, const KPT_VECTOR<std::size_t>& places,
                                const KPT_VECTOR<MEMBERS>& members) const;

  const KPT_NETLISTS& m_netlists;
  KPT_CLASSES& m_classes;
  KPT_VECTOR<KPT_MACHINES::MACHINE> m_machines;
  const KPT_COMPOSITION_FACTS& m_facts;
  KPT_KEYPOINTS_DB_IMPL& m_db;
  KPT_VECTOR<KPT_KEYPOINT*> m_written;  // the new registers of the first netlist
  // The members of a class in the end netlists, in order: the first one of each
  // leader, and after each member the next.
  KPT_VECTOR<NUMBER> m_heads;
  KPT_VECTOR<NUMBER> m_tails;
  KPT_VECTOR<NUMBER> m_next;
  boost::unordered_flat_map<NODE, std::size_t, boost::hash<NODE>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const NODE, std::size_t>>>
      m_machine_of;
};

#endif
