#include "tests/composition/plain_relation.h"

#include <algorithm>
#include <set>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"

namespace kpt_test {

namespace {

int place(const NAMES& names, const KPT_KEYPOINT* keypoint) {
  const auto found = std::find(names.begin(), names.end(), keypoint->get_element_name().c_str());
  return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

// The value of an index according to its registers: 0 or 1, 2 for none, 3 for a contradiction.
int value_of(const NI_PAIR& pair, const NAMES& names, unsigned values) {
  int value = 2;
  for (const bool inverted : {false, true}) {
    for (const KPT_KEYPOINT* keypoint : inverted ? pair.second : pair.first) {
      const int here = static_cast<int>(values >> place(names, keypoint) & 1U) ^ (inverted ? 1 : 0);
      if (value != 2 && value != here) {
        return 3;
      }
      value = here;
    }
  }
  return value;
}

bool is_turned(const NI_PAIR& pair) { return pair.first.empty() && !pair.second.empty(); }
bool is_stuck(const KPT_TRANSFORMATION_IMPL& map) {
  return map.get_elim_status() == KPT_STUCK_AT_ZERO || map.get_elim_status() == KPT_STUCK_AT_ONE;
}
int stuck_value(const KPT_TRANSFORMATION_IMPL& map) { return map.get_elim_status() == KPT_STUCK_AT_ONE ? 1 : 0; }

bool plain_holds(const KPT_TRANSFORMATION_IMPL& map, const std::vector<int>& r, const std::vector<int>& t) {
  for (std::size_t k = 0; k < std::max(r.size(), t.size()); ++k) {
    const int of_r = k < r.size() ? r[k] : 2;
    const int of_t = k < t.size() ? t[k] : 2;
    if (of_r != 2 && of_t != 2 && of_r != of_t) {
      return false;
    }
    if (k == 0 && is_stuck(map) && (of_r != 2 || of_t != 2)) {
      const NI_PAIR& told = of_r != 2 ? map.r_vec()[0] : map.t_vec()[0];
      const int value = of_r != 2 ? of_r : of_t;
      if ((value ^ (is_turned(told) ? 1 : 0)) != stuck_value(map)) {
        return false;
      }
    }
  }
  return true;
}

// Whether a column of the table can have this value of its index.
bool fits(const KPT_STATE_TABLE_IMPL& table, KPT_SET_ENUM set, const NI_PAIR_VECTOR& side,
          const std::vector<int>& values, unsigned row) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    const int column = table.get_entry(set, static_cast<unsigned short>(row), static_cast<unsigned short>(k + 1));
    if (values[k] != 2 && (values[k] ^ (is_turned(side[k]) ? 1 : 0)) != column) {
      return false;
    }
  }
  return true;
}

bool machine_holds(const KPT_TRANSFORMATION_IMPL& map, const std::vector<int>& r, const std::vector<int>& t) {
  const KPT_STATE_TABLE_IMPL table = map.get_register_state_table();
  bool is_silent = table.get_num_reference_registers() != r.size() || table.get_num_transformed_registers() != t.size();
  for (unsigned row = 1; !is_silent && is_stuck(map) && row <= table.get_num_states(); ++row) {
    is_silent = r.empty() || table.get_reference_entry(static_cast<unsigned short>(row), 1) != stuck_value(map);
  }
  if (is_silent) {
    return true;
  }
  for (unsigned row = 1; row <= table.get_num_states(); ++row) {
    if (fits(table, KPT_REFERENCE_SET, map.r_vec(), r, row) && fits(table, KPT_TRANSFORMED_SET, map.t_vec(), t, row)) {
      return true;
    }
  }
  return false;
}

bool holds(const KPT_TRANSFORMATION_IMPL& map, const NAMES& from, const NAMES& to, unsigned x, unsigned y) {
  std::vector<int> r;
  std::vector<int> t;
  for (const NI_PAIR& pair : map.r_vec()) {
    r.push_back(value_of(pair, from, x));
  }
  for (const NI_PAIR& pair : map.t_vec()) {
    t.push_back(value_of(pair, to, y));
  }
  const auto is_contradiction = [](int value) { return value == 3; };
  if (std::any_of(r.begin(), r.end(), is_contradiction) || std::any_of(t.begin(), t.end(), is_contradiction)) {
    return false;
  }
  return map.map_has_fsm_transformation() ? machine_holds(map, r, t) : plain_holds(map, r, t);
}

template <class VISIT>
void for_each(const PLAIN_RELATION& relation, VISIT visit) {
  for (unsigned x = 0; x < relation.rows.size(); ++x) {
    for (unsigned y = 0; y < 1U << relation.to.size(); ++y) {
      if (relation.has(x, y)) {
        visit(x | y << relation.from.size());
      }
    }
  }
}

std::size_t count(const std::vector<unsigned>& all, unsigned mask) {
  std::set<unsigned> values;
  for (const unsigned value : all) {
    values.insert(value & mask);
  }
  return values.size();
}

}  // namespace

bool PLAIN_RELATION::empty() const {
  return std::all_of(rows.begin(), rows.end(), [](std::uint64_t row) { return row == 0; });
}

PLAIN_RELATION said_by(KPT_KEYPOINTS_DB_IMPL& db, const NAMES& from, const NAMES& to) {
  PLAIN_RELATION relation{from, to, std::vector<std::uint64_t>(std::size_t{1} << from.size())};
  for (unsigned x = 0; x < relation.rows.size(); ++x) {
    for (unsigned y = 0; y < 1U << to.size(); ++y) {
      bool ok = true;
      for (const KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
        ok = ok && holds(*map, from, to, x, y);
      }
      relation.rows[x] |= std::uint64_t{ok} << y;
    }
  }
  return relation;
}

PLAIN_RELATION joined(const PLAIN_RELATION& first, const PLAIN_RELATION& second) {
  PLAIN_RELATION relation{first.from, second.to, std::vector<std::uint64_t>(first.rows.size())};
  for (unsigned x = 0; x < first.rows.size(); ++x) {
    for (unsigned y = 0; y < second.rows.size(); ++y) {
      relation.rows[x] |= first.has(x, y) ? second.rows[y] : 0;
    }
  }
  return relation;
}

unsigned part_of(const std::vector<unsigned>& rows, unsigned columns, unsigned column) {
  const unsigned everything = (1U << columns) - 1U;
  unsigned part = everything;
  for (unsigned mask = 0; mask <= everything; ++mask) {
    if ((mask >> column & 1U) != 0 && __builtin_popcount(mask) < __builtin_popcount(part) &&
        count(rows, mask) * count(rows, everything & ~mask) == rows.size()) {
      part = mask;
    }
  }
  return part;
}

unsigned part_of(const PLAIN_RELATION& relation, unsigned reg) {
  std::vector<unsigned> all;
  for_each(relation, [&](unsigned values) { all.push_back(values); });
  return part_of(all, static_cast<unsigned>(relation.from.size() + relation.to.size()), reg);
}

int constant(const PLAIN_RELATION& relation, unsigned reg) {
  unsigned seen = 0;
  for_each(relation, [&](unsigned values) { seen |= 1U << (values >> reg & 1U); });
  return seen == 1 ? 0 : seen == 2 ? 1 : 2;
}

int twins(const PLAIN_RELATION& relation, unsigned a, unsigned b) {
  unsigned seen = 0;
  for_each(relation, [&](unsigned values) { seen |= 1U << ((values >> a ^ values >> b) & 1U); });
  return seen == 1 ? 0 : seen == 2 ? 1 : 2;
}

}  // namespace kpt_test
