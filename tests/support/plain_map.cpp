#include "tests/support/plain_map.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tests/support/messages.h"

namespace kpt_test::plain {

bool holds(const GROUP& group, std::size_t k) { return std::find(group.begin(), group.end(), k) != group.end(); }

bool remove_first(GROUP& group, std::size_t k) {
  const auto found = std::find(group.begin(), group.end(), k);
  if (found == group.end()) {
    return false;
  }
  group.erase(found);
  return true;
}

GROUP all_of(const PAIRS& pairs) {
  GROUP all;
  for (const PAIR& pair : pairs) {
    all.insert(all.end(), pair.n.begin(), pair.n.end());
    all.insert(all.end(), pair.i.begin(), pair.i.end());
  }
  return all;
}

std::size_t find_namesake(const PAIRS& pairs, const KEY& key, const KEY_OF& key_of) {
  for (const std::size_t k : all_of(pairs)) {
    const KEY* listed = key_of(k);
    if (listed != nullptr && *listed == key) {
      return k;
    }
  }
  return NONE;
}

PAIRS translated(const PAIRS& pairs, const std::function<std::size_t(std::size_t)>& namesake_of) {
  PAIRS result(pairs.size());
  for (std::size_t index = 0; index < pairs.size(); ++index) {
    for (const bool inverted : {false, true}) {
      for (const std::size_t k : pairs[index].group(inverted)) {
        if (namesake_of(k) != NONE) {
          result[index].group(inverted).push_back(namesake_of(k));
        }
      }
    }
  }
  return result;
}

// --- questions ---

PAIR MAP::pair(SIDE side, std::size_t index) const { return index < sides[side].size() ? sides[side][index] : PAIR(); }

bool MAP::lists(SIDE side, std::size_t k) const {
  return lists_in_n(side, k) || (!sides[side].empty() && holds(sides[side].front().i, k));
}

bool MAP::lists_in_n(SIDE side, std::size_t k) const { return !sides[side].empty() && holds(sides[side].front().n, k); }

std::optional<std::size_t> MAP::representative(SIDE side, std::size_t index) const {
  const PAIR at = pair(side, index);
  if (at.empty()) {
    return std::nullopt;
  }
  return at.group(at.n.empty()).front();
}

GROUP MAP::equivalents(SIDE side, std::size_t index, bool inverted, LINES& lines) const {
  const PAIR at = pair(side, index);
  if (at.empty()) {
    lines.emplace_back(side == R ? EMPTY_R_SIDE : EMPTY_T_SIDE);
    return {};
  }
  GROUP others;
  for (const std::size_t k : at.group(at.n.empty() != inverted)) {
    if (k != *representative(side, index)) {
      others.push_back(k);
    }
  }
  return others;
}

GROUP MAP::registers(SIDE side, std::size_t index, LINES& lines) const {
  GROUP all;
  if (const std::optional<std::size_t> first = representative(side, index)) {
    all.push_back(*first);
  }
  for (const bool inverted : {false, true}) {
    const GROUP others = equivalents(side, index, inverted, lines);
    all.insert(all.end(), others.begin(), others.end());
  }
  return all;
}

// At an empty index the search is for the null keypoint, which the first index may list.
bool MAP::is_unate(std::size_t r_index, std::size_t t_index, bool positive) const {
  if (!lists(R, representative(R, r_index).value_or(NONE)) || !lists(T, representative(T, t_index).value_or(NONE))) {
    return false;
  }
  if (fsm) {
    return true;
  }
  const PAIR r = pair(R, r_index);
  const PAIR t = pair(T, t_index);
  const bool both_n = !r.n.empty() && !t.n.empty();
  const bool both_i = r.n.empty() && t.n.empty() && !r.i.empty() && !t.i.empty();
  return positive == (both_n || both_i);
}

bool MAP::t_equals_r(const MAP& other, const KEY_OF& key_of) const {
  const GROUP all = all_of(sides[T]);
  return sides[T].size() == other.sides[R].size() && std::all_of(all.begin(), all.end(), [&](std::size_t k) {
           return key_of(k) != nullptr && find_namesake(other.sides[R], *key_of(k), key_of) != NONE;
         });
}

bool MAP::same_as(const MAP& other) const {
  return fsm == other.fsm && table == other.table && sides[R] == other.sides[R] && sides[T] == other.sides[T];
}

// --- edits ---

bool MAP::replicate(std::size_t existing, std::size_t replica) {
  if (!lists(T, existing)) {
    return false;
  }
  sides[T].front().group(!lists_in_n(T, existing)).push_back(replica);
  return true;
}

bool MAP::retime(std::size_t k, LINES& lines) {
  if (!lists(T, k)) {
    lines.emplace_back(NOT_FOUND_TO_RETIME);
    return false;
  }
  const bool inverted = !lists_in_n(T, k);
  PAIR& first = sides[T].front();
  const bool before = first.n.empty();
  first.group(!inverted).push_back(k);
  remove_first(first.group(inverted), k);
  if (fsm && before != first.n.empty()) {
    table.flip_t_column(0);
  }
  return true;
}

bool MAP::eliminate(std::size_t k, KPT_ELIM_ENUM reason, LINES& lines) {
  if (!lists(T, k)) {
    lines.emplace_back(NOT_FOUND_TO_ELIMINATE);
    return false;
  }
  if (reason != KPT_STUCK_AT_ZERO && reason != KPT_STUCK_AT_ONE && reason != KPT_NO_FANOUT) {
    return false;
  }
  const GROUP all = registers(T, 0, lines);
  const bool last = all == GROUP{k};
  if (reason == KPT_NO_FANOUT && last && fsm && sides[T].size() > 1) {
    status = KPT_NO_FANOUT;
    return table.remove_t_column(0) && erase_t_index(0);
  }
  PAIR& first = sides[T].front();
  if (!remove_first(first.n, k)) {
    remove_first(first.i, k);
  }
  if (reason != KPT_NO_FANOUT || last) {
    status = reason;
  }
  if (reason != KPT_NO_FANOUT && last && fsm) {
    erase_t_index(0);
  }
  return true;
}

bool MAP::erase_t_index(std::size_t index) {
  if (index >= sides[T].size()) {
    return false;
  }
  sides[T].erase(sides[T].begin() + static_cast<std::ptrdiff_t>(index));
  return true;
}

bool MAP::interchange(int side, LINES& lines) {
  if (side != R && side != T) {
    lines.emplace_back(INTERCHANGE_OF_UNKNOWN_SIDE);
    return false;
  }
  for (PAIR& pair : sides[side]) {
    std::swap(pair.n, pair.i);
  }
  return true;
}

void MAP::interchange_both() {
  LINES none;
  interchange(R, none);
  interchange(T, none);
}

bool MAP::update_table(unsigned long kept_column, unsigned long other_column, LINES& lines) {
  table.keep_rows_that_agree(kept_column, other_column, lines);
  return table.remove_t_column(other_column);
}

// --- combinations ---

void MAP::append(const MAP& other) {
  for (const SIDE side : {R, T}) {
    PAIRS added = other.sides[side];
    std::move(added.begin(), added.end(), std::back_inserter(sides[side]));
  }
}

bool MAP::unite_simply(const MAP& other) {
  bool added = true;
  for (const SIDE side : {R, T}) {
    const PAIR from = other.pair(side, 0);
    if (sides[side].empty()) {
      added = added && from.empty();
      continue;
    }
    PAIR& to = sides[side].front();
    to.n.insert(to.n.end(), from.n.begin(), from.n.end());
    to.i.insert(to.i.end(), from.i.begin(), from.i.end());
  }
  if (added) {
    status = other.status;
  }
  return added;
}

bool MAP::unite(const MAP& other, LINES& lines) {
  if (fsm && other.fsm) {
    lines.emplace_back(UNION_OF_TWO_MACHINES);
    return false;
  }
  if (!fsm && !other.fsm) {
    return unite_simply(other);
  }
  table = table.product(other.table, lines);
  fsm = true;
  status = other.status;
  append(other);
  return true;
}

void MAP::update(const MAP& other, GROUP& entered, GROUP& left) {
  const GROUP before = all_of(sides[T]);
  const GROUP after = all_of(other.sides[T]);
  left.insert(left.end(), before.begin(), before.end());
  entered.insert(entered.end(), after.begin(), after.end());
  sides[T] = other.sides[T];
  fsm = other.fsm;
  status = other.status;
  if (fsm) {
    table = other.table;
  }
}

bool MAP::align_after(const MAP& earlier, std::size_t transformed, std::size_t reference) {
  if (!earlier.lists(T, transformed) || !lists(R, reference)) {
    return false;
  }
  if (earlier.lists_in_n(T, transformed) != lists_in_n(R, reference)) {
    interchange_both();
  }
  return true;
}

}  // namespace kpt_test::plain
