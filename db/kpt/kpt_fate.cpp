#include "db/kpt/kpt_fate.h"

#include <algorithm>

#include "db/kpt/composition/kpt_machine_table.h"

namespace {

bool has_register(const NI_PAIR& pair) {
  const auto is_there = [](const KPT_KEYPOINT* keypoint) { return keypoint != nullptr; };
  return std::any_of(pair.first.begin(), pair.first.end(), is_there) ||
         std::any_of(pair.second.begin(), pair.second.end(), is_there);
}

KPT_FATE_ENUM fate_in_machine(const KPT_TRANSFORMATION_IMPL& map, unsigned long r_index) {
  if (!kpt_table_fits(map)) {
    return KPT_FATE_UNKNOWN;
  }
  if (kpt_is_stuck(map.get_elim_status()) && r_index == 0) {
    return KPT_FATE_CONSTANT;
  }
  return std::any_of(map.t_vec().begin(), map.t_vec().end(), has_register) ? KPT_FATE_MACHINE : KPT_FATE_UNKNOWN;
}

KPT_FATE_ENUM fate_in_plain(const KPT_TRANSFORMATION_IMPL& map, unsigned long r_index) {
  if (kpt_is_stuck(map.get_elim_status()) && r_index == 0) {
    return KPT_FATE_CONSTANT;
  }
  if (r_index < map.t_vec().size() && has_register(map.t_vec()[r_index])) {
    return KPT_FATE_MAPPED;
  }
  const bool lists_unknown =
      r_index < map.t_vec().size() && (!map.t_vec()[r_index].first.empty() || !map.t_vec()[r_index].second.empty());
  return map.has_no_fanout() && r_index == 0 && !lists_unknown && !kpt_is_partial(map) ? KPT_FATE_WITHOUT_FANOUT
                                                                                       : KPT_FATE_UNKNOWN;
}

}  // namespace

KPT_FATE_ENUM kpt_fate(const KPT_TRANSFORMATION_IMPL* map, unsigned long r_index) {
  if (map == nullptr || r_index >= map->r_vec().size()) {
    return KPT_FATE_UNKNOWN;
  }
  return map->map_has_fsm_transformation() ? fate_in_machine(*map, r_index) : fate_in_plain(*map, r_index);
}

const char* kpt_fate_word(KPT_FATE_ENUM fate) {
  static constexpr const char* WORDS[] = {"constant", "machine", "mapped", "without fanout", "unknown"};
  return WORDS[fate >= KPT_FATE_CONSTANT && fate < KPT_FATE_UNKNOWN ? fate : KPT_FATE_UNKNOWN];
}
