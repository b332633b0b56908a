// The union of two databases as a plain walk over plain models, with which the
// library is compared.
//
// Ownership: the union refers to the caller's models.
#ifndef TESTS_UNION_PLAIN_UNION_H
#define TESTS_UNION_PLAIN_UNION_H

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/union/plain_model.h"

namespace kpt_test::plain {

class MODEL_UNION {
 public:
  MODEL_UNION(MODEL& one, const MODEL& two, bool copy_leftovers)
      : db1(one), source(two), m_copy_leftovers(copy_leftovers) {}

  bool run() {
    say("TIME: Start unite at : #");
    complete();
    for (KP* k : source.sets[1].walk()) {
      if (db1.sets[1].find_namesake(*k) == nullptr) {
        db1.add(1, *k, ++next_t_id);
      }
    }
    translate();
    unite_maps();
    const bool cleaned = ok && cleanup(0) && cleanup(1);
    say("TIME: Unite time: #");
    say("TIME: End unite at : #");
    return cleaned;
  }

  LINES lines;
  int internal_errors = 0;
  long next_r_id = 0;
  long next_t_id = 0;

 private:
  void say(const std::string& line) { lines.push_back(line); }

  // -- registers --

  static bool stands_in_n_group(const MAP& map, int side, const KP* k) {
    return !map.sides[side].empty() && std::count(map.sides[side][0].first.begin(), map.sides[side][0].first.end(), k);
  }
  static bool stands_at_first_index(const MAP& map, int side, const KP* k) {
    return stands_in_n_group(map, side, k) ||
           (!map.sides[side].empty() &&
            std::count(map.sides[side][0].second.begin(), map.sides[side][0].second.end(), k));
  }
  static void swap_side(MAP& map, int side) {
    for (auto& [n, i] : map.sides[side]) {
      std::swap(n, i);
    }
  }

  void complete() {
    bool result = true;
    KP* t = nullptr;
    for (KP* k : source.sets[0].walk()) {
      if (db1.sets[1].find_namesake(*k) == nullptr) {
        result = db1.sets[0].find_namesake(*k) == nullptr;
        t = nullptr;
        if (result) {
          KP* r = db1.add(0, *k, next_r_id++);
          t = db1.add(1, *k, next_t_id++);
          db1.add_map({{{{{r}, {}}}, {{{t}, {}}}}});
        }
      }
      if (t == nullptr || !result) {
        continue;
      }
      MAP* map1 = db1.map_of(1, t);
      const MAP* map2 = source.map_of(0, k);
      if (map1 != nullptr && map2 != nullptr && stands_in_n_group(*map1, 1, t) != stands_in_n_group(*map2, 0, k)) {
        swap_side(*map1, 0);
        swap_side(*map1, 1);
      }
    }
  }

  void translate() {
    for (const MAP& map : source.maps) {
      if (!map.alive) {
        continue;
      }
      MAP copy = map;
      for (SIDE& side : copy.sides) {
        for (auto& [n, i] : side) {
          for (GROUP* group : {&n, &i}) {
            GROUP namesakes;
            for (const KP* k : *group) {
              if (KP* namesake = k == nullptr ? nullptr : db1.sets[1].find_namesake(*k)) {
                namesakes.push_back(namesake);
              }
            }
            *group = namesakes;
          }
        }
      }
      if (!copy.fsm) {
        copy.table = nullptr;
      }
      db2.add_map(copy);
    }
  }

  bool cleanup(int side) {
    bool result = true;
    for (KP* k : db1.sets[side].walk()) {
      // The deletion of another register by its name may have deleted this one.
      if (k->retired || db1.map_of(side, k) != nullptr) {
        continue;
      }
      KP* named = db1.sets[side].find_namesake(*k);
      result = named != nullptr;
      if (result) {
        named->retired = true;
      }
    }
    return result;
  }

  // -- maps --

  void report_empty(int side) { say(side == 0 ? EMPTY_R : EMPTY_T); }

  // The representative, its equivalents, its inverted equivalents.
  GROUP equivalents(const MAP& map, int side, std::size_t at, bool inverted) {
    if (at >= map.sides[side].size() || (map.sides[side][at].first.empty() && map.sides[side][at].second.empty())) {
      report_empty(side);
      return {};
    }
    const auto& [n, i] = map.sides[side][at];
    const GROUP& own = n.empty() ? i : n;
    GROUP result;
    for (KP* k : inverted ? (n.empty() ? n : i) : own) {
      if (k != own.front()) {
        result.push_back(k);
      }
    }
    return result;
  }
  static KP* representative(const MAP& map, int side, std::size_t at) {
    if (at >= map.sides[side].size()) {
      return nullptr;
    }
    const auto& [n, i] = map.sides[side][at];
    const GROUP& own = n.empty() ? i : n;
    return own.empty() ? nullptr : own.front();
  }
  GROUP registers_at(const MAP& map, int side, std::size_t at) {
    GROUP result;
    const auto& [n, i] = map.sides[side][at];
    if (!n.empty() || !i.empty()) {
      result.push_back(representative(map, side, at));
    }
    for (const bool inverted : {false, true}) {
      const GROUP others = equivalents(map, side, at, inverted);
      result.insert(result.end(), others.begin(), others.end());
    }
    return result;
  }

  void delete_map(MODEL& db, MAP* map) {
    for (const int side : {0, 1}) {
      for (std::size_t at = 0; at < map->sides[side].size(); ++at) {
        for (const KP* k : registers_at(*map, side, at)) {
          db.index[side].erase(k);
        }
      }
    }
    map->alive = false;
  }
  void copy_into_db1(const MAP& map) {
    MAP* copy = db1.add_map(map);
    // The walk issues debug lines.
    for (const int side : {0, 1}) {
      for (std::size_t at = 0; at < copy->sides[side].size(); ++at) {
        registers_at(*copy, side, at);
      }
    }
  }

  static std::shared_ptr<KPT_STATE_TABLE_IMPL> table_of(const MAP& map) {
    return map.table != nullptr ? map.table : std::make_shared<KPT_STATE_TABLE_IMPL>(make_table({"0 0", "1 1"}));
  }

  bool make_union(MAP& map, const MAP& other) {
    if (map.fsm && other.fsm) {
      say("Cannot unite 2 FSM transformations");
      return false;
    }
    if (map.fsm || other.fsm) {
      map.table = std::make_shared<KPT_STATE_TABLE_IMPL>(table_of(map)->cross_product_table(*table_of(other)));
      map.fsm = true;
      for (const int side : {0, 1}) {
        map.sides[side].insert(map.sides[side].end(), other.sides[side].begin(), other.sides[side].end());
      }
      map.elim = other.elim;
      return true;
    }
    bool added = true;
    for (const int side : {0, 1}) {
      if (other.sides[side].empty()) {
        continue;
      }
      const auto& [n, i] = other.sides[side][0];
      if (map.sides[side].empty()) {
        added = added && n.empty() && i.empty();
        continue;
      }
      map.sides[side][0].first.insert(map.sides[side][0].first.end(), n.begin(), n.end());
      map.sides[side][0].second.insert(map.sides[side][0].second.end(), i.begin(), i.end());
    }
    if (added) {
      map.elim = other.elim;
    }
    return added;
  }

  // `earlier` ends in the register from which `later` starts.
  static void align(const MAP& earlier, MAP& later, const KP* k) {
    if (stands_at_first_index(earlier, 1, k) && stands_at_first_index(later, 0, k) &&
        stands_in_n_group(earlier, 1, k) != stands_in_n_group(later, 0, k)) {
      swap_side(later, 0);
      swap_side(later, 1);
    }
  }

  void fuse(MODEL& db, const std::vector<MAP*>& candidates) {
    std::vector<MAP*> ordered;
    for (MAP& map : db.maps) {
      if (std::count(candidates.begin(), candidates.end(), &map) > 0) {
        ordered.push_back(&map);
      }
    }
    if (ordered.size() < 2) {
      return;
    }
    for (std::size_t k = 1; k < ordered.size(); ++k) {
      if (ok) {
        ok = make_union(*ordered[0], *ordered[k]);
      }
      delete_map(db, ordered[k]);
    }
    db.enter(0, ordered[0]->sides[0], ordered[0]);
    db.enter(1, ordered[0]->sides[1], ordered[0]);
  }

  void unite_maps() {
    for (std::size_t m = 0; ok && m < db1.maps.size(); ++m) {
      MAP& m1 = db1.maps[m];
      if (!m1.alive || m1.fsm) {
        continue;
      }
      for (std::size_t at = 0; ok && at < m1.sides[1].size(); ++at) {
        std::vector<MAP*> candidates;
        for (const KP* k : registers_at(m1, 1, at)) {
          MAP* m2 = db2.map_of(0, k);
          if (m2 != nullptr && !m2->fsm) {
            align(m1, *m2, k);
            candidates.push_back(m2);
          }
        }
        fuse(db2, candidates);
      }
    }
    say(LOOP_1);
    for (std::size_t m = 0; ok && m < db2.maps.size(); ++m) {
      MAP& m2 = db2.maps[m];
      if (!m2.alive) {
        continue;
      }
      for (std::size_t at = 0; ok && at < m2.sides[0].size(); ++at) {
        std::vector<MAP*> candidates;
        for (const KP* k : registers_at(m2, 0, at)) {
          MAP* m1 = db1.map_of(1, k);
          if (m1 == nullptr) {
            continue;
          }
          if (m2.fsm) {
            delete_map(db1, m1);
          } else {
            align(*m1, m2, k);
            candidates.push_back(m1);
          }
        }
        fuse(db1, candidates);
      }
      if (m2.fsm) {
        copy_into_db1(m2);
      }
    }
    say(LOOP_2);
    for (std::size_t m = 0; ok && m < db1.maps.size(); ++m) {
      if (db1.maps[m].alive && !db1.maps[m].fsm && db1.maps[m].elim == 0) {
        compose(db1.maps[m]);
      }
    }
    say(LOOP_3);
    if (m_copy_leftovers) {
      for (const MAP& map : db2.maps) {
        if (map.alive) {
          ++internal_errors;
          copy_into_db1(map);
        }
      }
    }
  }

  static std::string name_of(const KP* k) { return k == nullptr ? "" : k->name; }

  MAP* successor_of(const MAP& m1) {
    const KP* first = representative(m1, 1, 0);
    if (MAP* m2 = db2.map_of(0, first)) {
      return m2;
    }
    say(not_in_db2(name_of(first)));
    for (const bool inverted : {false, true}) {
      for (const KP* k : equivalents(m1, 1, 0, inverted)) {
        if (MAP* m2 = db2.map_of(0, k)) {
          say("Found keypoint " + name_of(k) + " in db2's R set");
          return m2;
        }
      }
    }
    say(NO_SUCCESSOR);
    return nullptr;
  }

  static bool names(const SIDE& side, const KP* k) {
    for (const auto& [n, i] : side) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* other : *group) {
          if (k != nullptr && other != nullptr && k->is_signal == other->is_signal && k->name == other->name &&
              k->entity == other->entity && k->type == other->type) {
            return true;
          }
        }
      }
    }
    return false;
  }
  static bool matches(const MAP& m1, const MAP& m2) {
    if (m1.sides[1].size() != m2.sides[0].size()) {
      return false;
    }
    for (const auto& [n, i] : m1.sides[1]) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* k : *group) {
          if (!names(m2.sides[0], k)) {
            return false;
          }
        }
      }
    }
    return true;
  }

  void print_side(const MAP& map, int side) {
    for (std::size_t at = 0; at < map.sides[side].size(); ++at) {
      // The line about the empty index comes before its registers, of which there are none.
      for (const KP* k : registers_at(map, side, at)) {
        say("  " + std::to_string(at) + ": " + name_of(k));
      }
    }
  }

  void compose(MAP& m1) {
    MAP* m2 = successor_of(m1);
    if (m2 == nullptr || m2->fsm) {
      return;
    }
    if (!matches(m1, *m2)) {
      say(UNMATCHED);
      say("T set of db1:");
      print_side(m1, 1);
      say("R set of db2:");
      print_side(*m2, 0);
    }
    for (const auto& [n, i] : m1.sides[1]) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* k : *group) {
          db1.index[1].erase(k);
        }
      }
    }
    m1.sides[1] = m2->sides[1];
    m1.elim = m2->elim;
    for (const auto& [n, i] : m1.sides[1]) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* k : *group) {
          if (db1.map_of(1, k) == nullptr) {
            db1.index[1][k] = &m1;
          }
        }
      }
    }
    db1.enter(0, m2->sides[0], &m1);
    delete_map(db2, m2);
  }

  MODEL& db1;
  const MODEL& source;
  MODEL db2;  // the translation
  bool m_copy_leftovers;
  bool ok = true;
};

}  // namespace kpt_test::plain

#endif
