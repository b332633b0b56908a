// The state machines of all stages, joined where they share a register.
//
// Ownership: owns its tables. The caller owns the classes, to which the tables
// add what they say.
//
// The columns of a table are classes. A table is settled first: constant and
// repeated columns become facts of the classes, and every table with such a class
// is settled again. Then tables that share a class are joined. Columns that
// neither an end netlist nor another table has are projected away. The rest is
// split into its factors.
#ifndef KPT_MACHINES_H
#define KPT_MACHINES_H

#include <boost/unordered/unordered_flat_map.hpp>
#include <deque>

#include "db/kpt/composition/kpt_classes.h"
#include "db/kpt/composition/kpt_relation.h"

class KPT_MACHINES {
 public:
  using NODE = KPT_CLASSES::NODE;
  using NUMBERS = KPT_VECTOR<std::uint32_t>;
  struct MACHINE {
    KPT_RELATION relation;  // its columns are nodes
    NUMBERS facts;          // the maps that it comes from, by the caller's numbers
  };

  explicit KPT_MACHINES(KPT_CLASSES& classes) : m_classes(classes) {}

  void add(KPT_RELATION relation, NUMBERS facts) { m_machines.push_back({std::move(relation), std::move(facts)}); }
  bool empty() const { return m_machines.empty(); }

  /// False when a table has no row left; `conflict` then has its columns.
  bool solve();
  const KPT_RELATION::COLUMNS& conflict() const { return m_conflict; }

  /// After `solve`: tables of two or more columns. Each column is the leader of its class.
  const KPT_VECTOR<MACHINE>& solved() const { return m_solved; }
  /// The columns of tables that were not joined because the result would be too large.
  const KPT_VECTOR<KPT_RELATION::COLUMNS>& left_apart() const { return m_left_apart; }

  /// Gives each column the name of its leader, and removes constant and repeated
  /// columns. False when no row is left.
  static bool resolve(KPT_RELATION& relation, KPT_CLASSES& classes);

 private:
  using ID = std::uint32_t;
  bool settle_all();
  bool settle(ID id);
  void wake(NODE leader);
  void take_over_users(NODE absorbed);
  bool join_neighbours(ID id);
  ID neighbour_of(ID id, const NUMBERS& apart);
  bool is_used_beside(NODE leader, ID a, ID b);
  void finish(ID id);

  KPT_CLASSES& m_classes;
  KPT_VECTOR<MACHINE> m_machines;
  KPT_VECTOR<bool> m_gone;     // joined with another, or finished
  KPT_VECTOR<bool> m_waiting;  // in the queue
  std::deque<ID, MEM_STL_ALLOCATOR<ID>> m_queue;
  boost::unordered_flat_map<NODE, NUMBERS, boost::hash<NODE>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const NODE, NUMBERS>>>
      m_users;  // for each leader, the machines with that column
  KPT_VECTOR<MACHINE> m_solved;
  KPT_VECTOR<KPT_RELATION::COLUMNS> m_left_apart;
  KPT_RELATION::COLUMNS m_conflict;
};

#endif
