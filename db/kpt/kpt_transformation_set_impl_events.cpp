// The register events: what merging, inverter retiming and elimination do to
// the maps and to the indexes. All address registers by their transformed
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

// The map's index search sees index 0 only, so a register of a further index
// has no place: events on it are refused.
PLACE place_in_t_vector(const KPT_TRANSFORMATION_IMPL& map, KPT_KEYPOINT* k) {
  PLACE place;
  place.index = map.find_index_in_t_vector(k, &place.found);
  place.in_n_group = place.found && map.keypoint_is_in_t_n_group_of_map(k, place.index);
  return place;
}

// Swaps all groups of a map that is to be expressed in the other polarity.
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

// The refusal of two state machines comes before the question whether they
// are one: a merge of two state bits of one machine is refused with this line
// too, since its table would have to lose states that no pass has reported.
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

// `b` is absorbed by `a`. When the two registers have opposite polarity, `b`
// is first expressed in that of `orig`: all of its groups are swapped, and
// `merged` then stands in the other one. A failed union is passed over: `b`
// goes all the same, for its transformed register is gone from the netlist.
// Between plain maps only the first pair of `b` is taken over.
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
  // All memory first: what follows it cannot fail.
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
  // Flows compare the tables that come of this, so the columns are fixed: the last of the
  // united table when `a` brought the machine, the one behind the first of `b`
  // when `b` did. They are passed as they are, whatever the product's layout.
  if (fsm_a) {
    return a.update_state_table(static_cast<unsigned short>(of_orig.index + 1), a.get_num_transformed_registers());
  }
  if (fsm_b) {
    return a.update_state_table(1, static_cast<unsigned short>(of_merged.index + 2));
  }
  return deleted;
}

// The index search sees index 0 only, so two registers of different pairs are
// never both found, and the second refusal is out of reach until it sees more.
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
  return true;  // whatever the deletion answered: the two registers are one now
}

bool KPT_TRANSFORMATION_SET_IMPL::delete_merged_keypoint(KPT_TRANSFORMATION_IMPL* map, KPT_KEYPOINT* k,
                                                         unsigned long index, bool in_n_group) {
  if (map == nullptr) {
    return false;
  }
  const bool deleted = delete_from_t_group(*map, k, index, in_n_group);
  const bool was_mapped = get_map_of_t_keypoint(k) != nullptr;  // an entry that leads to a deleted map is none
  m_t_index.erase(KPT_KEYPOINT::slot_of(k));
  return was_mapped && deleted;
}

bool KPT_TRANSFORMATION_SET_IMPL::set_inverter_retimed_register(KPT_REGISTER_KEYPOINT_IMPL* k) {
  KPT_TRANSFORMATION_IMPL* map = get_map_of_t_keypoint(k);
  return map != nullptr && map->set_inverter_retimed_register(k);
}

// The entry goes whatever the map answered, also when it knows no such
// reason: the register is gone from the netlist, and its map is found through
// its reference registers.
bool KPT_TRANSFORMATION_SET_IMPL::set_eliminated_map(KPT_REGISTER_KEYPOINT_IMPL* k, KPT_ELIM_ENUM status) {
  KPT_TRANSFORMATION_IMPL* map = get_map_of_t_keypoint(k);
  if (map == nullptr) {
    return false;
  }
  const bool recorded = map->set_eliminated(k, status);
  m_t_index.erase(KPT_KEYPOINT::slot_of(k));
  return recorded;
}
