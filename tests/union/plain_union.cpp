#include "tests/union/plain_union.h"

#include "tests/union/stages.h"

namespace kpt_test::plain {

bool UNION::run() {
  say("TIME: Start unite at : #");
  complete();
  add_missing_registers();
  translate();
  unite_maps();
  const bool cleaned = ok && cleanup(R) && cleanup(T);
  say("TIME: Unite time: #");
  say("TIME: End unite at : #");
  return cleaned;
}

// --- registers ---

// The first database gets pass-through maps for registers that only the second
// has. The register that was added last is aligned again for each later register
// that the first database has.
void UNION::complete() {
  bool result = true;
  std::size_t t = NONE;
  for (const std::size_t k : source.walk(R)) {
    const KEY& key = source.registers[k].key;
    if (db1.find(T, key) == NONE) {
      result = db1.find(R, key) == NONE;
      t = NONE;
      if (result) {
        const std::size_t r = db1.add(R, key);
        t = db1.add(T, key);
        MAP kept;
        kept.sides[R] = {{{r}, {}}};
        kept.sides[T] = {{{t}, {}}};
        db1.add_map(kept);
      }
    }
    if (t == NONE || !result) {
      continue;
    }
    MAP* map1 = db1.map_of(T, t);
    const MAP* map2 = source.map_of(R, k);
    if (map1 != nullptr && map2 != nullptr && map1->lists_in_n(T, t) != map2->lists_in_n(R, k)) {
      map1->interchange_both();
    }
  }
}

// The id of such a register is one higher than the next id.
void UNION::add_missing_registers() {
  for (const std::size_t k : source.walk(T)) {
    const KEY& key = source.registers[k].key;
    if (db1.find(T, key) == NONE) {
      db1.add(T, key, ++db1.next_id[T]);
    }
  }
}

void UNION::translate() {
  const auto namesake_of = [this](std::size_t k) { return k == NONE ? NONE : db1.find(T, source.registers[k].key); };
  for (const auto& [number, map] : source.maps) {
    MAP copy = map;
    for (PAIRS& pairs : copy.sides) {
      pairs = translated(pairs, namesake_of);
    }
    if (!copy.fsm) {
      copy.table = TABLE::of_kept_register();
    }
    db2.add_map(copy);
  }
}

bool UNION::cleanup(SIDE side) {
  bool result = true;
  for (const std::size_t k : db1.walk(side)) {
    // The deletion of another register by its name may have deleted this one.
    if (!db1.registers[k].in_set || db1.map_number(side, k) != NONE) {
      continue;
    }
    const std::size_t named = db1.find(side, db1.registers[k].key);
    result = named != NONE;
    if (result) {
      db1.registers[named].in_set = false;
    }
  }
  return result;
}

// --- maps ---

void UNION::unite_maps() {
  fuse_successors();
  say(LOOP_1);
  fuse_predecessors();
  say(LOOP_2);
  compose_all();
  say(LOOP_3);
  if (m_copy_leftovers) {
    copy_leftovers();
  }
}

// Fuses the maps that one map of the first database feeds.
void UNION::fuse_successors() {
  for (const auto& [number, m1] : db1.maps) {
    for (std::size_t at = 0; ok && !m1.fsm && at < m1.sides[T].size(); ++at) {
      std::set<std::size_t> candidates;
      for (const std::size_t k : m1.registers(T, at, lines)) {
        MAP* m2 = db2.map_of(R, k);
        if (m2 != nullptr && !m2->fsm) {
          m2->align_after(m1, k, k);
          candidates.insert(db2.map_number(R, k));
        }
      }
      fuse(db2, candidates);
    }
  }
}

// Fuses the maps that feed one map of the second database. A machine replaces
// them instead.
void UNION::fuse_predecessors() {
  for (auto& [number, m2] : db2.maps) {
    if (!ok) {
      return;
    }
    fuse_predecessors(m2);
    if (m2.fsm) {
      copy_into_db1(m2);
    }
  }
}

void UNION::fuse_predecessors(MAP& m2) {
  for (std::size_t at = 0; ok && at < m2.sides[R].size(); ++at) {
    std::set<std::size_t> candidates;
    for (const std::size_t k : m2.registers(R, at, lines)) {
      const std::size_t m1 = db1.map_number(T, k);
      if (m1 == NONE) {
        continue;
      }
      if (m2.fsm) {
        db1.delete_map(m1, lines);
      } else {
        m2.align_after(db1.maps.at(m1), k, k);
        candidates.insert(m1);
      }
    }
    fuse(db1, candidates);
  }
}

void UNION::compose_all() {
  for (auto& [number, m1] : db1.maps) {
    if (ok && !m1.fsm && m1.status == KPT_NOT_ELIMINATED) {
      compose(number, m1);
    }
  }
}

void UNION::copy_leftovers() {
  for (const auto& [number, map] : db2.maps) {
    ++internal_errors;
    copy_into_db1(map);
  }
}

// The oldest map absorbs the others, in order.
void UNION::fuse(DATABASE& db, const std::set<std::size_t>& candidates) {
  if (candidates.size() < 2) {
    return;
  }
  const std::size_t oldest = *candidates.begin();
  for (const std::size_t other : candidates) {
    if (other != oldest) {
      ok = ok && db.maps.at(oldest).unite(db.maps.at(other), lines);
      db.delete_map(other, lines);
    }
  }
  db.enter(oldest);
}

void UNION::copy_into_db1(const MAP& map) {
  db1.add_map(map);
  // The walk issues debug lines.
  for (const SIDE side : {R, T}) {
    for (std::size_t at = 0; at < map.sides[side].size(); ++at) {
      map.registers(side, at, lines);
    }
  }
}

// --- composition ---

void UNION::compose(std::size_t number, MAP& m1) {
  const std::size_t successor = successor_of(m1);
  if (successor == NONE || db2.maps.at(successor).fsm) {
    return;
  }
  const MAP& m2 = db2.maps.at(successor);
  if (!m1.t_equals_r(m2, [this](std::size_t k) { return db1.key_of(k); })) {
    say(UNMATCHED);
    say("T set of db1:");
    print_side(m1, T);
    say("R set of db2:");
    print_side(m2, R);
  }
  GROUP entered;
  GROUP left;
  m1.update(m2, entered, left);
  for (const std::size_t k : left) {
    db1.index[T].erase(k);
  }
  for (const std::size_t k : entered) {
    if (db1.map_number(T, k) == NONE) {
      db1.index[T][k] = number;
    }
  }
  db1.enter(R, m2.sides[R], number);
  db2.delete_map(successor, lines);
}

std::size_t UNION::successor_of(const MAP& m1) {
  const std::size_t first = m1.representative(T, 0).value_or(NONE);
  const std::size_t of_first = db2.map_number(R, first);
  if (of_first != NONE) {
    return of_first;
  }
  say(not_in_db2(name_of(first)));
  for (const bool inverted : {false, true}) {
    for (const std::size_t k : m1.equivalents(T, 0, inverted, lines)) {
      const std::size_t of_k = db2.map_number(R, k);
      if (of_k != NONE) {
        say("Found keypoint " + name_of(k) + " in db2's R set");
        return of_k;
      }
    }
  }
  say(NO_SUCCESSOR);
  return NONE;
}

void UNION::print_side(const MAP& map, SIDE side) {
  for (std::size_t at = 0; at < map.sides[side].size(); ++at) {
    // The line about the empty index comes before its registers, of which there are none.
    for (const std::size_t k : map.registers(side, at, lines)) {
      say("  " + std::to_string(at) + ": " + name_of(k));
    }
  }
}

}  // namespace kpt_test::plain
