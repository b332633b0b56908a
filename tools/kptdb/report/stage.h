// One database as a report reads it: first the registers, then the maps, each once and in the database's order.
//
// Ownership: a STAGE refers to a database, and its results refer to the database's texts; both outlive it.
#ifndef KPTDB_REPORT_STAGE_H
#define KPTDB_REPORT_STAGE_H

#include <array>
#include <functional>
#include <vector>

#include "db/kpt/kpt.h"
#include "netlist.h"

namespace kptdb {

/// Why a map has no successor, with the page's numbers.
enum MAP_REASON : unsigned { NO_REASON, REASON_ZERO, REASON_ONE, REASON_NO_FANOUT, REASON_ELIMINATED };

struct STAGE_MEMBER {
  REGISTER_KEY key;
  bool is_register = true;  // false for an id that no register has
  bool is_found = false;    // whether the register's entry leads to this map
};

struct STAGE_PAIR {
  std::vector<STAGE_MEMBER> same;
  std::vector<STAGE_MEMBER> inverse;
  KPT_FATE_ENUM fate = KPT_FATE_UNKNOWN;  // of the registers of a reference index
};

/// A map. Side 0 is the reference, side 1 the transformed one.
struct STAGE_MAP {
  bool is_machine = false;
  MAP_REASON reason = NO_REASON;
  ATTRIBUTES attributes;
  std::array<std::vector<STAGE_PAIR>, 2> sides;
  unsigned states = 0;
  std::array<unsigned, 2> columns{};
  /// The bit of a state (from 0) in a column (from 0) of a side: 0, 1, or 2 for none.
  std::function<unsigned(unsigned side, unsigned state, unsigned column)> bit;
};

class STAGE {
 public:
  explicit STAGE(const KPT_KEYPOINTS_DB& db) : m_db(db) {}

  std::size_t size(unsigned side) const;
  void for_each_register(unsigned side, const std::function<void(const REGISTER_KEY&, const ATTRIBUTES&)>& visit) const;
  /// The map is valid only during the visit.
  void for_each_map(const std::function<void(const STAGE_MAP&)>& visit) const;

 private:
  KPT_KEYPOINTS_DB m_db;
};

}  // namespace kptdb

#endif
