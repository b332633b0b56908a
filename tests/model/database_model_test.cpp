// Random events on whole databases with few names, so that names collide often.
// After every step the database is compared with a plain model over standard
// containers, which was written from the descriptions of the events: the result,
// the debug lines, the registers, the maps, the entry of every register, and what
// a client learns of a map. The index checker runs as well.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"
#include "tests/support/seed.h"

namespace {

using LINES = std::vector<std::string>;
enum SIDE { R, T };

unsigned short narrow(unsigned long number) { return static_cast<unsigned short>(number); }

// --- a plain state table ---

struct TABLE {
  TABLE(unsigned long states, unsigned long r, unsigned long t) : rows(states), columns{r, t} {
    bits[R].resize(rows * r);
    bits[T].resize(rows * t);
  }

  int read(SIDE side, unsigned long row, unsigned long column, LINES& lines) const {
    const unsigned long at = (row - 1) * columns[side] + column - 1;
    if (row == 0 || column == 0 || row * column % 65536 > bits[side].size() || at >= bits[side].size()) {
      lines.emplace_back(kpt_test::REFUSED_READ);
      return 2;
    }
    return bits[side][at] ? 1 : 0;
  }

  void write(SIDE side, unsigned long row, unsigned long column, bool value, LINES& lines) {
    if (row == 0 || column == 0 || row > rows || column > columns[side]) {
      lines.emplace_back(side == R ? kpt_test::REFUSED_R_WRITE : kpt_test::REFUSED_T_WRITE);
      return;
    }
    bits[side][(row - 1) * columns[side] + column - 1] = value;
  }

  TABLE times(const TABLE& other, LINES& lines) const {
    TABLE product(rows * other.rows, columns[R] + other.columns[R], columns[T] + other.columns[T]);
    for (const SIDE side : {R, T}) {
      for (unsigned long s = 1; s <= rows; ++s) {
        for (unsigned long u = 1; u <= other.rows; ++u) {
          for (unsigned long c = 1; c <= columns[side]; ++c) {
            product.write(side, s + u - 1, c, read(side, s, c, lines) == 1, lines);
          }
        }
      }
      for (unsigned long s = 1; s <= rows; ++s) {
        for (unsigned long u = 1; u <= other.rows; ++u) {
          for (unsigned long c = 1; c <= other.columns[side]; ++c) {
            product.write(side, s + u - 1, columns[side] + c - 1, other.read(side, u, c, lines) == 1, lines);
          }
        }
      }
    }
    return product;
  }

  void keep_rows_that_agree(unsigned long a, unsigned long b, LINES& lines) {
    TABLE kept(0, columns[R], columns[T]);
    for (unsigned long row = 1; row <= rows; ++row) {
      const int value = read(T, row, a, lines);
      if (read(T, row, b, lines) == value) {
        ++kept.rows;
        for (const SIDE side : {R, T}) {
          for (unsigned long at = (row - 1) * columns[side]; at < row * columns[side]; ++at) {
            kept.bits[side].push_back(bits[side][at]);
          }
        }
      }
    }
    *this = kept;
  }

  bool drop_t_column(unsigned long column) {
    if (columns[T] == 0) {
      return false;
    }
    const unsigned long gone = std::clamp(column, 1UL, columns[T]);
    std::vector<bool> kept;
    for (unsigned long at = 0; at < bits[T].size(); ++at) {
      if (at % columns[T] + 1 != gone) {
        kept.push_back(bits[T][at]);
      }
    }
    bits[T] = kept;
    --columns[T];
    return true;
  }

  void flip_first_t_column() {
    for (unsigned long at = 0; at < bits[T].size(); at += columns[T]) {
      bits[T][at].flip();
    }
  }

  unsigned long rows;
  unsigned long columns[2];
  std::vector<bool> bits[2];
};

TABLE plain_table() {
  TABLE table(2, 1, 1);
  table.bits[R][1] = table.bits[T][1] = true;
  return table;
}

// --- a plain database ---

using GROUP = std::vector<std::size_t>;  // registers by number

struct PAIR {
  GROUP& group(bool n_group) { return n_group ? n : i; }
  bool empty() const { return n.empty() && i.empty(); }
  const GROUP& own() const { return n.empty() ? i : n; }
  GROUP opposite() const { return n.empty() ? GROUP() : i; }

  GROUP n;
  GROUP i;
};

struct MAP {
  std::vector<PAIR> pairs[2];
  bool fsm = false;
  TABLE table = plain_table();
  KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED;
};

struct KEY {
  bool signal;
  std::string name;
  std::string entity;
  std::string type;
};

struct REGISTER {
  KEY key;
  long id;
  bool in_set = true;
  KPT_KEYPOINT* keypoint = nullptr;  // the keypoint of the library
};

struct PLACE {
  bool found = false;
  bool in_n = false;
};

constexpr std::size_t NONE = static_cast<std::size_t>(-1);

bool erase_first(GROUP& group, std::size_t k) {
  const auto at = std::find(group.begin(), group.end(), k);
  if (at == group.end()) {
    return false;
  }
  group.erase(at);
  return true;
}

class MODEL {
 public:
  // Only the first index of a side is searched.
  static PLACE place(const MAP& map, SIDE side, std::size_t k) {
    PLACE place;
    if (!map.pairs[side].empty()) {
      const PAIR& pair = map.pairs[side].front();
      place.in_n = std::count(pair.n.begin(), pair.n.end(), k) > 0;
      place.found = place.in_n || std::count(pair.i.begin(), pair.i.end(), k) > 0;
    }
    return place;
  }

  std::size_t find(SIDE side, const KEY& key) const {
    std::size_t found = NONE;
    for (std::size_t k = 0; k < registers[side].size(); ++k) {
      const REGISTER& r = registers[side][k];
      if (r.in_set && r.key.signal == key.signal && r.key.name == key.name && (key.signal || r.key.type == key.type)) {
        found = k;
      }
    }
    return found;
  }
  std::size_t signal(SIDE side, const std::string& name) const { return find(side, {true, name, "", ""}); }

  MAP* map_of(SIDE side, std::size_t k) {
    const auto entry = index[side].find(k);
    if (entry == index[side].end()) {
      return nullptr;
    }
    const auto map = maps.find(entry->second);
    return map == maps.end() ? nullptr : &map->second;
  }

  // A register of that key leaves its set.
  std::size_t create(SIDE side, const KEY& key) {
    const std::size_t earlier = find(side, key);
    if (earlier != NONE) {
      registers[side][earlier].in_set = false;
    }
    registers[side].push_back({key, next_id[side]++});
    return registers[side].size() - 1;
  }

  void enter(std::size_t map) {
    for (const SIDE side : {R, T}) {
      for (const PAIR& pair : maps.at(map).pairs[side]) {
        for (const GROUP* group : {&pair.n, &pair.i}) {
          for (const std::size_t k : *group) {
            index[side][k] = map;
          }
        }
      }
    }
  }

  void add_map(const MAP& map) {
    maps.emplace(next_map, map);
    enter(next_map++);
  }

  void delete_map(std::size_t which, LINES& lines) {
    for (const SIDE side : {R, T}) {
      for (const PAIR& pair : maps.at(which).pairs[side]) {
        if (pair.empty()) {
          lines.insert(lines.end(), 2, side == R ? kpt_test::EMPTY_R_SIDE : kpt_test::EMPTY_T_SIDE);
        }
        for (const GROUP* group : {&pair.n, &pair.i}) {
          for (const std::size_t k : *group) {
            index[side].erase(k);
            erased[side].push_back(k);
          }
        }
      }
    }
    maps.erase(which);
  }

  // --- events ---

  bool associate(const KEY& r, const KEY& t) {
    if (find(R, r) != NONE || find(T, t) != NONE) {
      return false;
    }
    MAP map;
    map.pairs[R] = {{{create(R, r)}, {}}};
    map.pairs[T] = {{{create(T, t)}, {}}};
    add_map(map);
    return true;
  }

  bool fsm(const std::vector<std::string>& r_names, const std::vector<std::string>& t_names, const TABLE& table) {
    const auto known = [this](SIDE side, const std::vector<std::string>& names) {
      return std::any_of(names.begin(), names.end(), [&](const auto& name) { return signal(side, name) != NONE; });
    };
    if (known(R, r_names) || known(T, t_names)) {
      return false;
    }
    MAP map;
    for (const std::string& name : r_names) {
      map.pairs[R].push_back({{create(R, {true, name, "", ""})}, {}});
    }
    for (const std::string& name : t_names) {
      map.pairs[T].push_back({{create(T, {true, name, "", ""})}, {}});
    }
    map.fsm = true;
    map.table = table;
    add_map(map);
    return true;
  }

  bool replicate(const std::string& name, const std::string& replica_name, LINES& lines) {
    const std::size_t existing = signal(T, name);
    if (existing == NONE) {
      lines.push_back(name + " does not exist in T");
      return false;
    }
    if (signal(T, replica_name) != NONE) {
      lines.push_back(replica_name + " already exists in T");
      return false;
    }
    const std::size_t replica = create(T, {true, replica_name, "", ""});
    MAP* map = map_of(T, existing);
    const PLACE where = map == nullptr ? PLACE() : place(*map, T, existing);
    if (!where.found) {
      return false;
    }
    map->pairs[T].front().group(where.in_n).push_back(replica);
    index[T][replica] = index[T][existing];
    lines.push_back("Replicated register: " + replica_name + " is a replicate of " + name);
    return true;
  }

  bool retime(const std::string& name, LINES& lines) {
    const std::size_t k = signal(T, name);
    if (k == NONE) {
      lines.push_back("Error: Can't find " + name + " in T set");
      return false;
    }
    lines.push_back("Inverter retimed register " + name);
    MAP* map = map_of(T, k);
    if (map == nullptr) {
      return false;
    }
    const PLACE where = place(*map, T, k);
    if (!where.found) {
      lines.emplace_back(kpt_test::NOT_FOUND_TO_RETIME);
      return false;
    }
    PAIR& pair = map->pairs[T].front();
    const bool before = pair.n.empty();
    pair.group(!where.in_n).push_back(k);
    erase_first(pair.group(where.in_n), k);
    if (map->fsm && before != pair.n.empty()) {
      map->table.flip_first_t_column();
    }
    return true;
  }

  bool eliminate(const std::string& name, KPT_ELIM_ENUM reason, LINES& lines) {
    static const std::map<int, std::string> WORDS = {{KPT_STUCK_AT_ZERO, "stuck_at_zero "},
                                                     {KPT_STUCK_AT_ONE, "stuck_at_one "},
                                                     {KPT_NO_FANOUT, "no_fanout "},
                                                     {KPT_ELIMINATED, ""}};
    lines.push_back("Eliminated register " + WORDS.at(reason) + name);
    const std::size_t k = signal(T, name);
    MAP* map = k == NONE ? nullptr : map_of(T, k);
    if (map == nullptr) {
      return false;
    }
    const bool recorded = eliminate_in_map(*map, k, reason, lines);
    index[T].erase(k);
    erased[T].push_back(k);
    if (recorded) {
      registers[T][k].in_set = false;
    }
    return recorded;
  }

  static bool eliminate_in_map(MAP& map, std::size_t k, KPT_ELIM_ENUM reason, LINES& lines) {
    if (!place(map, T, k).found) {
      lines.emplace_back(kpt_test::NOT_FOUND_TO_ELIMINATE);
      return false;
    }
    if (reason == KPT_ELIMINATED) {
      return false;
    }
    std::vector<PAIR>& pairs = map.pairs[T];
    PAIR& pair = pairs.front();
    GROUP others = pair.own();
    for (const std::size_t other : pair.opposite()) {
      others.push_back(other);
    }
    const bool last = std::count(others.begin(), others.end(), k) == static_cast<long>(others.size());
    if (reason == KPT_NO_FANOUT && last && map.fsm && pairs.size() > 1) {
      map.status = KPT_NO_FANOUT;
      if (!map.table.drop_t_column(0)) {
        return false;
      }
      pairs.erase(pairs.begin());
      return true;
    }
    if (!erase_first(pair.n, k)) {
      erase_first(pair.i, k);
    }
    if (reason != KPT_NO_FANOUT || last) {
      map.status = reason;
    }
    if (reason != KPT_NO_FANOUT && last && map.fsm) {
      pairs.erase(pairs.begin());
    }
    return true;
  }

  bool merge(const std::string& kept_name, const std::string& merged_name, LINES& lines) {
    const std::size_t kept = signal(T, kept_name);
    const std::size_t merged = signal(T, merged_name);
    if (kept == NONE || merged == NONE) {
      lines.push_back("Error: Can't find " + (kept == NONE ? kept_name : merged_name) + " in T set");
      return false;
    }
    const bool recorded = merge(kept, merged, lines);
    if (recorded) {
      registers[T][merged].in_set = false;
    }
    lines.push_back("Merged registers: " + kept_name + " <- " + merged_name);
    return recorded;
  }

  bool merge(std::size_t kept, std::size_t merged, LINES& lines) {
    MAP* a = map_of(T, kept);
    MAP* b = map_of(T, merged);
    if (a == nullptr || b == nullptr) {
      return false;
    }
    if (a->fsm && b->fsm) {
      lines.emplace_back(kpt_test::MERGE_OF_TWO_MACHINES);
      return false;
    }
    const PLACE of_kept = place(*a, T, kept);
    const PLACE of_merged = place(*b, T, merged);
    if (!of_kept.found || !of_merged.found) {
      return false;
    }
    const bool opposite = of_kept.in_n != of_merged.in_n;
    if (a == b) {
      if (opposite) {
        lines.emplace_back(kpt_test::MERGE_OF_INVERSES);
        return false;
      }
      ++seen["merge within a map"];
      leave(*b, merged, of_merged.in_n);
      return true;
    }
    if (opposite) {
      for (const SIDE side : {R, T}) {
        for (PAIR& pair : b->pairs[side]) {
          std::swap(pair.n, pair.i);
        }
      }
    }
    const bool left = leave(*b, merged, of_merged.in_n != opposite);
    const bool fsm_a = a->fsm;
    const bool fsm_b = b->fsm;
    ++seen[fsm_a ? "merge into a machine" : fsm_b ? "merge of a machine" : "merge of plain maps"];
    seen["merge of opposite polarities"] += opposite ? 1 : 0;
    unite(*a, *b, lines);
    const std::size_t survivor = index[T].at(kept);
    delete_map(number_of(b), lines);
    enter(survivor);
    entered_anew.push_back(survivor);
    if (!fsm_a && !fsm_b) {
      return left;
    }
    const unsigned long column = fsm_a ? narrow(a->pairs[T].size()) : 2;
    a->table.keep_rows_that_agree(1, column, lines);
    return a->table.drop_t_column(column);
  }

  bool leave(MAP& map, std::size_t k, bool in_n) {
    const bool left = erase_first(map.pairs[T].front().group(in_n), k);
    erased[T].push_back(k);
    return index[T].erase(k) > 0 && left;
  }

  static void unite(MAP& a, const MAP& b, LINES& lines) {
    if (a.fsm || b.fsm) {
      a.table = a.table.times(b.table, lines);
      a.fsm = true;
      for (const SIDE side : {R, T}) {
        a.pairs[side].insert(a.pairs[side].end(), b.pairs[side].begin(), b.pairs[side].end());
      }
      a.status = b.status;
      return;
    }
    bool added = true;
    for (const SIDE side : {R, T}) {
      if (b.pairs[side].empty()) {
        continue;
      }
      const PAIR& from = b.pairs[side].front();
      if (a.pairs[side].empty()) {
        added = added && from.empty();
        continue;
      }
      PAIR& to = a.pairs[side].front();
      to.n.insert(to.n.end(), from.n.begin(), from.n.end());
      to.i.insert(to.i.end(), from.i.begin(), from.i.end());
    }
    if (added) {
      a.status = b.status;
    }
  }

  std::size_t number_of(const MAP* map) const {
    return std::find_if(maps.begin(), maps.end(), [&](const auto& entry) { return &entry.second == map; })->first;
  }

  std::vector<REGISTER> registers[2];
  std::map<std::size_t, MAP> maps;  // by number, in order of creation
  std::map<std::size_t, std::size_t> index[2];
  std::size_t next_map = 0;
  long next_id[2] = {0, 0};
  // What the steps met, in words.
  std::map<std::string, int> seen;
  // For the index checker.
  GROUP erased[2];
  std::vector<std::size_t> entered_anew;
};

// --- the comparison ---

const std::vector<std::string> R_NAMES = {"a", "b", "c", "d", "e", "f", "g", "h", "k", "m", "n", "o"};
const std::vector<std::string> T_NAMES = {"p", "q", "r", "s", "t", "u", "v", "w"};
const std::vector<std::string> TEXTS = {"E", "F"};
constexpr int STEPS_PER_DATABASE = 100;

class DatabaseModel : public testing::Test {
 protected:
  void start_database() {
    m_db = std::make_unique<kpt_test::DATABASE>();
    const std::map<std::string, int> seen = m_model.seen;
    m_model = MODEL();
    m_model.seen = seen;
    m_model.next_id[R] = KPT_KEYPOINTS_DB_IMPL::s_r_id;
    m_model.next_id[T] = KPT_KEYPOINTS_DB_IMPL::s_t_id;
    m_facts = {};
    m_steps = 0;
  }

  unsigned long below(unsigned long bound) { return m_random() % bound; }
  const std::string& any(const std::vector<std::string>& of) { return of[below(of.size())]; }
  KEY any_key(SIDE side, bool is_signal) {
    const std::string& name = any(side == R ? R_NAMES : T_NAMES);
    return is_signal ? KEY{true, name, "", ""} : KEY{false, name, any(TEXTS), any(TEXTS)};
  }

  // Mostly names that are in use, so that more events are accepted than refused.
  std::string known_t_name() {
    std::string name = any(T_NAMES);
    for (int n = 0; n < 4 && m_model.signal(T, name) == NONE && below(20) != 0; ++n) {
      name = any(T_NAMES);
    }
    return name;
  }
  std::string free_name(SIDE side) {
    const std::vector<std::string>& of = side == R ? R_NAMES : T_NAMES;
    std::string name = any(of);
    for (int n = 0; n < 6 && m_model.signal(side, name) != NONE && below(20) != 0; ++n) {
      name = any(of);
    }
    return name;
  }

  void step() {
    if (m_db == nullptr || m_steps++ == STEPS_PER_DATABASE) {
      start_database();
    }
    const unsigned long operation = below(100);
    if (operation < 5) {
      associate("signal to signal", true, true);
    } else if (operation < 9) {
      associate("signal to instance", true, false);
    } else if (operation < 13) {
      associate("instance to signal", false, true);
    } else if (operation < 16) {
      associate("instance to instance", false, false);
    } else if (operation < 24) {
      associate_fsm();
    } else if (operation < 36) {
      const std::string name = known_t_name();
      const std::string replica = free_name(T);
      finish("replication", (*m_db)->set_replicated_registers(name, replica),
             m_model.replicate(name, replica, m_expected));
    } else if (operation < 52) {
      merge();
    } else if (operation < 64) {
      const std::string name = known_t_name();
      finish("retiming", (*m_db)->set_inverter_retimed_register(name), m_model.retime(name, m_expected));
    } else if (operation < 80) {
      eliminate();
    } else if (operation < 84) {
      add_any_map();
    } else if (operation < 86) {
      delete_any_map();
    } else {
      query();
    }
  }

  void finish(const std::string& kind, bool result, bool expected) {
    m_what = kind;
    ASSERT_EQ(result, expected) << kind;
    m_accepted[kind] += result ? 1 : 0;
    ASSERT_EQ(m_lines.take_debug(), m_expected) << kind;
    for (const std::string& line : m_expected) {
      ++m_said[line];
    }
    m_expected.clear();
  }

  void associate(const char* kind, bool r_signal, bool t_signal) {
    KEY r = any_key(R, r_signal);
    KEY t = any_key(T, t_signal);
    for (int n = 0; n < 4 && m_model.find(R, r) != NONE; ++n) {
      r = any_key(R, r_signal);
    }
    for (int n = 0; n < 4 && m_model.find(T, t) != NONE; ++n) {
      t = any_key(T, t_signal);
    }
    const kpt_test::DATABASE& db = *m_db;
    bool result = false;
    if (r_signal && t_signal) {
      result = db->associate_registers_signal_to_signal(r.name, t.name);
    } else if (r_signal) {
      result = db->associate_registers_signal_to_instance(r.name, t.name, t.entity, t.type);
    } else if (t_signal) {
      result = db->associate_registers_instance_to_signal(r.name, r.entity, r.type, t.name);
    } else {
      result = db->associate_registers_instance_to_instance(r.name, r.entity, r.type, t.name, t.entity, t.type);
    }
    finish(kind, result, m_model.associate(r, t));
  }

  void associate_fsm() {
    std::vector<std::string> names[2];
    KPT_STRING_VECTOR given[2];
    for (const SIDE side : {R, T}) {
      const unsigned long count = below(8) == 0 ? 0 : 1 + below(3);
      for (unsigned long n = 0; n < count; ++n) {
        names[side].push_back(free_name(side));
        given[side].emplace_back(names[side].back());
      }
    }
    TABLE table(below(5), below(6) == 0 ? below(4) : names[R].size(), below(6) == 0 ? below(4) : names[T].size());
    KPT_STATE_TABLE client(narrow(table.rows), narrow(table.columns[R]), narrow(table.columns[T]));
    for (const SIDE side : {R, T}) {
      for (unsigned long at = 0; at < table.bits[side].size(); ++at) {
        table.bits[side][at] = below(2) != 0;
        const unsigned short row = narrow(at / table.columns[side] + 1);
        const unsigned short column = narrow(at % table.columns[side] + 1);
        if (side == R) {
          client.set_reference_entry(row, column, table.bits[side][at]);
        } else {
          client.set_transformed_entry(row, column, table.bits[side][at]);
        }
      }
    }
    finish("state machine", (*m_db)->associate_registers_fsm_signals(given[R], given[T], client),
           m_model.fsm(names[R], names[T], table));
  }

  // Tables multiply. Those that are too large to compare are not merged.
  bool too_large(const std::string& kept, const std::string& merged) {
    const std::size_t k = m_model.signal(T, kept);
    const std::size_t m = m_model.signal(T, merged);
    const MAP* a = k == NONE ? nullptr : m_model.map_of(T, k);
    const MAP* b = m == NONE ? nullptr : m_model.map_of(T, m);
    return a != nullptr && b != nullptr && a != b && a->fsm != b->fsm && a->table.rows * b->table.rows > 64;
  }

  void merge() {
    const std::string kept = known_t_name();
    const std::string merged = known_t_name();
    if (too_large(kept, merged)) {
      return;
    }
    finish("merge", (*m_db)->set_merged_registers(kept, merged), m_model.merge(kept, merged, m_expected));
  }

  void eliminate() {
    const std::string name = known_t_name();
    const kpt_test::DATABASE& db = *m_db;
    switch (below(7)) {
      case 0:
      case 1:
        finish("stuck at zero", db->set_eliminated_register_stuck_at_zero(name),
               m_model.eliminate(name, KPT_STUCK_AT_ZERO, m_expected));
        break;
      case 2:
      case 3:
        finish("stuck at one", db->set_eliminated_register_stuck_at_one(name),
               m_model.eliminate(name, KPT_STUCK_AT_ONE, m_expected));
        break;
      case 4:
      case 5:
        finish("no fanout", db->set_eliminated_register_no_fanout(name),
               m_model.eliminate(name, KPT_NO_FANOUT, m_expected));
        break;
      default: {
        const std::size_t k = m_model.signal(T, name);
        m_accepted["without reason"] += k != NONE && m_model.map_of(T, k) != nullptr ? 1 : 0;
        finish("refusal", db->set_eliminated_register(name), m_model.eliminate(name, KPT_ELIMINATED, m_expected));
      }
    }
  }

  // A map as a loaded file or a union may make it: any registers, in any groups,
  // also registers that other maps list or that have left their set.
  void add_any_map() {
    MAP map;
    NI_PAIR_VECTOR real[2];
    for (const SIDE side : {R, T}) {
      const std::vector<REGISTER>& registers = m_model.registers[side];
      const unsigned long pairs = below(6) == 0 ? 0 : 1 + below(2);
      for (unsigned long p = 0; p < pairs; ++p) {
        PAIR pair;
        NI_PAIR real_pair;
        const unsigned long count = registers.empty() ? 0 : below(4);
        for (unsigned long n = 0; n < count; ++n) {
          const std::size_t k = below(registers.size());
          const bool in_n = below(3) != 0;
          pair.group(in_n).push_back(k);
          (in_n ? real_pair.first : real_pair.second).push_back(registers[k].keypoint);
        }
        map.pairs[side].push_back(pair);
        real[side].push_back(real_pair);
      }
    }
    map.status = static_cast<KPT_ELIM_ENUM>(below(5));
    m_model.add_map(map);
    const bool added =
        m_db->impl().add_to_transformation_set(std::move(real[R]), std::move(real[T]), map.status) != nullptr;
    finish("any map", added, true);
  }

  void delete_any_map() {
    if (m_model.maps.empty()) {
      return;
    }
    const std::size_t which = below(m_model.maps.size());
    KPT_TRANSFORMATION_IMPL* real = real_maps()[which];
    m_model.delete_map(std::next(m_model.maps.begin(), static_cast<long>(which))->first, m_expected);
    finish("deletion", m_db->set().delete_map(real), true);
  }

  // --- what a client is told ---

  void query() {
    m_what = "query";
    const SIDE side = below(2) == 0 ? R : T;
    const std::string& name = any(side == R ? R_NAMES : T_NAMES);
    const std::size_t k = m_model.signal(side, name);
    const MAP* map = k == NONE ? nullptr : m_model.map_of(side, k);
    const KPT_REGISTER_TRANSFORMATION handle = side == R ? (*m_db)->get_reference_register_transformation(name)
                                                         : (*m_db)->get_transformed_register_transformation(name);
    ASSERT_EQ(handle.is_null(), map == nullptr) << name;
    if (map == nullptr) {
      return;
    }
    ++m_accepted["query"];
    ASSERT_EQ(handle.has_fsm(), map->fsm);
    ASSERT_EQ(handle.is_stuck_at_zero(), map->status == KPT_STUCK_AT_ZERO);
    ASSERT_EQ(handle.is_stuck_at_one(), map->status == KPT_STUCK_AT_ONE);
    ASSERT_EQ(handle.has_no_fanout(), map->status == KPT_NO_FANOUT);
    ASSERT_EQ(handle.get_number_of_states(), map->fsm ? map->table.rows : 2);
    ASSERT_EQ(handle.get_state_reference_size(), map->pairs[R].size());
    ASSERT_EQ(handle.get_state_transformed_size(), map->pairs[T].size());
    ASSERT_EQ(m_lines.take_debug(), LINES());
    const auto r_size = static_cast<unsigned short>(map->pairs[R].size());
    const auto t_size = static_cast<unsigned short>(map->pairs[T].size());
    for (unsigned short at = 0; at <= r_size; ++at) {
      query_index(R, *map, at, handle.get_reference(at), handle.get_reference_equivalents(at),
                  handle.get_reference_inverted_equivalents(at));
    }
    for (unsigned short at = 0; at <= t_size; ++at) {
      query_index(T, *map, at, handle.get_transformed(at), handle.get_transformed_equivalents(at),
                  handle.get_transformed_inverted_equivalents(at));
    }
    for (unsigned short r = 0; r <= r_size; ++r) {
      for (unsigned short t = 0; t <= t_size; ++t) {
        ASSERT_EQ(handle.is_positive_unate(r, t), unate(*map, r, t, true));
        ASSERT_EQ(handle.is_negative_unate(r, t), unate(*map, r, t, false));
      }
    }
  }

  void query_index(SIDE side, const MAP& map, unsigned long at, const KPT_REGISTER_KEYPOINT& representative,
                   const KPT_REGISTER_KEYPOINT_LIST& equivalents, const KPT_REGISTER_KEYPOINT_LIST& inverted) {
    const PAIR pair = at < map.pairs[side].size() ? map.pairs[side][at] : PAIR();
    if (pair.empty()) {
      m_expected.insert(m_expected.end(), 2, side == R ? kpt_test::EMPTY_R_SIDE : kpt_test::EMPTY_T_SIDE);
    }
    ASSERT_EQ(m_lines.take_debug(), m_expected);
    m_expected.clear();
    ASSERT_EQ(representative.is_null(), pair.empty());
    if (!pair.empty()) {
      ASSERT_EQ(text(representative), text(side, pair.own().front()));
      ASSERT_EQ(texts(equivalents), texts_without(side, pair.own(), pair.own().front()));
      ASSERT_EQ(texts(inverted), texts_without(side, pair.opposite(), pair.own().front()));
    }
  }

  static bool unate(const MAP& map, unsigned long r, unsigned long t, bool positive) {
    const PAIR of_r = r < map.pairs[R].size() ? map.pairs[R][r] : PAIR();
    const PAIR of_t = t < map.pairs[T].size() ? map.pairs[T][t] : PAIR();
    if (of_r.empty() || of_t.empty() || !MODEL::place(map, R, of_r.own().front()).found ||
        !MODEL::place(map, T, of_t.own().front()).found) {
      return false;
    }
    return map.fsm || positive == (of_r.n.empty() == of_t.n.empty());
  }

  static std::string text(const KEY& key) {
    return key.name + "/" + key.entity + "/" + key.type + (key.signal ? "" : "!");
  }
  std::string text(SIDE side, std::size_t k) const { return text(m_model.registers[side][k].key); }
  static std::string text(const KPT_REGISTER_KEYPOINT& handle) {
    return text(KEY{handle.is_signal(), std::string(handle.get_name()), std::string(handle.get_entity_name()),
                    std::string(handle.get_type())});
  }
  static LINES texts(const KPT_REGISTER_KEYPOINT_LIST& handles) {
    LINES all;
    for (const KPT_REGISTER_KEYPOINT& handle : handles) {
      all.push_back(text(handle));
    }
    return all;
  }
  LINES texts_without(SIDE side, const GROUP& group, std::size_t representative) const {
    LINES all;
    for (const std::size_t k : group) {
      if (k != representative) {
        all.push_back(text(side, k));
      }
    }
    return all;
  }

  // --- the whole database ---

  std::vector<KPT_TRANSFORMATION_IMPL*> real_maps() const {
    std::vector<KPT_TRANSFORMATION_IMPL*> maps;
    for (KPT_TRANSFORMATION_IMPL* map : m_db->set().get_list_of_register_transformations()) {
      maps.push_back(map);
    }
    return maps;
  }

  void check() {
    learn_keypoints();
    check_registers();
    if (HasFatalFailure()) {
      return;
    }
    check_maps();
    if (HasFatalFailure()) {
      return;
    }
    check_indexes();
    ASSERT_EQ(m_lines.take_debug(), LINES()) << m_what;
  }

  // The keypoint of a new register: the one that its set finds or, when the same
  // event made another one of its name, the one that the newest map lists.
  void learn_keypoints() {
    const std::vector<KPT_TRANSFORMATION_IMPL*> maps = real_maps();
    for (const SIDE side : {R, T}) {
      KPT_KEYPOINT_SET_IMPL& set = side == R ? *m_db->impl().get_reference_set() : *m_db->impl().get_transformed_set();
      for (auto it = m_model.registers[side].rbegin(); it != m_model.registers[side].rend(); ++it) {
        if (it->keypoint != nullptr) {
          break;
        }
        KPT_KEYPOINT* keypoint = it->key.signal ? set.get_register(it->key.name)
                                                : set.get_register(it->key.name, it->key.entity, it->key.type);
        if (keypoint != nullptr && keypoint->get_kpid() == it->id) {
          it->keypoint = keypoint;
          continue;
        }
        for (const NI_PAIR& pair : side == R ? maps.back()->r_vec() : maps.back()->t_vec()) {
          for (KPT_KEYPOINT* listed : pair.first) {
            if (listed->get_kpid() == it->id) {
              it->keypoint = listed;
            }
          }
        }
        ASSERT_NE(it->keypoint, nullptr) << m_what;
      }
    }
  }

  void check_registers() {
    for (const SIDE side : {R, T}) {
      LINES expected;
      std::vector<long> ids;
      for (const bool is_signal : {true, false}) {
        for (const REGISTER& r : m_model.registers[side]) {
          if (r.in_set && r.key.signal == is_signal) {
            expected.push_back(text(r.key));
            ids.push_back(r.id);
          }
        }
      }
      const KPT_KEYPOINT_SET set = side == R ? (*m_db)->get_reference_set() : (*m_db)->get_transformed_set();
      ASSERT_EQ(texts(set.get_list_of_registers()), expected) << m_what;
      std::vector<long> real_ids;
      for (const KPT_KEYPOINT* keypoint :
           (side == R ? m_db->impl().get_reference_set() : m_db->impl().get_transformed_set())
               ->get_list_of_keypoints()) {
        real_ids.push_back(keypoint->get_kpid());
      }
      ASSERT_EQ(real_ids, ids) << m_what;
      ASSERT_EQ(side == R ? KPT_KEYPOINTS_DB_IMPL::s_r_id : KPT_KEYPOINTS_DB_IMPL::s_t_id, m_model.next_id[side]);
    }
  }

  void check_group(SIDE side, const KPT_KEYPOINT_LIST& real, const GROUP& group) {
    ASSERT_EQ(real.size(), group.size()) << m_what;
    auto keypoint = real.begin();
    for (const std::size_t k : group) {
      ASSERT_EQ(*keypoint, m_model.registers[side][k].keypoint) << m_what;
      ++keypoint;
    }
  }

  void check_maps() {
    const std::vector<KPT_TRANSFORMATION_IMPL*> real = real_maps();
    ASSERT_EQ(real.size(), m_model.maps.size()) << m_what;
    auto map = m_model.maps.begin();
    for (const KPT_TRANSFORMATION_IMPL* it : real) {
      const MAP& expected = map->second;
      ASSERT_EQ(it->map_has_fsm_transformation(), expected.fsm) << m_what;
      ASSERT_EQ(it->get_elim_status(), expected.status) << m_what;
      for (const SIDE side : {R, T}) {
        const NI_PAIR_VECTOR& pairs = side == R ? it->r_vec() : it->t_vec();
        ASSERT_EQ(pairs.size(), expected.pairs[side].size()) << m_what;
        for (std::size_t p = 0; p < pairs.size(); ++p) {
          check_group(side, pairs[p].first, expected.pairs[side][p].n);
          check_group(side, pairs[p].second, expected.pairs[side][p].i);
        }
      }
      if (expected.fsm) {
        check_table(it->state_table(), expected.table);
      }
      if (HasFatalFailure()) {
        return;
      }
      ++map;
    }
  }

  void check_table(const KPT_STATE_TABLE_IMPL& real, const TABLE& table) {
    ASSERT_EQ(real.get_num_states(), table.rows) << m_what;
    ASSERT_EQ(real.get_num_reference_registers(), table.columns[R]) << m_what;
    ASSERT_EQ(real.get_num_transformed_registers(), table.columns[T]) << m_what;
    for (const SIDE side : {R, T}) {
      for (std::size_t at = 0; at < table.bits[side].size(); ++at) {
        ASSERT_EQ(real.get_entry(side == R ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET,
                                 narrow(at / table.columns[side] + 1), narrow(at % table.columns[side] + 1)),
                  table.bits[side][at] ? 1 : 0)
            << m_what;
      }
    }
  }

  void check_indexes() {
    const std::vector<KPT_TRANSFORMATION_IMPL*> real = real_maps();
    std::map<const MAP*, const KPT_TRANSFORMATION_IMPL*> pairing = {{nullptr, nullptr}};
    auto next = real.begin();
    for (const auto& entry : m_model.maps) {
      pairing[&entry.second] = *next++;
    }
    const KPT_TRANSFORMATION_SET_IMPL& set = m_db->set();
    for (std::size_t k = 0; k < m_model.registers[R].size(); ++k) {
      ASSERT_EQ(set.get_map_of_r_keypoint(m_model.registers[R][k].keypoint), pairing.at(m_model.map_of(R, k)))
          << m_what << ": " << text(R, k);
    }
    for (std::size_t k = 0; k < m_model.registers[T].size(); ++k) {
      ASSERT_EQ(set.get_map_of_t_keypoint(m_model.registers[T][k].keypoint), pairing.at(m_model.map_of(T, k)))
          << m_what << ": " << text(T, k);
    }
    ASSERT_EQ(set.index_size(KPT_REFERENCE_SET), m_model.index[R].size()) << m_what;
    ASSERT_EQ(set.index_size(KPT_TRANSFORMED_SET), m_model.index[T].size()) << m_what;
    check_names();

    for (const SIDE side : {R, T}) {
      kpt_test::INDEX_FACTS& facts = side == R ? m_facts.r : m_facts.t;
      for (const std::size_t k : m_model.erased[side]) {
        facts.erased.insert(m_model.registers[side][k].keypoint);
      }
      m_model.erased[side].clear();
      for (const std::size_t survivor : m_model.entered_anew) {
        for (const PAIR& pair : m_model.maps.at(survivor).pairs[side]) {
          for (const GROUP* group : {&pair.n, &pair.i}) {
            for (const std::size_t k : *group) {
              facts.repointed.insert(m_model.registers[side][k].keypoint);
            }
          }
        }
      }
    }
    m_model.entered_anew.clear();
    ASSERT_EQ(kpt_test::index_differences(m_db->impl(), m_facts), LINES()) << m_what;
  }

  void check_names() {
    for (const std::string& name : R_NAMES) {
      const std::size_t k = m_model.signal(R, name);
      ASSERT_EQ(m_db->r_map(name) == nullptr, k == NONE || m_model.map_of(R, k) == nullptr) << m_what << ": " << name;
    }
    for (const std::string& name : T_NAMES) {
      const std::size_t k = m_model.signal(T, name);
      ASSERT_EQ(m_db->t_map(name) == nullptr, k == NONE || m_model.map_of(T, k) == nullptr) << m_what << ": " << name;
    }
  }

  std::mt19937 m_random{kpt_test::seed()};
  kpt_test::HOST_LINES m_lines;
  LINES m_expected;
  std::unique_ptr<kpt_test::DATABASE> m_db;
  MODEL m_model;
  kpt_test::EXPLANATIONS m_facts;
  int m_steps = 0;
  std::string m_what;
  std::map<std::string, int> m_accepted;
  std::map<std::string, int> m_said;
};

TEST_F(DatabaseModel, EveryStepIsThatOfAPlainDatabase) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  const int steps = kpt_test::steps(100000);
  for (int n = 0; n < steps; ++n) {
    step();
    if (HasFatalFailure()) {
      FAIL() << "step " << n;
    }
    check();
    if (HasFatalFailure()) {
      FAIL() << "step " << n << ", after " << m_what;
    }
  }
  for (const std::map<std::string, int>* counts : {&m_accepted, &m_model.seen}) {
    for (const auto& [kind, count] : *counts) {
      std::cout << kind << ": " << count << "\n";
    }
  }
  if (steps < 100000) {
    return;
  }
  for (const char* kind : {"signal to signal", "signal to instance", "instance to signal", "instance to instance",
                           "state machine", "replication", "merge", "retiming", "stuck at zero", "stuck at one",
                           "no fanout", "without reason", "any map", "deletion", "query"}) {
    EXPECT_GE(m_accepted[kind], 1000) << kind;
  }
  for (const char* kind : {"merge within a map", "merge of plain maps", "merge into a machine", "merge of a machine",
                           "merge of opposite polarities"}) {
    EXPECT_GE(m_model.seen[kind], 100) << kind;
  }
  for (const char* line : {kpt_test::MERGE_OF_TWO_MACHINES, kpt_test::MERGE_OF_INVERSES, kpt_test::NOT_FOUND_TO_RETIME,
                           kpt_test::NOT_FOUND_TO_ELIMINATE, kpt_test::EMPTY_R_SIDE, kpt_test::EMPTY_T_SIDE,
                           kpt_test::REFUSED_READ, kpt_test::REFUSED_R_WRITE, kpt_test::REFUSED_T_WRITE}) {
    EXPECT_GE(m_said[line], 10) << line;
  }
}

}  // namespace
