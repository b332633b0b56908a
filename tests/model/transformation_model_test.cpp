// Random edits, unions, alignments, translations and eliminations of maps. Each
// is compared with a plain second implementation: the same answer, the same debug
// lines, and the same groups, table and status after every step.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/seed.h"
#include "tests/support/state_table_text.h"

namespace {

using LINES = std::vector<std::string>;
using GROUP = std::vector<int>;  // keypoints by number; NONE is null
using PAIR = std::array<GROUP, 2>;
using SIDE = std::vector<PAIR>;

constexpr int NONE = -1;

// ---- Keypoints ----

enum KIND { SIGNAL, INSTANCE, NO_REGISTER };

struct NAMES {
  KIND kind;
  std::string name;
  std::string entity;
  std::string type;
};

// Few names for many keypoints, so that there are namesakes.
class WORLD {
 public:
  WORLD() {
    for (int copy = 0; copy < 2; ++copy) {
      for (const char* name : {"a", "b", "c", "d", "e"}) {
        add({SIGNAL, name, "", ""});
      }
      add({INSTANCE, "a", "u1", "dff"});
      add({INSTANCE, "a", "u2", "dff"});
      add({INSTANCE, "b", "u1", "latch"});
    }
    enter({NO_REGISTER, "a", "", ""}, &m_no_register);
    for (const char* name : {"a", "c", "e"}) {
      m_set_signals[name] = enter({SIGNAL, name, "", ""}, m_set.add_register(100, name));
    }
    m_set_instances[{"a", "dff"}] = enter({INSTANCE, "a", "u9", "dff"}, m_set.add_register(101, "a", "u9", "dff"));
    m_usable = static_cast<int>(m_keypoints.size());
  }

  KPT_KEYPOINT* pointer(int number) const {
    return number == NONE ? nullptr : m_keypoints[static_cast<std::size_t>(number)];
  }
  int number(const KPT_KEYPOINT* pointer) const {
    const auto place = std::find(m_keypoints.begin(), m_keypoints.end(), pointer);
    return place == m_keypoints.end() ? NONE : static_cast<int>(place - m_keypoints.begin());
  }
  const NAMES& names(int number) const { return m_names[static_cast<std::size_t>(number)]; }
  int count() const { return m_usable; }
  const KPT_KEYPOINT_SET_IMPL& set() const { return m_set; }

  int namesake_in_set(int number) const {
    const NAMES& own = names(number);
    if (own.kind == SIGNAL) {
      const auto found = m_set_signals.find(own.name);
      return found == m_set_signals.end() ? NONE : found->second;
    }
    const auto found = m_set_instances.find({own.name, own.type});
    return found == m_set_instances.end() ? NONE : found->second;
  }

 private:
  int enter(const NAMES& names, KPT_KEYPOINT* keypoint) {
    m_names.push_back(names);
    m_keypoints.push_back(keypoint);
    return static_cast<int>(m_keypoints.size()) - 1;
  }
  void add(const NAMES& names) {
    const long id = static_cast<long>(m_keypoints.size()) + 1;
    if (names.kind == SIGNAL) {
      enter(names, &m_registers.emplace_back(id, names.name));
    } else {
      enter(names, &m_registers.emplace_back(id, names.name, names.entity, names.type));
    }
  }

  std::deque<KPT_REGISTER_KEYPOINT_IMPL> m_registers;
  KPT_KEYPOINT m_no_register{KPT_REGISTER_TYPE, 99, "a"};
  KPT_KEYPOINT_SET_IMPL m_set;
  std::vector<NAMES> m_names;
  std::vector<KPT_KEYPOINT*> m_keypoints;
  std::map<std::string, int> m_set_signals;
  std::map<std::pair<std::string, std::string>, int> m_set_instances;
  int m_usable = 0;
};

// ---- The plain state table ----

struct TABLE {
  unsigned rows = 0;
  std::array<unsigned, 2> columns{};
  std::array<std::vector<bool>, 2> bits;

  TABLE(unsigned num_rows, unsigned r, unsigned t)
      : rows(num_rows),
        columns{r, t},
        bits{std::vector<bool>(std::size_t{num_rows} * r), std::vector<bool>(std::size_t{num_rows} * t)} {}

  static TABLE identity() {
    TABLE table(2, 1, 1);
    table.bits[0][1] = table.bits[1][1] = true;
    return table;
  }

  int get(int side, unsigned row, unsigned column, LINES& lines) const {
    const std::vector<bool>& all = bits[static_cast<std::size_t>(side)];
    const unsigned long position = (row - 1UL) * columns[static_cast<std::size_t>(side)] + column - 1UL;
    if (row == 0 || column == 0 || row * column % 65536 > all.size() || position >= all.size()) {
      lines.emplace_back(kpt_test::REFUSED_READ);
      return 2;
    }
    return all[position] ? 1 : 0;
  }

  void set(int side, unsigned row, unsigned column, bool value, LINES& lines) {
    const std::size_t s = static_cast<std::size_t>(side);
    if (row == 0 || column == 0 || row > rows || column > columns[s]) {
      lines.emplace_back(side == 0 ? kpt_test::REFUSED_R_WRITE : kpt_test::REFUSED_T_WRITE);
      return;
    }
    bits[s][(row - 1UL) * columns[s] + column - 1UL] = value;
  }

  void flip(unsigned column) {
    for (unsigned row = 0; row < rows; ++row) {
      const unsigned long position = static_cast<unsigned long>(row) * columns[1] + column;
      if (position < bits[1].size()) {
        bits[1][position] = !bits[1][position];
      }
    }
  }

  TABLE product(const TABLE& other, LINES& lines) const {
    TABLE result(rows * other.rows, columns[0] + other.columns[0], columns[1] + other.columns[1]);
    for (const int side : {0, 1}) {
      const std::size_t s = static_cast<std::size_t>(side);
      for (unsigned state = 1; state <= rows; ++state) {
        for (unsigned c = 1; c <= columns[s]; ++c) {
          for (unsigned u = 1; u <= other.rows; ++u) {
            result.set(side, state + u - 1, c, get(side, state, c, lines) == 1, lines);
          }
        }
      }
      for (unsigned state = 1; state <= rows; ++state) {
        for (unsigned u = 1; u <= other.rows; ++u) {
          for (unsigned c = 1; c <= other.columns[s]; ++c) {
            result.set(side, state + u - 1, columns[s] + c - 1, other.get(side, u, c, lines) == 1, lines);
          }
        }
      }
    }
    return result;
  }

  bool remove_t_column(unsigned column) {
    if (columns[1] == 0) {
      return false;
    }
    const unsigned removed = column == 0 ? 1 : std::min(column, columns[1]);
    std::vector<bool> kept;
    for (unsigned row = 1; row <= rows; ++row) {
      for (unsigned c = 1; c <= columns[1]; ++c) {
        if (c != removed) {
          kept.push_back(bits[1][(row - 1UL) * columns[1] + c - 1UL]);
        }
      }
    }
    bits[1] = kept;
    --columns[1];
    return true;
  }

  void keep_rows_where_equal(unsigned a, unsigned b, LINES& lines) {
    std::vector<unsigned> kept;
    for (unsigned row = 1; row <= rows; ++row) {
      const int first = get(1, row, a, lines);
      const int second = get(1, row, b, lines);
      if (first == second) {
        kept.push_back(row);
      }
    }
    for (std::size_t s = 0; s < 2; ++s) {
      std::vector<bool> copied;
      for (const unsigned row : kept) {
        for (unsigned c = 0; c < columns[s]; ++c) {
          copied.push_back(bits[s][(row - 1UL) * columns[s] + c]);
        }
      }
      bits[s] = copied;
    }
    rows = static_cast<unsigned>(kept.size());
  }

  friend bool operator==(const TABLE& a, const TABLE& b) {
    return a.rows == b.rows && a.columns == b.columns && a.bits == b.bits;
  }
};

// ---- The plain map ----

struct PLAIN_MAP {
  std::array<SIDE, 2> sides;
  bool fsm = false;
  TABLE table = TABLE::identity();
  int status = 0;

  static bool holds(const GROUP& group, int keypoint) {
    return std::find(group.begin(), group.end(), keypoint) != group.end();
  }
  static bool remove_first(GROUP& group, int keypoint) {
    const auto place = std::find(group.begin(), group.end(), keypoint);
    if (place == group.end()) {
      return false;
    }
    group.erase(place);
    return true;
  }

  PAIR pair(int side, std::size_t index) const {
    const SIDE& pairs = sides[static_cast<std::size_t>(side)];
    return index < pairs.size() ? pairs[index] : PAIR();
  }

  std::optional<int> representative(int side, std::size_t index) const {
    const PAIR p = pair(side, index);
    if (!p[0].empty()) {
      return p[0].front();
    }
    return p[1].empty() ? std::nullopt : std::optional<int>(p[1].front());
  }

  GROUP equivalents(int side, std::size_t index, bool inverted, LINES& lines) const {
    const PAIR p = pair(side, index);
    if (p[0].empty() && p[1].empty()) {
      lines.emplace_back(side == 0 ? "Info: R side of map seems to be empty" : "Info: T side of map seems to be empty");
      return {};
    }
    const bool own_is_i = p[0].empty();
    GROUP others;
    for (const int keypoint : p[own_is_i != inverted ? 1 : 0]) {
      if (keypoint != *representative(side, index)) {
        others.push_back(keypoint);
      }
    }
    return others;
  }

  GROUP registers(int side, std::size_t index, LINES& lines) const {
    GROUP all;
    if (const std::optional<int> first = representative(side, index)) {
      all.push_back(*first);
    }
    for (const bool inverted : {false, true}) {
      for (const int keypoint : equivalents(side, index, inverted, lines)) {
        all.push_back(keypoint);
      }
    }
    return all;
  }

  bool found(int side, int keypoint) const {
    return holds(pair(side, 0)[0], keypoint) || holds(pair(side, 0)[1], keypoint);
  }

  bool unate(std::size_t r_index, std::size_t t_index, int sense) const {
    if (!found(0, representative(0, r_index).value_or(NONE)) || !found(1, representative(1, t_index).value_or(NONE))) {
      return false;
    }
    if (fsm) {
      return true;
    }
    const PAIR r = pair(0, r_index);
    const PAIR t = pair(1, t_index);
    const bool both_n = !r[0].empty() && !t[0].empty();
    const bool both_i = r[0].empty() && t[0].empty() && !r[1].empty() && !t[1].empty();
    return sense == (both_n || both_i ? 0 : 1);
  }

  bool replicate(int existing, int replica) {
    if (!found(1, existing)) {
      return false;
    }
    sides[1][0][holds(sides[1][0][0], existing) ? 0 : 1].push_back(replica);
    return true;
  }

  bool retime(int keypoint, LINES& lines) {
    if (!found(1, keypoint)) {
      lines.emplace_back("Error: Could not find retimed_kp in t_vector");
      return false;
    }
    PAIR& p = sides[1][0];
    const std::size_t from = holds(p[0], keypoint) ? 0 : 1;
    const bool before = p[0].empty();
    p[1 - from].push_back(keypoint);
    remove_first(p[from], keypoint);
    if (fsm && before != p[0].empty()) {
      table.flip(0);
    }
    return true;
  }

  bool eliminate(int keypoint, int reason, LINES& lines) {
    if (!found(1, keypoint)) {
      lines.emplace_back("Error: Couldn't find index in t_vector");
      return false;
    }
    if (reason < 1 || reason > 3) {
      return false;
    }
    const bool last = representative(1, 0) == keypoint && equivalents(1, 0, false, lines).empty() &&
                      equivalents(1, 0, true, lines).empty();
    if (reason == 3 && fsm && sides[1].size() >= 2 && last) {
      status = 3;
      if (!table.remove_t_column(0)) {
        return false;
      }
      sides[1].erase(sides[1].begin());
      return true;
    }
    if (!remove_first(sides[1][0][0], keypoint)) {
      remove_first(sides[1][0][1], keypoint);
    }
    if (reason != 3 || last) {
      status = reason;
    }
    if (reason != 3 && last && fsm) {
      sides[1].erase(sides[1].begin());
    }
    return true;
  }

  bool erase(std::size_t index) {
    if (index >= sides[1].size()) {
      return false;
    }
    sides[1].erase(sides[1].begin() + static_cast<std::ptrdiff_t>(index));
    return true;
  }

  bool interchange(int side, LINES& lines) {
    if (side != 0 && side != 1) {
      lines.emplace_back("Error: Unknown set Type");
      return false;
    }
    for (PAIR& p : sides[static_cast<std::size_t>(side)]) {
      std::swap(p[0], p[1]);
    }
    return true;
  }

  bool update_table(unsigned a, unsigned b, LINES& lines) {
    table.keep_rows_where_equal(a, b, lines);
    return table.remove_t_column(b);
  }

  // The other map may be this one, so it is copied when it is read after a change.

  bool copy(PLAIN_MAP other) {
    for (std::size_t s = 0; s < 2; ++s) {
      sides[s].insert(sides[s].end(), other.sides[s].begin(), other.sides[s].end());
    }
    return true;
  }

  bool unite_simply(const PLAIN_MAP& other) {
    bool added = true;
    for (const int side : {0, 1}) {
      SIDE& own = sides[static_cast<std::size_t>(side)];
      const PAIR added_pair = other.pair(side, 0);
      for (std::size_t g = 0; g < 2; ++g) {
        for (const int keypoint : added_pair[g]) {
          if (own.empty()) {
            added = false;
          } else {
            own[0][g].push_back(keypoint);
          }
        }
      }
    }
    if (added) {
      status = other.status;
    }
    return added;
  }

  bool unite(PLAIN_MAP other, LINES& lines) {
    if (fsm && other.fsm) {
      lines.emplace_back("Cannot unite 2 FSM transformations");
      return false;
    }
    if (!fsm && !other.fsm) {
      return unite_simply(other);
    }
    table = table.product(other.table, lines);
    fsm = true;
    status = other.status;
    return copy(std::move(other));
  }

  bool update(PLAIN_MAP other, GROUP& entered, GROUP& left) {
    for (const PAIR& p : sides[1]) {
      left.insert(left.end(), p[0].begin(), p[0].end());
      left.insert(left.end(), p[1].begin(), p[1].end());
    }
    sides[1] = other.sides[1];
    for (const PAIR& p : sides[1]) {
      entered.insert(entered.end(), p[0].begin(), p[0].end());
      entered.insert(entered.end(), p[1].begin(), p[1].end());
    }
    fsm = other.fsm;
    status = other.status;
    if (fsm) {
      table = other.table;
    }
    return true;
  }

  // 0: not found, 1: same polarity, 2: opposite polarity.
  static int polarity(const PLAIN_MAP& earlier, int transformed, const PLAIN_MAP& later, int reference) {
    if (!earlier.found(1, transformed) || !later.found(0, reference)) {
      return 0;
    }
    return holds(earlier.sides[1][0][0], transformed) == holds(later.sides[0][0][0], reference) ? 1 : 2;
  }

  bool same_as(const PLAIN_MAP& other) const {
    return fsm == other.fsm && table == other.table && sides == other.sides;
  }
};

bool is_namesake(const NAMES& a, const NAMES& b) {
  return a.kind != NO_REGISTER && a.kind == b.kind && a.name == b.name && a.entity == b.entity && a.type == b.type;
}

int find_namesake(const WORLD& world, const SIDE& side, const NAMES& names) {
  for (const PAIR& p : side) {
    for (const GROUP& group : p) {
      for (const int keypoint : group) {
        if (keypoint != NONE && is_namesake(world.names(keypoint), names)) {
          return keypoint;
        }
      }
    }
  }
  return NONE;
}

bool t_equals_r(const WORLD& world, const PLAIN_MAP& map, const PLAIN_MAP& other) {
  if (map.sides[1].size() != other.sides[0].size()) {
    return false;
  }
  for (const PAIR& p : map.sides[1]) {
    for (const GROUP& group : p) {
      for (const int keypoint : group) {
        if (keypoint == NONE || find_namesake(world, other.sides[0], world.names(keypoint)) == NONE) {
          return false;
        }
      }
    }
  }
  return true;
}

SIDE translate(const WORLD& world, const SIDE& side) {
  SIDE translated(side.size());
  for (std::size_t k = 0; k < side.size(); ++k) {
    for (std::size_t g = 0; g < 2; ++g) {
      for (const int keypoint : side[k][g]) {
        if (keypoint != NONE && world.names(keypoint).kind != NO_REGISTER && world.namesake_in_set(keypoint) != NONE) {
          translated[k][g].push_back(world.namesake_in_set(keypoint));
        }
      }
    }
  }
  return translated;
}

// ---- The run ----

using MAP = KPT_TRANSFORMATION_IMPL;

struct SUBJECT {
  std::optional<MAP> map;
  PLAIN_MAP plain;
};

class TransformationModel : public testing::Test {
 protected:
  static constexpr std::size_t SUBJECTS = 4;
  static constexpr std::size_t MOST_INDICES = 4;
  static constexpr std::size_t MOST_REGISTERS = 12;
  static constexpr unsigned MOST_STATES = 8;
  static constexpr int REASONS = 6;

  unsigned below(unsigned count) { return std::uniform_int_distribution<unsigned>(0, count - 1)(m_random); }
  bool once_in(unsigned count) { return below(count) == 0; }

  int any_keypoint() { return once_in(12) ? NONE : static_cast<int>(below(static_cast<unsigned>(world.count()))); }

  // Mostly a keypoint that the side lists at the first index, so that most edits are accepted.
  int likely_keypoint(const PLAIN_MAP& plain, int side) {
    const GROUP group = plain.pair(side, once_in(8) ? 1 : 0)[below(2)];
    return group.empty() || once_in(8) ? any_keypoint() : group[below(static_cast<unsigned>(group.size()))];
  }

  GROUP any_group() {
    GROUP group(once_in(3) ? 0 : once_in(3) ? 1 + below(3) : 1);
    std::generate(group.begin(), group.end(), [this] { return any_keypoint(); });
    return group;
  }

  SIDE any_side() {
    SIDE side(once_in(20) ? 0 : 1 + below(MOST_INDICES));
    for (PAIR& p : side) {
      p[0] = any_group();
      p[1] = once_in(2) ? any_group() : GROUP();
    }
    return side;
  }

  // Mostly as wide as the sides, sometimes of any size.
  TABLE any_table(const PLAIN_MAP& plain) {
    const bool fits = !once_in(5);
    TABLE table(below(MOST_STATES + 1), fits ? static_cast<unsigned>(plain.sides[0].size()) : below(5),
                fits ? static_cast<unsigned>(plain.sides[1].size()) : below(5));
    for (std::vector<bool>& bits : table.bits) {
      std::generate(bits.begin(), bits.end(), [this] { return once_in(2); });
    }
    return table;
  }

  KPT_KEYPOINT_LIST list_of(const GROUP& group) const {
    KPT_KEYPOINT_LIST list;
    for (const int keypoint : group) {
      list.push_back(world.pointer(keypoint));
    }
    return list;
  }
  NI_PAIR_VECTOR vector_of(const SIDE& side) const {
    NI_PAIR_VECTOR vector;
    for (const PAIR& p : side) {
      vector.push_back({list_of(p[0]), list_of(p[1])});
    }
    return vector;
  }
  static KPT_STATE_TABLE_IMPL table_of(const TABLE& plain) {
    KPT_STATE_TABLE_IMPL table(static_cast<unsigned short>(plain.rows), static_cast<unsigned short>(plain.columns[0]),
                               static_cast<unsigned short>(plain.columns[1]));
    for (unsigned row = 1; row <= plain.rows; ++row) {
      for (std::size_t s = 0; s < 2; ++s) {
        for (unsigned c = 1; c <= plain.columns[s]; ++c) {
          table.set_entry(static_cast<KPT_SET_ENUM>(s), static_cast<unsigned short>(row),
                          static_cast<unsigned short>(c), plain.bits[s][(row - 1UL) * plain.columns[s] + c - 1UL]);
        }
      }
    }
    return table;
  }

  GROUP numbers(const KPT_KEYPOINT_LIST& list) const {
    GROUP group;
    for (const KPT_KEYPOINT* keypoint : list) {
      group.push_back(world.number(keypoint));
    }
    return group;
  }
  SIDE numbers(const NI_PAIR_VECTOR& vector) const {
    SIDE side;
    for (const NI_PAIR& pair : vector) {
      side.push_back({numbers(pair.first), numbers(pair.second)});
    }
    return side;
  }

  void create(SUBJECT& subject) {
    PLAIN_MAP& plain = subject.plain;
    plain = PLAIN_MAP();
    switch (below(4)) {
      case 0: {
        const int r = any_keypoint();
        const int t = any_keypoint();
        plain.sides = {SIDE{PAIR{GROUP{r}, GROUP{}}}, SIDE{PAIR{GROUP{t}, GROUP{}}}};
        subject.map.emplace(world.pointer(r), world.pointer(t));
        break;
      }
      case 1: {
        std::array<GROUP, 2> registers;
        for (std::size_t s = 0; s < 2; ++s) {
          registers[s].resize(1 + below(MOST_INDICES));
          for (int& keypoint : registers[s]) {
            keypoint = any_keypoint();
            plain.sides[s].push_back(PAIR{GROUP{keypoint}, GROUP{}});
          }
        }
        plain.fsm = true;
        plain.table = any_table(plain);
        subject.map.emplace(list_of(registers[0]), list_of(registers[1]), table_of(plain.table));
        break;
      }
      case 2:
        plain.sides = {any_side(), any_side()};
        plain.status = static_cast<int>(below(REASONS));
        subject.map.emplace(vector_of(plain.sides[0]), vector_of(plain.sides[1]),
                            static_cast<KPT_ELIM_ENUM>(plain.status));
        break;
      default: {
        plain.sides = {any_side(), any_side()};
        plain.status = static_cast<int>(below(REASONS));
        plain.fsm = true;
        plain.table = any_table(plain);
        const NI_PAIR_VECTOR r = vector_of(plain.sides[0]);
        const NI_PAIR_VECTOR t = vector_of(plain.sides[1]);
        subject.map.emplace(r, t, table_of(plain.table), static_cast<KPT_ELIM_ENUM>(plain.status));
        break;
      }
    }
  }

  // Unions make maps grow; a map that is too large is replaced.
  static bool is_too_large(const PLAIN_MAP& plain) {
    std::size_t most = 0;
    for (const SIDE& side : plain.sides) {
      for (const PAIR& p : side) {
        most = std::max({most, p[0].size(), p[1].size()});
      }
    }
    return most > MOST_REGISTERS || plain.sides[0].size() > 2 * MOST_INDICES ||
           plain.sides[1].size() > 2 * MOST_INDICES || plain.table.rows > MOST_STATES * MOST_STATES;
  }

  void step();
  void edit(SUBJECT& subject);
  void combine(SUBJECT& subject, SUBJECT& other);
  void ask(const SUBJECT& subject, const SUBJECT& other);
  void compare(const SUBJECT& subject);
  void expect(bool answer, bool expected) {
    EXPECT_EQ(answer, expected) << m_operation;
    EXPECT_EQ(m_host.take_debug(), m_lines) << m_operation;
    m_lines.clear();
  }

  WORLD world;
  kpt_test::HOST_LINES m_host;
  LINES m_lines;  // what the plain map would have issued
  std::string m_operation;
  std::mt19937 m_random{kpt_test::seed()};
  std::array<SUBJECT, SUBJECTS> m_subjects;
};

void TransformationModel::edit(SUBJECT& subject) {
  MAP& map = *subject.map;
  PLAIN_MAP& plain = subject.plain;
  const unsigned index = below(MOST_INDICES + 2);
  const auto short_index = static_cast<unsigned short>(index);
  const int keypoint = likely_keypoint(plain, 1);
  switch (below(8)) {
    case 0: {
      m_operation = "add";
      const std::size_t s = below(2);
      const std::size_t g = below(2);
      const bool there = index < plain.sides[s].size();
      if (there) {
        plain.sides[s][index][g].push_back(keypoint);
      }
      KPT_KEYPOINT* pointer = world.pointer(keypoint);
      expect(s == 0 ? (g == 0 ? map.add_keypoint_to_r_n_group_of_map(pointer, index)
                              : map.add_keypoint_to_r_i_group_of_map(pointer, index))
                    : (g == 0 ? map.add_keypoint_to_t_n_group_of_map(pointer, index)
                              : map.add_keypoint_to_t_i_group_of_map(pointer, index)),
             there);
      break;
    }
    case 1: {
      m_operation = "delete";
      const std::size_t g = below(2);
      const bool deleted = index < plain.sides[1].size() && PLAIN_MAP::remove_first(plain.sides[1][index][g], keypoint);
      expect(g == 0 ? map.delete_keypoint_from_t_n_group_of_map(world.pointer(keypoint), index)
                    : map.delete_keypoint_from_t_i_group_of_map(world.pointer(keypoint), index),
             deleted);
      break;
    }
    case 2: {
      m_operation = "replicate";
      const int replica = any_keypoint();
      if ((keypoint != NONE && world.names(keypoint).kind == NO_REGISTER) ||
          (replica != NONE && world.names(replica).kind == NO_REGISTER)) {
        break;  // the operation accepts only registers
      }
      const bool expected = plain.replicate(keypoint, replica);
      expect(map.add_replicated_register(static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(world.pointer(keypoint)),
                                         static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(world.pointer(replica))),
             expected);
      break;
    }
    case 3: {
      m_operation = "retime";
      const bool expected = plain.retime(keypoint, m_lines);
      expect(map.set_inverter_retimed_register(world.pointer(keypoint)), expected);
      break;
    }
    case 4: {
      m_operation = "eliminate";
      const int reason = once_in(6) ? static_cast<int>(below(REASONS)) : 1 + static_cast<int>(below(3));
      const bool expected = plain.eliminate(keypoint, reason, m_lines);
      expect(map.set_eliminated(world.pointer(keypoint), static_cast<KPT_ELIM_ENUM>(reason)), expected);
      break;
    }
    case 5: {
      m_operation = "erase";
      const bool expected = plain.erase(index);
      expect(map.erase_entry_in_t_state_vector(short_index), expected);
      break;
    }
    case 6: {
      m_operation = "interchange";
      const int side = static_cast<int>(below(3));
      const bool expected = plain.interchange(side, m_lines);
      expect(map.interchange_registers_in_n_i_groups_of_map(static_cast<KPT_SET_ENUM>(side)), expected);
      break;
    }
    default: {
      m_operation = "update table";
      const unsigned b = below(MOST_INDICES + 3);
      const bool expected = plain.update_table(index, b, m_lines);
      expect(map.update_state_table(short_index, static_cast<unsigned short>(b)), expected);
      break;
    }
  }
}

void TransformationModel::combine(SUBJECT& subject, SUBJECT& other) {
  MAP& map = *subject.map;
  PLAIN_MAP& plain = subject.plain;
  switch (below(7)) {
    case 0:
      m_operation = "copy map";
      plain.copy(other.plain);
      expect(map.copy_map(*other.map), true);
      break;
    case 1: {
      m_operation = "simple union";
      const bool expected = plain.unite_simply(other.plain);
      expect(map.make_simple_union(*other.map), expected);
      break;
    }
    case 2: {
      m_operation = "union";
      const bool expected = plain.unite(other.plain, m_lines);
      expect(map.make_union(*other.map), expected);
      break;
    }
    case 3: {
      m_operation = "align r";
      const int reference = likely_keypoint(plain, 0);
      const int transformed = likely_keypoint(other.plain, 1);
      const int polarity = PLAIN_MAP::polarity(other.plain, transformed, plain, reference);
      if (polarity == 2) {
        plain.interchange(0, m_lines);
        plain.interchange(1, m_lines);
      }
      expect(map.align_r_register(world.pointer(reference), &*other.map, world.pointer(transformed)), polarity != 0);
      break;
    }
    case 4: {
      m_operation = "align t";
      const int transformed = likely_keypoint(plain, 1);
      const int reference = likely_keypoint(other.plain, 0);
      const int polarity = PLAIN_MAP::polarity(plain, transformed, other.plain, reference);
      if (polarity == 2) {
        other.plain.interchange(1, m_lines);
        other.plain.interchange(0, m_lines);
      }
      expect(map.align_t_register(world.pointer(transformed), &*other.map, world.pointer(reference)), polarity != 0);
      compare(other);
      break;
    }
    case 5: {
      m_operation = "update";
      GROUP entered{1};
      GROUP left{2};
      KPT_KEYPOINT_LIST map_entered = list_of(entered);
      KPT_KEYPOINT_LIST map_left = list_of(left);
      plain.update(other.plain, entered, left);
      expect(map.update_transformations(*other.map, map_entered, map_left), true);
      EXPECT_EQ(numbers(map_entered), entered);
      EXPECT_EQ(numbers(map_left), left);
      break;
    }
    default: {
      m_operation = "translate";
      const SIDE r = translate(world, plain.sides[0]);
      const SIDE t = translate(world, plain.sides[1]);
      EXPECT_EQ(numbers(map.translate_reference_vector(world.set())), r);
      EXPECT_EQ(numbers(map.translate_transformed_vector(world.set())), t);
      if (once_in(2)) {
        subject.map.emplace(map.translate_reference_vector(world.set()), map.translate_transformed_vector(world.set()),
                            map.get_elim_status());
        plain.sides = {r, t};
        plain.fsm = false;
        plain.table = TABLE::identity();
      } else {
        subject.map.emplace(MAP(map));
      }
      expect(true, true);
      break;
    }
  }
}

// The queries, which change nothing.
void TransformationModel::ask(const SUBJECT& subject, const SUBJECT& other) {
  m_operation += ", then asked";
  const MAP& map = *subject.map;
  const PLAIN_MAP& plain = subject.plain;
  const unsigned index = below(MOST_INDICES + 2);
  const auto i = static_cast<unsigned short>(index);

  EXPECT_EQ(numbers(map.get_r_representative_equivalents(i)), plain.equivalents(0, index, false, m_lines));
  EXPECT_EQ(numbers(map.get_t_representative_equivalents(i)), plain.equivalents(1, index, false, m_lines));
  EXPECT_EQ(numbers(map.get_r_representative_inverted_equivalents(i)), plain.equivalents(0, index, true, m_lines));
  EXPECT_EQ(numbers(map.get_t_representative_inverted_equivalents(i)), plain.equivalents(1, index, true, m_lines));
  EXPECT_EQ(numbers(map.get_r_registers_at_index(i)), plain.registers(0, index, m_lines));
  EXPECT_EQ(numbers(map.get_t_registers_at_index(i)), plain.registers(1, index, m_lines));
  EXPECT_EQ(world.number(map.get_r_representative(i)), plain.representative(0, index).value_or(NONE));
  EXPECT_EQ(world.number(map.get_t_representative(i)), plain.representative(1, index).value_or(NONE));

  for (const int side : {0, 1}) {
    const int keypoint = likely_keypoint(plain, side);
    bool found = false;
    EXPECT_EQ(side == 0 ? map.find_index_in_r_vector(world.pointer(keypoint), &found)
                        : map.find_index_in_t_vector(world.pointer(keypoint), &found),
              0);
    EXPECT_EQ(found, plain.found(side, keypoint));
    const PAIR p = plain.pair(side, index);
    EXPECT_EQ(
        side == 0 ? map.r_representative_is_in_n_group_of_map(index) : map.t_representative_is_in_n_group_of_map(index),
        !p[0].empty());
    EXPECT_EQ(
        side == 0 ? map.r_representative_is_in_i_group_of_map(index) : map.t_representative_is_in_i_group_of_map(index),
        p[0].empty() && !p[1].empty());
    EXPECT_EQ(side == 0 ? map.keypoint_is_in_r_n_group_of_map(world.pointer(keypoint), index)
                        : map.keypoint_is_in_t_n_group_of_map(world.pointer(keypoint), index),
              PLAIN_MAP::holds(p[0], keypoint));
    EXPECT_EQ(side == 0 ? map.keypoint_is_in_r_i_group_of_map(world.pointer(keypoint), index)
                        : map.keypoint_is_in_t_i_group_of_map(world.pointer(keypoint), index),
              PLAIN_MAP::holds(p[1], keypoint));
  }

  const unsigned t_index = below(3);
  const int sense = static_cast<int>(below(2));
  EXPECT_EQ(map.register_association_is_unate(index, t_index, static_cast<KPT_UNATE_ENUM>(sense)),
            plain.unate(index, t_index, sense));
  EXPECT_EQ(map.get_number_of_states(), plain.fsm ? plain.table.rows : 2);
  EXPECT_EQ(map.get_num_reference_registers(), plain.sides[0].size());
  EXPECT_EQ(map.get_num_transformed_registers(), plain.sides[1].size());
  EXPECT_EQ(map.r_representative_is_stuck_at_zero(), plain.status == 1);
  EXPECT_EQ(map.r_representative_is_stuck_at_one(), plain.status == 2);
  EXPECT_EQ(map.has_no_fanout(), plain.status == 3);
  EXPECT_EQ(map.r_representative_is_eliminated(), plain.status == 0);

  EXPECT_EQ(map.t_equals_r(*other.map), t_equals_r(world, plain, other.plain));
  EXPECT_EQ(map == *other.map, plain.same_as(other.plain));
  const int sought = static_cast<int>(below(static_cast<unsigned>(world.count())));
  const NAMES& names = world.names(sought);
  const KPT_KEYPOINT* namesake = names.kind == INSTANCE
                                     ? MAP::find_register_in_s_vector(map.r_vec(), names.name, names.entity, names.type)
                                     : MAP::find_register_in_s_vector(map.r_vec(), names.name);
  EXPECT_EQ(world.number(namesake),
            find_namesake(world, plain.sides[0],
                          {names.kind == INSTANCE ? INSTANCE : SIGNAL, names.name, names.entity, names.type}));
  expect(true, true);
}

void TransformationModel::compare(const SUBJECT& subject) {
  EXPECT_EQ(numbers(subject.map->r_vec()), subject.plain.sides[0]) << m_operation;
  EXPECT_EQ(numbers(subject.map->t_vec()), subject.plain.sides[1]) << m_operation;
  EXPECT_EQ(subject.map->map_has_fsm_transformation(), subject.plain.fsm) << m_operation;
  EXPECT_EQ(subject.map->get_elim_status(), subject.plain.status) << m_operation;
  EXPECT_TRUE(subject.map->state_table() == table_of(subject.plain.table)) << m_operation;
}

void TransformationModel::step() {
  SUBJECT& subject = m_subjects[below(SUBJECTS)];
  SUBJECT& other = m_subjects[below(SUBJECTS)];  // sometimes the same one
  if (!subject.map || !other.map || is_too_large(subject.plain) || once_in(40)) {
    create(subject);
    m_operation = "create";
  } else if (once_in(3)) {
    combine(subject, other);
  } else {
    edit(subject);
  }
  compare(subject);
  if (other.map) {
    ask(subject, other);
  }
}

TEST_F(TransformationModel, EveryStepAgreesWithThePlainMap) {
  const int steps = kpt_test::steps(20000);
  for (int number = 0; number < steps && !HasFailure(); ++number) {
    step();
    EXPECT_FALSE(HasFailure()) << "at step " << number << ", " << m_operation << ", seed " << kpt_test::seed();
  }
}

}  // namespace
