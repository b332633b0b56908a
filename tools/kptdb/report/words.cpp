#include "words.h"

#include <algorithm>

namespace kptdb {

namespace {

bool has_members(const std::vector<STAGE_PAIR>& side) {
  return std::any_of(side.begin(), side.end(),
                     [](const STAGE_PAIR& pair) { return !pair.same.empty() || !pair.inverse.empty(); });
}

// A table of another size than its sides says nothing of their columns.
bool table_fits(const STAGE_MAP& map) {
  return map.columns[0] == map.sides[0].size() && map.columns[1] == map.sides[1].size();
}

}  // namespace

REGISTER_FATE fate_of(const STAGE_MAP& map, const STAGE_PAIR& pair, bool is_inverse) {
  const bool has_successor = has_members(map.sides[1]);
  if (map.is_machine && has_successor) {
    return {table_fits(map) ? WORD_MACHINE : WORD_UNKNOWN};
  }
  if (map.reason == REASON_ZERO || map.reason == REASON_ONE) {
    const bool turned = is_inverse && !pair.same.empty();
    return {WORD_CONSTANT, (map.reason == REASON_ONE) != turned ? 1U : 0U};
  }
  if (has_successor) {
    return {WORD_MAPPED};
  }
  return {map.reason == REASON_NO_FANOUT ? WORD_NO_FANOUT : WORD_UNKNOWN};
}

}  // namespace kptdb
