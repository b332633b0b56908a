// The register events: what merging, inverter retiming and elimination do to the
// maps and the indexes. Every event names a register by its transformed
// keypoint.
#include <optional>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "db/kpt/msg_kpt.h"

namespace {

struct PLACE {
  unsigned short index = 0;
  bool found = false;
  bool in_n_group = false;
};

// The map's index search looks at index 0 only. A register at another index is
// not found, so events on it are refused.
PLACE place_in_t_vector(const KPT_TRANSFORMATION_IMPL& map, KPT_KEYPOINT* k) {
  PLACE place;
  place.index = map.find_index_in_t_vector(k, &place.found);
  place.in_n_group = place.found && map.keypoint_is_in_t_n_group_of_map(k, place.index);
  return place;
}

// Swaps all groups of a map if it has to be expressed in the other polarity.
void express(KPT_TRANSFORMATION_IMPL& map, bool in_the_other) {
  if (in_the_other) {
    map.interchange_groups_of_both_sides();
  }
}

bool delete_from_t_group(KPT_TRANSFORMATION_IMPL& map, KPT_KEYPOINT* k, unsigned long index, bool in_n_group) {
  return in_n_group ? map.delete_keypoint_from_t_n_group_of_map(k, index)
                    : map.delete_keypoint_from_t_i_group_of_map(k, index);
}

}  // namespace

// First refuses two state machines, and then asks whether they are the same
// machine. So a merge of two state bits of one machine is refused with this line,
// too: its table would lose states that no pass has reported.
bool KPT_TRANSFORMATION_SET_IMPL::merge_keypoints(KPT_REGISTER_KEYPOINT_IMPL* orig,
                                                  KPT_REGISTER_KEYPOINT_IMPL* merged) {
  KPT_TRANSFORMATION_IMPL* a = get_map_of_t_keypoint(orig);
  KPT_TRANSFORMATION_IMPL* b = get_map_of_t_keypoint(merged);
  if (a == nullptr || b == nullptr) {
    return false;
  }
  if (a->map_has_fsm_transformation() && b->map_has_fsm_transformation()) {
    kpt_msg_debug(
        "Error: Merge not recorded - this is a merge \t\t\t\t\t\tbetween 2 FSM maps - this is not currently "
        "\t\t\t\t\t\tsupported by Keypoint db");
    return false;
  }
  return a == b ? merge_within_map(*a, orig, merged) : merge_between_maps(*a, *b, orig, merged);
}

// `a` absorbs `b`. When the two registers have opposite polarity, all groups of
// `b` are swapped first, so that `b` has the polarity of `orig`; `merged` is then
// in the other group. The result of the union is ignored: `b` is deleted in any
// case, because its transformed register is no longer in the netlist. Between
// plain maps, only the first pair of `b` is taken.
bool KPT_TRANSFORMATION_SET_IMPL::merge_between_maps(KPT_TRANSFORMATION_IMPL& a, KPT_TRANSFORMATION_IMPL& b,
                                                     KPT_KEYPOINT* orig, KPT_KEYPOINT* merged) {
  const bool fsm_a = a.map_has_fsm_transformation();
  const bool fsm_b = b.map_has_fsm_transformation();
  const PLACE of_orig = place_in_t_vector(a, orig);
  const PLACE of_merged = place_in_t_vector(b, merged);
  if (!of_orig.found || !of_merged.found) {
    return false;
  }
  const bool opposite = of_orig.in_n_group != of_merged.in_n_group;
  const bool in_n_group = of_merged.in_n_group != opposite;
  // Reserves all memory first, so that nothing after it can fail.
  make_entry_room(a);
  make_entry_room(b);
  std::optional<KPT_TRANSFORMATION_IMPL> united;
  if (fsm_a || fsm_b) {
    KPT_TRANSFORMATION_IMPL absorbed(b);
    express(absorbed, opposite);
    delete_from_t_group(absorbed, merged, of_merged.index, in_n_group);
    united.emplace(a);
    united->make_union(absorbed);
  } else {
    a.make_room_for(b);
  }
  express(b, opposite);
  const bool deleted = delete_merged_keypoint(&b, merged, of_merged.index, in_n_group);
  if (united.has_value()) {
    a.take_content(*united);
  } else {
    a.make_union(b);
  }
  delete_map(&b);
  enter_whole(a);
  // Flows compare the resulting tables, so the columns are fixed: the last of the
  // united table when `a` has the machine, the one after the first column of `b`
  // when `b` has it. They do not depend on the layout of the product.
  if (fsm_a) {
    return a.update_state_table(static_cast<unsigned short>(of_orig.index + 1), a.get_num_transformed_registers());
  }
  if (fsm_b) {
    return a.update_state_table(1, static_cast<unsigned short>(of_merged.index + 2));
  }
  return deleted;
}

// The index search looks at index 0 only, so it never finds two registers of
// different pairs. The second refusal cannot occur.
bool KPT_TRANSFORMATION_SET_IMPL::merge_within_map(KPT_TRANSFORMATION_IMPL& map, KPT_KEYPOINT* orig,
                                                   KPT_KEYPOINT* merged) {
  const PLACE of_orig = place_in_t_vector(map, orig);
  const PLACE of_merged = place_in_t_vector(map, merged);
  if (!of_orig.found || !of_merged.found) {
    return false;
  }
  if (of_orig.index != of_merged.index) {
    kpt_msg_debug(
        "Error: Trying to merge registers within the same map \t\t\t\t\t\t\tfrom different NI_PAIRs.  State Table "
        "probably not \t\t\t\t\t\t\tin canonical form");
    return false;
  }
  if (of_orig.in_n_group != of_merged.in_n_group) {
    kpt_msg_debug(
        "Error: Merged register is an inverted version \t\t\t\t\t\t\t\t\tof orig register and both registers are in "
        "the \t\t\t\t\t\t\t\t\tsame map");
    return false;
  }
  delete_merged_keypoint(&map, merged, of_merged.index, of_merged.in_n_group);
  return true;  // whatever the deletion returned: the two registers are one now
}

bool KPT_TRANSFORMATION_SET_IMPL::delete_merged_keypoint(KPT_TRANSFORMATION_IMPL* map, KPT_KEYPOINT* k,
                                                         unsigned long index, bool in_n_group) {
  if (map == nullptr) {
    return false;
  }
  const bool deleted = delete_from_t_group(*map, k, index, in_n_group);
  const bool was_mapped = get_map_of_t_keypoint(k) != nullptr;  // an entry of a deleted map does not count
  m_t_index.erase(KPT_KEYPOINT::slot_of(k));
  return was_mapped && deleted;
}

bool KPT_TRANSFORMATION_SET_IMPL::set_inverter_retimed_register(KPT_REGISTER_KEYPOINT_IMPL* k) {
  KPT_TRANSFORMATION_IMPL* map = get_map_of_t_keypoint(k);
  return map != nullptr && map->set_inverter_retimed_register(k);
}

// Erases the entry whatever the map answered, even when it refuses the reason:
// the register is no longer in the netlist, and its map is found by its reference
// registers.
bool KPT_TRANSFORMATION_SET_IMPL::set_eliminated_map(KPT_REGISTER_KEYPOINT_IMPL* k, KPT_ELIM_ENUM status) {
  KPT_TRANSFORMATION_IMPL* map = get_map_of_t_keypoint(k);
  if (map == nullptr) {
    return false;
  }
  const bool recorded = map->set_eliminated(k, status);
  m_t_index.erase(KPT_KEYPOINT::slot_of(k));
  return recorded;
}
