#include "recorder.h"

#include <algorithm>
#include <set>
#include <vector>

namespace kpt_yosys {

namespace {

class RECORDER {
 public:
  RECORDER(const TRACKER& tracker, const KPT_KEYPOINTS_DB& db)
      : m_tracker(tracker), m_db(db), m_names(tracker.current_names()) {}
  TOTALS run();

 private:
  void group_registers();
  void record_machine(const MACHINE& machine, int index);
  void fill_table(const MACHINE& machine, const std::vector<int>& r, const std::vector<int>& t,
                  KPT_STATE_TABLE& table) const;
  std::vector<int> reference_bits(int machine) const;
  std::vector<int> transformed_bits(const MACHINE& machine) const;
  bool is_lost(const MACHINE& machine, const std::vector<int>& t) const;
  bool record_fsm(const MACHINE& machine, const std::vector<int>& r, const std::vector<int>& t);
  void record_group(const LOCATION& location, const std::vector<int>& group);
  bool associate_instance(const POINT& point, const LOCATION& location) const;
  void record_first(const POINT& point, const LOCATION& location, bool alone);
  void record_merged(const POINT& point, const std::string& kept);
  void record_eliminated(const POINT& point);
  void count_eliminated(const POINT& point);
  std::string passing_name(const std::string& name);
  const std::string& name_at(const LOCATION& location) const { return m_names.at(location); }
  void note(bool recorded) { m_totals.m_not_recorded += recorded ? 0 : 1; }
  const POINT& point(int index) const { return m_tracker.points()[static_cast<std::size_t>(index)]; }

  const TRACKER& m_tracker;
  const KPT_KEYPOINTS_DB& m_db;
  const TRACKER::NAMES m_names;
  TOTALS m_totals;
  std::map<LOCATION, std::vector<int>> m_groups;  // reference registers that are one register now
  std::set<LOCATION> m_state_bits;                // registers of new codes, already recorded
  std::set<std::string> m_transformed_names;
};

TOTALS RECORDER::run() {
  group_registers();
  for (std::size_t i = 0; i < m_tracker.machines().size(); ++i) {
    record_machine(m_tracker.machines()[i], static_cast<int>(i));
  }
  for (const auto& [location, group] : m_groups) {
    record_group(location, group);
  }
  for (const POINT& each : m_tracker.points()) {
    if (!each.m_name.empty()) {
      ++m_totals.m_reference;
      record_eliminated(each);
    }
  }
  m_totals.m_new = m_tracker.count_new_registers();
  return m_totals;
}

void RECORDER::group_registers() {
  for (std::size_t i = 0; i < m_tracker.points().size(); ++i) {
    const POINT& each = m_tracker.points()[i];
    if (each.m_fate != FATE::LIVE) {
      continue;
    }
    m_transformed_names.insert(name_at(each.m_location));
    if (!each.m_name.empty()) {
      m_groups[each.m_location].push_back(static_cast<int>(i));
    }
  }
}

// One register per column of the old code; of several that were one register, the first.
std::vector<int> RECORDER::reference_bits(int machine) const {
  std::map<int, int> by_column;
  for (std::size_t i = 0; i < m_tracker.points().size(); ++i) {
    const POINT& each = m_tracker.points()[i];
    if (!each.m_name.empty() && each.m_fate == FATE::IN_MACHINE && each.m_machine == machine) {
      by_column.emplace(each.m_column, static_cast<int>(i));
    }
  }
  std::vector<int> bits;
  bits.reserve(by_column.size());
  for (const auto& [column, index] : by_column) {
    bits.push_back(index);
  }
  return bits;
}

// The columns of the new code that are still registers, each register once; -1 for the others.
std::vector<int> RECORDER::transformed_bits(const MACHINE& machine) const {
  std::vector<int> bits;
  std::set<LOCATION> seen;
  for (const int index : machine.m_points) {
    const bool stands = point(index).m_fate == FATE::LIVE && seen.insert(point(index).m_location).second;
    bits.push_back(stands ? index : -1);
  }
  return bits;
}

void RECORDER::record_machine(const MACHINE& machine, int index) {
  const std::vector<int> r = reference_bits(index);
  const std::vector<int> t = transformed_bits(machine);
  std::size_t members = 0;
  for (const POINT& each : m_tracker.points()) {
    if (!each.m_name.empty() && each.m_fate == FATE::IN_MACHINE && each.m_machine == index) {
      ++members;
    }
  }
  if (members == 0) {
    return;
  }
  if (machine.m_points.empty() || is_lost(machine, t)) {
    m_totals.m_unknown += members;
    m_totals.m_unknown_after["fsm_extract"] += members;
    return;
  }
  m_totals.m_machine += members;
  ++m_totals.m_machines;
  m_totals.m_not_recorded += members - r.size();
  note(record_fsm(machine, r, t));
}

// The stage ended before the machine was put back, or bits of the new code are unknown, and the
// others do not tell the states apart.
bool RECORDER::is_lost(const MACHINE& machine, const std::vector<int>& t) const {
  const auto is_unknown = [this](int bit) {
    return point(bit).m_fate == FATE::UNKNOWN || point(bit).m_fate == FATE::IN_MACHINE;
  };
  if (std::none_of(machine.m_points.begin(), machine.m_points.end(), is_unknown)) {
    return false;
  }
  std::set<std::string> codes;
  for (const std::string& code : machine.m_codes) {
    std::string left;
    for (std::size_t k = 0; k < t.size(); ++k) {
      left += t[k] >= 0 ? std::string(1, code[k]) : std::string();
    }
    codes.insert(left);
  }
  return codes.size() < machine.m_codes.size();
}

bool RECORDER::record_fsm(const MACHINE& machine, const std::vector<int>& r, const std::vector<int>& t) {
  KPT_STRING_VECTOR r_names;
  KPT_STRING_VECTOR t_names;
  for (const int index : r) {
    r_names.emplace_back(point(index).m_name);
  }
  for (const int index : t) {
    if (index >= 0) {
      t_names.emplace_back(name_at(point(index).m_location));
      m_state_bits.insert(point(index).m_location);
    }
  }
  KPT_STATE_TABLE table(static_cast<unsigned short>(machine.m_codes.size()),
                        static_cast<unsigned short>(r_names.size()), static_cast<unsigned short>(t_names.size()));
  fill_table(machine, r, t, table);
  return m_db.associate_registers_fsm_signals(r_names, t_names, table);
}

void RECORDER::fill_table(const MACHINE& machine, const std::vector<int>& r, const std::vector<int>& t,
                          KPT_STATE_TABLE& table) const {
  for (std::size_t state = 0; state < machine.m_codes.size(); ++state) {
    const auto row = static_cast<unsigned short>(state + 1);
    unsigned short column = 0;
    for (const int index : r) {
      const bool bit = machine.m_old_codes[state][static_cast<std::size_t>(point(index).m_column)] == '1';
      table.set_reference_entry(row, ++column, bit != point(index).m_column_inverted);
    }
    column = 0;
    for (std::size_t k = 0; k < t.size(); ++k) {
      if (t[k] >= 0) {
        table.set_transformed_entry(row, ++column, (machine.m_codes[state][k] == '1') != point(t[k]).m_inverted);
      }
    }
  }
}

// Of a state machine's bits the database takes events on the first alone, and a merge into that one
// would spoil the machine's codes: what became one with a state bit is counted and left out.
void RECORDER::record_group(const LOCATION& location, const std::vector<int>& group) {
  if (m_state_bits.contains(location)) {
    m_totals.m_merged += group.size();
    m_totals.m_not_recorded += group.size();
    return;
  }
  const std::string kept = name_at(location);
  std::size_t first = 0;
  for (std::size_t i = 0; i < group.size(); ++i) {
    if (point(group[i]).m_name == kept) {
      first = i;
    }
  }
  record_first(point(group[first]), location, group.size() == 1);
  for (std::size_t i = 0; i < group.size(); ++i) {
    if (i != first) {
      record_merged(point(group[i]), kept);
    }
  }
}

// Of the events, the database takes none for a block instance; so a cell whose register is inverted
// or stands for several is recorded by its net.
void RECORDER::record_first(const POINT& point, const LOCATION& location, bool alone) {
  const std::string name = name_at(location);
  const bool is_instance = !m_tracker.view().flop(location).m_type.empty();
  if (point.m_inverted) {
    ++m_totals.m_inverted;
  } else if (is_instance) {
    ++m_totals.m_instance;
  } else {
    ++(point.m_name == name ? m_totals.m_kept : m_totals.m_renamed);
  }
  if (is_instance && alone && !point.m_inverted) {
    note(associate_instance(point, location));
    return;
  }
  note(m_db.associate_registers_signal_to_signal(point.m_name, name) &&
       (!point.m_inverted || m_db.set_inverter_retimed_register(name)));
}

bool RECORDER::associate_instance(const POINT& point, const LOCATION& location) const {
  const FLOP& flop = m_tracker.view().flop(location);
  const std::string cell = m_tracker.view().path(location.m_instance) + text_of_spelling(flop.m_cell_name);
  return m_db.associate_registers_signal_to_instance(point.m_name, cell, flop.m_type, flop.m_port);
}

// A register enters the database with a name of its own and then gives it up.
void RECORDER::record_merged(const POINT& point, const std::string& kept) {
  ++m_totals.m_merged;
  const std::string passing = passing_name(point.m_name);
  note(m_db.associate_registers_signal_to_signal(point.m_name, passing) &&
       (!point.m_inverted || m_db.set_inverter_retimed_register(passing)) && m_db.set_merged_registers(kept, passing));
}

void RECORDER::record_eliminated(const POINT& point) {
  count_eliminated(point);
  if (point.m_fate != FATE::ZERO && point.m_fate != FATE::ONE && point.m_fate != FATE::NO_FANOUT) {
    return;
  }
  const std::string passing = passing_name(point.m_name);
  bool recorded = m_db.associate_registers_signal_to_signal(point.m_name, passing);
  if (point.m_fate == FATE::ZERO) {
    recorded = recorded && m_db.set_eliminated_register_stuck_at_zero(passing);
  } else if (point.m_fate == FATE::ONE) {
    recorded = recorded && m_db.set_eliminated_register_stuck_at_one(passing);
  } else {
    recorded = recorded && m_db.set_eliminated_register_no_fanout(passing);
  }
  note(recorded);
}

void RECORDER::count_eliminated(const POINT& point) {
  switch (point.m_fate) {
    case FATE::ZERO:
      ++m_totals.m_zero;
      break;
    case FATE::ONE:
      ++m_totals.m_one;
      break;
    case FATE::UNDEFINED:
      ++m_totals.m_undefined;
      break;
    case FATE::NO_FANOUT:
      ++m_totals.m_no_fanout;
      break;
    case FATE::UNKNOWN:
      ++m_totals.m_unknown;
      ++m_totals.m_unknown_after[point.m_pass];
      break;
    case FATE::LIVE:
    case FATE::IN_MACHINE:
      break;
  }
}

std::string RECORDER::passing_name(const std::string& name) {
  std::string free = name;
  for (int n = 1; !m_transformed_names.insert(free).second; ++n) {
    free = name + "$" + std::to_string(n);
  }
  return free;
}

}  // namespace

TOTALS record(const TRACKER& tracker, const KPT_KEYPOINTS_DB& db) { return RECORDER(tracker, db).run(); }

void print(const TOTALS& totals, const std::string& name) {
  const auto line = [](const char* what, std::size_t count) { Yosys::log("  %8zu  %s\n", count, what); };
  Yosys::log("Registers of stage %s:\n", name.c_str());
  line("kept under their name", totals.m_kept);
  line("kept under another name", totals.m_renamed);
  line("kept inverted", totals.m_inverted);
  line("kept in a technology cell", totals.m_instance);
  line("merged into another register", totals.m_merged);
  line("stuck at zero", totals.m_zero);
  line("stuck at one", totals.m_one);
  line("without fanout", totals.m_no_fanout);
  line("in a re-encoded state machine", totals.m_machine);
  line("without a defined value", totals.m_undefined);
  line("unknown", totals.m_unknown);
  const std::size_t sum = totals.m_kept + totals.m_renamed + totals.m_inverted + totals.m_instance + totals.m_merged +
                          totals.m_zero + totals.m_one + totals.m_no_fanout + totals.m_machine + totals.m_undefined +
                          totals.m_unknown;
  Yosys::log("  %8zu  of %zu reference registers accounted for\n", sum, totals.m_reference);
  Yosys::log("State machines: %zu. New registers: %zu. Facts not recorded: %zu.\n", totals.m_machines, totals.m_new,
             totals.m_not_recorded);
  for (const auto& [pass, count] : totals.m_unknown_after) {
    Yosys::log("Unknown after %s: %zu.\n", pass.empty() ? "a change outside of any pass" : pass.c_str(), count);
  }
}

}  // namespace kpt_yosys
