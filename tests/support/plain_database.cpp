#include "tests/support/plain_database.h"

#include <algorithm>

#include "tests/support/messages.h"

namespace kpt_test::plain {

// --- registers ---

std::size_t DATABASE::find(SIDE side, const KEY& key) const {
  for (const std::size_t k : sets[side]) {
    const REGISTER& r = registers[k];
    if (r.in_set && r.key.signal == key.signal && r.entered_as == key.name && (key.signal || r.key.type == key.type)) {
      return k;
    }
  }
  return NONE;
}

std::size_t DATABASE::add(SIDE side, const KEY& key, long id) {
  const std::size_t earlier = find(side, key);
  if (earlier != NONE) {
    registers[earlier].in_set = false;
  }
  registers.push_back({key, id, key.name});
  sets[side].push_back(registers.size() - 1);
  return registers.size() - 1;
}

GROUP DATABASE::walk(SIDE side) const {
  GROUP order;
  for (const bool signals : {true, false}) {
    for (const std::size_t k : sets[side]) {
      if (registers[k].in_set && registers[k].key.signal == signals) {
        order.push_back(k);
      }
    }
  }
  return order;
}

// --- maps ---

std::size_t DATABASE::map_number(SIDE side, std::size_t k) const {
  const auto entry = index[side].find(k);
  return entry == index[side].end() || maps.count(entry->second) == 0 ? NONE : entry->second;
}

MAP* DATABASE::map_of(SIDE side, std::size_t k) {
  const std::size_t number = map_number(side, k);
  return number == NONE ? nullptr : &maps.at(number);
}

const MAP* DATABASE::map_of(SIDE side, std::size_t k) const {
  const std::size_t number = map_number(side, k);
  return number == NONE ? nullptr : &maps.at(number);
}

std::size_t DATABASE::number_of(const MAP* map) const {
  return std::find_if(maps.begin(), maps.end(), [&](const auto& entry) { return &entry.second == map; })->first;
}

std::size_t DATABASE::add_map(const MAP& map) {
  maps.emplace(m_next_map, map);
  enter(m_next_map);
  return m_next_map++;
}

void DATABASE::enter(std::size_t map) {
  for (const SIDE side : {R, T}) {
    enter(side, maps.at(map).sides[side], map);
  }
}

void DATABASE::enter(SIDE side, const PAIRS& pairs, std::size_t map) {
  for (const std::size_t k : all_of(pairs)) {
    if (k != NONE) {
      index[side][k] = map;
    }
  }
}

void DATABASE::delete_map(std::size_t map, LINES& lines) {
  for (const SIDE side : {R, T}) {
    for (std::size_t at = 0; at < maps.at(map).sides[side].size(); ++at) {
      for (const std::size_t k : maps.at(map).registers(side, at, lines)) {
        index[side].erase(k);
        erased[side].push_back(k);
      }
    }
  }
  maps.erase(map);
}

// --- events ---

bool DATABASE::associate(const KEY& r, const KEY& t) {
  if (find(R, r) != NONE || find(T, t) != NONE) {
    return false;
  }
  MAP map;
  map.sides[R] = {{{add(R, r)}, {}}};
  map.sides[T] = {{{add(T, t)}, {}}};
  add_map(map);
  return true;
}

bool DATABASE::associate_fsm(const std::vector<std::string>& r_names, const std::vector<std::string>& t_names,
                             const TABLE& table) {
  const std::vector<std::string>* names[2] = {&r_names, &t_names};
  for (const SIDE side : {R, T}) {
    for (const std::string& name : *names[side]) {
      if (signal(side, name) != NONE) {
        return false;
      }
    }
  }
  MAP map;
  for (const SIDE side : {R, T}) {
    for (const std::string& name : *names[side]) {
      map.sides[side].push_back({{add(side, {true, name, "", ""})}, {}});
    }
  }
  map.fsm = true;
  map.table = table;
  add_map(map);
  return true;
}

bool DATABASE::replicate(const std::string& name, const std::string& replica_name, LINES& lines) {
  const std::size_t existing = signal(T, name);
  if (existing == NONE) {
    lines.push_back(name + " does not exist in T");
    return false;
  }
  if (signal(T, replica_name) != NONE) {
    lines.push_back(replica_name + " already exists in T");
    return false;
  }
  const std::size_t replica = add(T, {true, replica_name, "", ""});
  MAP* map = map_of(T, existing);
  if (map == nullptr || !map->replicate(existing, replica)) {
    return false;
  }
  index[T][replica] = index[T][existing];
  lines.push_back("Replicated register: " + replica_name + " is a replicate of " + name);
  return true;
}

bool DATABASE::retime(const std::string& name, LINES& lines) {
  const std::size_t k = signal(T, name);
  if (k == NONE) {
    lines.push_back("Error: Can't find " + name + " in T set");
    return false;
  }
  lines.push_back("Inverter retimed register " + name);
  MAP* map = map_of(T, k);
  return map != nullptr && map->retime(k, lines);
}

// A register leaves the index even when its elimination is refused.
bool DATABASE::eliminate(const std::string& name, KPT_ELIM_ENUM reason, LINES& lines) {
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
  const bool recorded = map->eliminate(k, reason, lines);
  index[T].erase(k);
  erased[T].push_back(k);
  if (recorded) {
    registers[k].in_set = false;
  }
  return recorded;
}

bool DATABASE::merge(const std::string& kept_name, const std::string& merged_name, LINES& lines) {
  const std::size_t kept = signal(T, kept_name);
  const std::size_t merged = signal(T, merged_name);
  if (kept == NONE || merged == NONE) {
    lines.push_back("Error: Can't find " + (kept == NONE ? kept_name : merged_name) + " in T set");
    return false;
  }
  const bool recorded = merge(kept, merged, lines);
  if (recorded) {
    registers[merged].in_set = false;
  }
  lines.push_back("Merged registers: " + kept_name + " <- " + merged_name);
  return recorded;
}

bool DATABASE::merge(std::size_t kept, std::size_t merged, LINES& lines) {
  MAP* kept_map = map_of(T, kept);
  MAP* merged_map = map_of(T, merged);
  if (kept_map == nullptr || merged_map == nullptr) {
    return false;
  }
  if (kept_map->fsm && merged_map->fsm) {
    lines.emplace_back(MERGE_OF_TWO_MACHINES);
    return false;
  }
  if (!kept_map->lists(T, kept) || !merged_map->lists(T, merged)) {
    return false;
  }
  const bool inverted = !merged_map->lists_in_n(T, merged);
  const bool opposite = inverted == kept_map->lists_in_n(T, kept);
  if (kept_map != merged_map) {
    seen["merge of opposite polarities"] += opposite ? 1 : 0;
    return merge_maps(*kept_map, *merged_map, merged, inverted, opposite, lines);
  }
  if (opposite) {
    lines.emplace_back(MERGE_OF_INVERSES);
    return false;
  }
  ++seen["merge within a map"];
  leave(*merged_map, merged, inverted);
  return true;
}

// The merged map becomes part of the kept one; it is swapped before if the polarities are opposite.
bool DATABASE::merge_maps(MAP& kept_map, MAP& merged_map, std::size_t merged, bool inverted, bool opposite,
                          LINES& lines) {
  if (opposite) {
    merged_map.interchange_both();
  }
  const bool left = leave(merged_map, merged, inverted != opposite);
  const bool into_machine = kept_map.fsm;
  const bool of_machine = merged_map.fsm;
  ++seen[into_machine ? "merge into a machine" : of_machine ? "merge of a machine" : "merge of plain maps"];
  kept_map.unite(merged_map, lines);
  delete_map(number_of(&merged_map), lines);
  const std::size_t survivor = number_of(&kept_map);
  enter(survivor);
  entered_anew.push_back(survivor);
  if (!into_machine && !of_machine) {
    return left;
  }
  const auto last_column = static_cast<unsigned short>(kept_map.sides[T].size());
  return kept_map.update_table(1, into_machine ? last_column : 2, lines);
}

// Removes the register from the index of maps, and from one group of the first index.
bool DATABASE::leave(MAP& map, std::size_t k, bool inverted) {
  const bool left = remove_first(map.sides[T].front().group(inverted), k);
  erased[T].push_back(k);
  return index[T].erase(k) > 0 && left;
}

}  // namespace kpt_test::plain
