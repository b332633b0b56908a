#include "words.h"

#include <algorithm>

namespace kptdb {

namespace {

bool has_register(const std::vector<STAGE_MEMBER>& group) {
  return std::any_of(group.begin(), group.end(), [](const STAGE_MEMBER& member) { return member.is_register; });
}

bool has_register(const STAGE_PAIR& pair) { return has_register(pair.same) || has_register(pair.inverse); }

// A table of another size than its sides says nothing of their columns.
bool table_fits(const STAGE_MAP& map) {
  return map.columns[0] == map.sides[0].size() && map.columns[1] == map.sides[1].size();
}

REGISTER_FATE constant(const STAGE_MAP& map, bool is_inverse) {
  const bool turned = is_inverse && !map.sides[0].front().same.empty();
  return {WORD_CONSTANT, (map.reason == REASON_ONE) != turned ? 1U : 0U};
}

bool is_partial(const STAGE_MAP& map) {
  return std::any_of(map.attributes.begin(), map.attributes.end(),
                     [](const auto& attribute) { return attribute.first == "partial"; });
}

}  // namespace

REGISTER_FATE fate_of(const STAGE_MAP& map, std::size_t index, bool is_inverse) {
  const std::vector<STAGE_PAIR>& other = map.sides[1];
  if (map.is_machine && !table_fits(map)) {
    return {WORD_UNKNOWN};
  }
  if (index == 0 && (map.reason == REASON_ZERO || map.reason == REASON_ONE)) {
    return constant(map, is_inverse);
  }
  if (map.is_machine) {
    const bool has_successor =
        std::any_of(other.begin(), other.end(), [](const STAGE_PAIR& pair) { return has_register(pair); });
    return {has_successor ? WORD_MACHINE : WORD_UNKNOWN};
  }
  if (index < other.size() && has_register(other[index])) {
    return {WORD_MAPPED};
  }
  const bool lists_none = other.empty() || (other[0].same.empty() && other[0].inverse.empty());
  const bool is_unused = index == 0 && map.reason == REASON_NO_FANOUT && lists_none && !is_partial(map);
  return {is_unused ? WORD_NO_FANOUT : WORD_UNKNOWN};
}

}  // namespace kptdb
