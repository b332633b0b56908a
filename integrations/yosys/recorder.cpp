#include "recorder.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

#include "machine_table.h"

namespace kpt_yosys {

namespace {

class RECORDER {
 public:
  RECORDER(const TRACKER& tracker, const KPT_KEYPOINTS_DB& db)
      : m_tracker(tracker), m_db(db), m_stage(db.get_name()), m_names(tracker.current_names()) {}
  TOTALS run();

 private:
  // A register of the netlist as the database names it: by its technology cell, or otherwise by its net.
  struct TRANSFORMED {
    std::string m_name;
    std::string m_entity;
    std::string m_type;
    KPT_REGISTER_NAME view() const {
      return m_entity.empty() ? KPT_REGISTER_NAME(m_name) : KPT_REGISTER_NAME(m_name, m_entity, m_type);
    }
  };
  // A register of a state machine, by one of its points, and its value in each state.
  using COLUMN = MACHINE_TABLE::COLUMN;

  void group_registers();
  void record_machines();
  std::optional<MACHINE_TABLE> table_of(const MACHINE& machine, int index);
  std::vector<COLUMN> reference_columns(const MACHINE& machine, int index, const std::vector<int>& t) const;
  std::vector<int> transformed_bits(const MACHINE& machine) const;
  bool is_lost(const MACHINE& machine, const std::vector<int>& t) const;
  bool record_fsm(const MACHINE_TABLE& machine);
  void record_word(int index);
  void record_group(const LOCATION& location, const std::vector<int>& group);
  void count_first(const POINT& point, const LOCATION& location);
  void record_eliminated(int index);
  void count_eliminated(const POINT& point);
  TRANSFORMED transformed(const LOCATION& location) const;
  const std::string& name_at(const LOCATION& location) const { return m_names.at(location); }
  bool describe(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<int>& points) const;
  KPT_REGISTER_NAME reference(int index) const;
  const POINT& point(int index) const { return m_tracker.points()[static_cast<std::size_t>(index)]; }

  const TRACKER& m_tracker;
  const KPT_KEYPOINTS_DB& m_db;
  const std::string m_stage;
  const TRACKER::NAMES m_names;
  TOTALS m_totals;
  std::map<LOCATION, std::vector<int>> m_groups;  // reference registers that are now one register
  std::map<LOCATION, int> m_at;                   // the bit of a code that represents the register there
  std::set<LOCATION> m_state_bits;                // registers of new codes, already recorded
};

TOTALS RECORDER::run() {
  group_registers();
  record_machines();
  for (const auto& [location, group] : m_groups) {
    record_group(location, group);
  }
  for (std::size_t i = 0; i < m_tracker.points().size(); ++i) {
    if (!m_tracker.points()[i].m_name.empty()) {
      ++m_totals.m_reference;
      record_word(static_cast<int>(i));
      record_eliminated(static_cast<int>(i));
    }
  }
  m_totals.m_front_end = m_tracker.made_by_front_end();
  m_totals.m_new = m_tracker.count_new_registers();
  return m_totals;
}

void RECORDER::group_registers() {
  for (std::size_t i = 0; i < m_tracker.points().size(); ++i) {
    const POINT& each = m_tracker.points()[i];
    if (each.m_fate != FATE::LIVE) {
      continue;
    }
    if (!each.m_name.empty()) {
      m_groups[each.m_location].push_back(static_cast<int>(i));
    }
  }
}

// The old code's registers, in the order of its bits, and the registers that were
// merged with a bit of the new code: the register of such a bit holds them, too.
std::vector<RECORDER::COLUMN> RECORDER::reference_columns(const MACHINE& machine, int index,
                                                          const std::vector<int>& t) const {
  std::multimap<int, COLUMN> by_column;
  for (std::size_t i = 0; i < m_tracker.points().size(); ++i) {
    const POINT& each = m_tracker.points()[i];
    if (!each.m_name.empty() && each.m_fate == FATE::IN_MACHINE && each.m_machine == index) {
      COLUMN column{static_cast<int>(i), {}};
      for (const std::string& code : machine.m_old_codes) {
        column.m_values.push_back((code[static_cast<std::size_t>(each.m_column)] == '1') != each.m_column_inverted);
      }
      by_column.emplace(each.m_column, std::move(column));
    }
  }
  std::vector<COLUMN> columns;
  for (auto& [column, bit] : by_column) {
    columns.push_back(std::move(bit));
  }
  for (std::size_t k = 0; k < t.size(); ++k) {
    const auto group = t[k] >= 0 ? m_groups.find(point(t[k]).m_location) : m_groups.end();
    for (std::size_t i = 0; group != m_groups.end() && i < group->second.size(); ++i) {
      COLUMN column{group->second[i], {}};
      const bool turned = point(t[k]).m_inverted != point(column.m_register).m_inverted;
      for (const std::string& code : machine.m_codes) {
        column.m_values.push_back((code[k] == '1') != turned);
      }
      columns.push_back(std::move(column));
    }
  }
  return columns;
}

// The columns of the new code that are registers now, each register once; -1 for the others.
std::vector<int> RECORDER::transformed_bits(const MACHINE& machine) const {
  std::vector<int> bits;
  std::set<LOCATION> seen;
  for (const int index : machine.m_points) {
    const bool stands = point(index).m_fate == FATE::LIVE && seen.insert(point(index).m_location).second;
    bits.push_back(stands ? index : -1);
  }
  return bits;
}

// Machines that share a register of the netlist are recorded as one machine.
void RECORDER::record_machines() {
  std::vector<MACHINE_TABLE> tables;
  for (std::size_t i = 0; i < m_tracker.machines().size(); ++i) {
    std::optional<MACHINE_TABLE> table = table_of(m_tracker.machines()[i], static_cast<int>(i));
    for (std::size_t k = 0; table.has_value() && k < tables.size();) {
      if (!share_register(tables[k], *table)) {
        ++k;
        continue;
      }
      std::optional<MACHINE_TABLE> both = joined(tables[k], *table);
      if (!both.has_value()) {
        m_totals.m_not_recorded += table->m_reference.size();
      } else {
        tables.erase(tables.begin() + static_cast<std::ptrdiff_t>(k));
      }
      table = std::move(both);
    }
    if (table.has_value()) {
      tables.push_back(std::move(*table));
    }
  }
  for (const MACHINE_TABLE& table : tables) {
    m_totals.m_merged += table.m_reference.size() - table.m_members;
    m_totals.m_not_recorded += record_fsm(table) ? 0 : table.m_reference.size();
  }
}

// Empty for a machine without reference registers, and for a lost one.
std::optional<MACHINE_TABLE> RECORDER::table_of(const MACHINE& machine, int index) {
  const std::vector<int> t = transformed_bits(machine);
  MACHINE_TABLE table;
  for (const POINT& each : m_tracker.points()) {
    if (!each.m_name.empty() && each.m_fate == FATE::IN_MACHINE && each.m_machine == index) {
      ++table.m_members;
    }
  }
  if (table.m_members == 0) {
    return std::nullopt;
  }
  if (machine.m_points.empty() || is_lost(machine, t)) {
    m_totals.m_unknown += table.m_members;
    m_totals.m_unknown_after["fsm_extract"] += table.m_members;
    return std::nullopt;
  }
  m_totals.m_machine += table.m_members;
  ++m_totals.m_machines;
  table.m_states = machine.m_codes.size();
  table.m_reference = reference_columns(machine, index, t);
  for (std::size_t k = 0; k < t.size(); ++k) {
    if (t[k] < 0) {
      continue;
    }
    COLUMN column{m_at.emplace(point(t[k]).m_location, t[k]).first->second, {}};
    for (const std::string& code : machine.m_codes) {
      column.m_values.push_back((code[k] == '1') != point(t[k]).m_inverted);
    }
    table.m_transformed.push_back(std::move(column));
  }
  return table;
}

// The stage ended before the machine was put back, or bits of the new code are
// unknown and the other bits do not distinguish the states.
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

bool RECORDER::record_fsm(const MACHINE_TABLE& machine) {
  constexpr std::size_t MOST_COLUMNS = 65535;
  if (machine.m_reference.size() > MOST_COLUMNS || machine.m_transformed.size() > MOST_COLUMNS) {
    return false;
  }
  std::vector<TRANSFORMED> names;
  std::vector<int> points;
  for (const COLUMN& column : machine.m_transformed) {
    const LOCATION& location = point(column.m_register).m_location;
    m_state_bits.insert(location);
    names.push_back(transformed(location));
    points.push_back(column.m_register);
  }
  KPT_GROUPS_SIDE r(machine.m_reference.size());
  KPT_GROUPS_SIDE t(names.size());
  KPT_STATE_TABLE table(static_cast<unsigned short>(machine.m_states), static_cast<unsigned short>(r.size()),
                        static_cast<unsigned short>(t.size()));
  for (std::size_t i = 0; i < r.size(); ++i) {
    const COLUMN& column = machine.m_reference[i];
    r[i].same.push_back(reference(column.m_register));
    points.push_back(column.m_register);
    for (std::size_t state = 0; state < machine.m_states; ++state) {
      table.set_reference_entry(static_cast<unsigned short>(state + 1), static_cast<unsigned short>(i + 1),
                                column.m_values[state]);
    }
  }
  for (std::size_t i = 0; i < t.size(); ++i) {
    t[i].same.push_back(names[i].view());
    for (std::size_t state = 0; state < machine.m_states; ++state) {
      table.set_transformed_entry(static_cast<unsigned short>(state + 1), static_cast<unsigned short>(i + 1),
                                  machine.m_transformed[i].m_values[state]);
    }
  }
  return describe(m_db.associate_groups(r, t, table), points);
}

// A reference register as the database names it, which is how the stage before named it.
KPT_REGISTER_NAME RECORDER::reference(int index) const {
  const POINT& it = point(index);
  return it.m_entity.empty() ? KPT_REGISTER_NAME(it.m_name) : KPT_REGISTER_NAME(it.m_instance, it.m_entity, it.m_pin);
}

// Records the passes that changed the registers, and the stage; false for a null map, which the database refused.
bool RECORDER::describe(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<int>& points) const {
  if (map.is_null()) {
    return false;
  }
  std::vector<std::string> passes;
  for (const int index : points) {
    const std::string& pass = point(index).m_pass;
    if (!pass.empty() && std::find(passes.begin(), passes.end(), pass) == passes.end()) {
      passes.push_back(pass);
    }
  }
  if (!passes.empty()) {
    std::string text;
    for (const std::string& pass : passes) {
      text += (text.empty() ? "" : ", ") + pass;
    }
    map.add_attribute("pass", text);
  }
  map.add_attribute("stage", m_stage);
  return true;
}

// Registers that were merged with a bit of a state machine's code are in the machine's map.
void RECORDER::record_group(const LOCATION& location, const std::vector<int>& group) {
  if (m_state_bits.contains(location)) {
    return;
  }
  const std::string kept = name_at(location);
  std::size_t first = 0;
  for (std::size_t i = 0; i < group.size(); ++i) {
    if (point(group[i]).m_name == kept) {
      first = i;
    }
  }
  count_first(point(group[first]), location);
  m_totals.m_merged += group.size() - 1;
  KPT_GROUPS r;
  KPT_GROUPS t;
  r.same.push_back(reference(group[first]));
  for (std::size_t i = 0; i < group.size(); ++i) {
    if (i != first) {
      const bool same = point(group[i]).m_inverted == point(group[first]).m_inverted;
      (same ? r.same : r.inverse).push_back(reference(group[i]));
    }
  }
  const TRANSFORMED register_now = transformed(location);
  (point(group[first]).m_inverted ? t.inverse : t.same).push_back(register_now.view());
  const bool recorded = describe(m_db.associate_groups({r}, {t}), group);
  m_totals.m_not_recorded += recorded ? 0 : group.size();
}

void RECORDER::count_first(const POINT& point, const LOCATION& location) {
  if (point.m_inverted) {
    ++m_totals.m_inverted;
  } else if (!m_tracker.view().flop(location).m_type.empty()) {
    ++m_totals.m_instance;
  } else {
    ++(point.m_name == name_at(location) ? m_totals.m_kept : m_totals.m_renamed);
  }
}

RECORDER::TRANSFORMED RECORDER::transformed(const LOCATION& location) const {
  const FLOP& flop = m_tracker.view().flop(location);
  if (flop.m_type.empty()) {
    return {name_at(location), {}, {}};
  }
  return {m_tracker.view().path(location.m_instance) + text_of_spelling(flop.m_cell_name), flop.m_type, flop.m_port};
}

// A word of a memory is unchanged.
void RECORDER::record_word(int index) {
  if (point(index).m_fate != FATE::IN_MEMORY) {
    return;
  }
  KPT_GROUPS here;
  here.same.emplace_back(point(index).m_name);
  const bool recorded = describe(m_db.associate_groups({here}, {here}), {index});
  m_totals.m_not_recorded += recorded ? 0 : 1;
  ++m_totals.m_kept;
}

void RECORDER::record_eliminated(int index) {
  const POINT& eliminated = point(index);
  count_eliminated(eliminated);
  const std::map<FATE, KPT_ELIM_ENUM> reasons = {
      {FATE::ZERO, KPT_STUCK_AT_ZERO}, {FATE::ONE, KPT_STUCK_AT_ONE}, {FATE::NO_FANOUT, KPT_NO_FANOUT}};
  if (const auto reason = reasons.find(eliminated.m_fate); reason != reasons.end()) {
    KPT_GROUPS r;
    r.same.push_back(reference(index));
    const bool recorded = describe(m_db.associate_groups({r}, {}, reason->second), {index});
    m_totals.m_not_recorded += recorded ? 0 : 1;
  }
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
    case FATE::IN_MEMORY:
    case FATE::IN_MACHINE:
      break;
  }
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
  if (totals.m_front_end > 0) {
    Yosys::log("Not counted, because reading Verilog made them for writes to memories and selected bits: %zu.\n",
               totals.m_front_end);
  }
  for (const auto& [pass, count] : totals.m_unknown_after) {
    Yosys::log("Unknown after %s: %zu.\n", pass.empty() ? "a change outside of any pass" : pass.c_str(), count);
  }
}

}  // namespace kpt_yosys
