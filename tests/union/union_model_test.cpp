// Random databases united, and the outcome compared with a plain
// re-implementation over standard containers: maps, indexes, registers, ids,
// results and every line told to the host.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <utility>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "host/kpt_host.h"
#include "tests/support/seed.h"
#include "tests/union/random_stage.h"
#include "tests/union/stages.h"

namespace {

using namespace kpt_test;  // NOLINT(google-build-using-namespace): the lines and the stages

// ---- The model ----

struct KP {
  long id = 0;
  std::string name;
  bool is_signal = true;
  std::string entity;
  std::string type;
  std::string key;  // the name it was added under
  bool retired = false;
};

using GROUP = std::vector<KP*>;
using SIDE = std::vector<std::pair<GROUP, GROUP>>;

struct MAP {
  SIDE sides[2];
  bool fsm = false;
  int elim = 0;
  std::shared_ptr<KPT_STATE_TABLE_IMPL> table = nullptr;  // none: that of a register kept as it is
  bool alive = true;
};

std::string text(const KP* k) { return k == nullptr ? "null" : k->name + "#" + std::to_string(k->id); }

template <class GET_TEXT, class GROUP_LIST>
std::string join(const GROUP_LIST& group, GET_TEXT get_text) {
  std::string joined;
  for (auto* k : group) {
    joined += get_text(k) + " ";
  }
  return joined;
}

struct MODEL_SET {
  std::vector<KP*> all;

  std::vector<KP*> walk() const {
    std::vector<KP*> order;
    for (const bool signals : {true, false}) {
      std::copy_if(all.begin(), all.end(), std::back_inserter(order),
                   [&](const KP* k) { return !k->retired && k->is_signal == signals; });
    }
    return order;
  }
  KP* find(bool is_signal, const std::string& key, const std::string& type) const {
    const auto found = std::find_if(all.begin(), all.end(), [&](const KP* k) {
      return !k->retired && k->is_signal == is_signal && k->key == key && (is_signal || k->type == type);
    });
    return found == all.end() ? nullptr : *found;
  }
  KP* find_namesake(const KP& k) const { return find(k.is_signal, k.name, k.type); }
};

struct MODEL {
  MODEL_SET sets[2];
  std::deque<MAP> maps;
  std::map<const KP*, MAP*> index[2];
  std::deque<KP> keypoints;

  KP* add(int side, const KP& like, long id) {
    if (KP* earlier = sets[side].find_namesake(like)) {
      earlier->retired = true;
    }
    keypoints.push_back({id, like.name, like.is_signal, like.entity, like.type, like.name, false});
    sets[side].all.push_back(&keypoints.back());
    return &keypoints.back();
  }
  MAP* map_of(int side, const KP* k) const {
    const auto found = index[side].find(k);
    return k == nullptr || found == index[side].end() || !found->second->alive ? nullptr : found->second;
  }
  void enter(int side, const SIDE& listed, MAP* map) {
    for (const auto& [n, i] : listed) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* k : *group) {
          if (k != nullptr) {
            index[side][k] = map;
          }
        }
      }
    }
  }
  MAP* add_map(MAP map) {
    maps.push_back(std::move(map));
    for (const int side : {0, 1}) {
      enter(side, maps.back().sides[side], &maps.back());
    }
    return &maps.back();
  }
};

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
      // A deletion by the name of another may have taken it along.
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
    // The walk is told to the host.
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

  // `earlier` ends in the register that `later` starts from.
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
      // The empty index is told before its registers, of which there are none.
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

// ---- From a database to the model, and both to text ----

class IMPORT {
 public:
  IMPORT(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed, MODEL& to) : m_renamed(renamed), model(to) {
    const KPT_KEYPOINT_SET_IMPL* const sets[2] = {db.get_reference_set(), db.get_transformed_set()};
    for (const int side : {0, 1}) {
      for (const KPT_KEYPOINT* k : sets[side]->get_list_of_keypoints()) {
        model.sets[side].all.push_back(known(k, false));
      }
    }
    KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
    std::map<const KPT_TRANSFORMATION_IMPL*, MAP*> copies;
    for (const KPT_TRANSFORMATION_IMPL* map : maps.get_list_of_register_transformations()) {
      model.maps.push_back({{import_side(map->r_vec()), import_side(map->t_vec())},
                            map->map_has_fsm_transformation(),
                            map->get_elim_status(),
                            std::make_shared<KPT_STATE_TABLE_IMPL>(map->get_register_state_table())});
      copies[map] = &model.maps.back();
    }
    for (const auto& [k, copy] : m_known) {
      for (const int side : {0, 1}) {
        const KPT_TRANSFORMATION_IMPL* map = side == 0 ? maps.get_map_of_r_keypoint(k) : maps.get_map_of_t_keypoint(k);
        if (map != nullptr) {
          model.index[side][copy] = copies.at(map);
        }
      }
    }
  }

 private:
  KP* known(const KPT_KEYPOINT* keypoint, bool retired) {
    if (keypoint == nullptr) {
      return nullptr;
    }
    KP*& k = m_known[keypoint];
    if (k == nullptr) {
      const auto& named = static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint);
      const auto key = m_renamed.find(keypoint);
      const std::string name(named.get_element_name());
      model.keypoints.push_back({named.get_kpid(), name, named.register_is_signal(),
                                 std::string(named.get_entity_name()), std::string(named.get_register_type()),
                                 key == m_renamed.end() ? name : key->second, retired});
      k = &model.keypoints.back();
    }
    return k;
  }
  GROUP import_group(const KPT_KEYPOINT_LIST& group) {
    GROUP result;
    for (const KPT_KEYPOINT* k : group) {
      result.push_back(known(k, true));
    }
    return result;
  }
  SIDE import_side(const NI_PAIR_VECTOR& side) {
    SIDE result;
    for (const NI_PAIR& pair : side) {
      result.emplace_back(import_group(pair.first), import_group(pair.second));
    }
    return result;
  }

  const RENAMED& m_renamed;
  MODEL& model;
  std::map<const KPT_KEYPOINT*, KP*> m_known;
};

std::string line_of(const MAP& map) {
  std::string line = map.fsm ? "fsm " : "";
  line += "status " + std::to_string(map.elim) + " ";
  for (const SIDE& side : map.sides) {
    for (const auto& [n, i] : side) {
      line += join(n, text) + "~ " + join(i, text) + "| ";
    }
    line += "-> ";
  }
  if (map.fsm) {
    for (const std::string& state : states_of(*map.table)) {
      line += state + ", ";
    }
  }
  return line;
}

LINES describe(const MODEL& model) {
  LINES lines;
  for (const MAP& map : model.maps) {
    if (map.alive) {
      lines.push_back(line_of(map));
    }
  }
  for (const int side : {0, 1}) {
    for (const KP* k : model.sets[side].walk()) {
      const MAP* map = model.map_of(side, k);
      lines.push_back(text(k) + k->entity + k->type + " leads to " + (map == nullptr ? "none" : line_of(*map)));
    }
  }
  return lines;
}

LINES describe(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed) {
  MODEL model;
  const IMPORT import(db, renamed, model);
  return describe(model);
}

TEST(UnionModel, AgreesWithAPlainImplementationOnRandomStages) {
  std::mt19937 random(seed());
  HOST_LINES lines;
  int failed_unions = 0;
  const int rounds = steps(3000);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const bool copy_leftovers = random() % 4 == 0;
    kpt_host::set_switch(COPY_LEFTOVERS, copy_leftovers);
    set_next_ids(0, 0);
    RENAMED renamed;
    KPT_KEYPOINTS_DB_IMPL db1("first");
    RECORDER(db1, random, 'a', 'b', renamed).record_anything();
    // A third stage goes on from whatever the first union left.
    for (const char netlist : {'b', 'c'}) {
      KPT_KEYPOINTS_DB_IMPL db2("second");
      RECORDER(db2, random, netlist, static_cast<char>(netlist + 1), renamed).record_anything();
      MODEL model1;
      MODEL model2;
      const IMPORT import1(db1, renamed, model1);
      const IMPORT import2(db2, renamed, model2);
      MODEL_UNION expected(model1, model2, copy_leftovers);
      expected.next_r_id = KPT_KEYPOINTS_DB_IMPL::s_r_id;
      expected.next_t_id = KPT_KEYPOINTS_DB_IMPL::s_t_id;
      const LINES before = describe(db2, renamed);
      const bool expected_result = expected.run();
      lines.clear();
      const bool result = db1.unite_db(db2);
      failed_unions += result ? 0 : 1;
      ASSERT_EQ(result, expected_result);
      ASSERT_EQ(masked(lines.debug()), expected.lines);
      ASSERT_EQ(lines.internal_errors().size(), static_cast<std::size_t>(expected.internal_errors));
      ASSERT_EQ(describe(db1, renamed), describe(model1));
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, expected.next_r_id);
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, expected.next_t_id);
      ASSERT_EQ(describe(db2, renamed), before);
    }
  }
  kpt_host::clear_switches();
  std::cout << rounds << " rounds of three stages, " << failed_unions << " unions that failed\n";
}

}  // namespace
