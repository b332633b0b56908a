// How maps are united, aligned, compared by names, composed stage to stage, and
// moved to the keypoints of another set.
#include <algorithm>
#include <memory>
#include <tuple>
#include <utility>

#include "db/kpt/containers/kpt_sorted_set.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_translation.h"
#include "db/kpt/msg_kpt.h"

namespace {

// Null for a null keypoint and for one that is not a register: neither can be
// matched by its name.
const KPT_REGISTER_KEYPOINT_IMPL* as_register(const KPT_KEYPOINT* keypoint) {
  return keypoint != nullptr && keypoint->is_register() ? static_cast<const KPT_REGISTER_KEYPOINT_IMPL*>(keypoint)
                                                        : nullptr;
}

// The texts by which a register is matched: a signal has no entity and no type.
struct NAMES {
  explicit NAMES(const KPT_REGISTER_KEYPOINT_IMPL& keypoint)
      : is_signal(keypoint.register_is_signal()),
        name(keypoint.get_element_name()),
        entity(keypoint.get_entity_name()),
        register_type(keypoint.get_register_type()) {}
  NAMES(bool signal, std::string_view its_name, std::string_view its_entity, std::string_view its_type)
      : is_signal(signal), name(its_name), entity(its_entity), register_type(its_type) {}

  auto texts() const { return std::tie(is_signal, name, entity, register_type); }
  friend bool operator==(const NAMES& a, const NAMES& b) { return a.texts() == b.texts(); }
  friend bool operator<(const NAMES& a, const NAMES& b) { return a.texts() < b.texts(); }

  bool is_signal;
  std::string_view name;
  std::string_view entity;
  std::string_view register_type;
};

bool stands_in(const NI_PAIR_VECTOR& side, const KPT_KEYPOINT* keypoint) {
  bool found = false;
  KPT_TRANSFORMATION_IMPL::for_each_keypoint(side, [&](const KPT_KEYPOINT* k) { found = found || k == keypoint; });
  return found;
}

KPT_KEYPOINT* find_namesake(const KPT_KEYPOINT_LIST& group, const NAMES& names) {
  const auto position = std::find_if(group.begin(), group.end(), [&](const KPT_KEYPOINT* keypoint) {
    const KPT_REGISTER_KEYPOINT_IMPL* candidate = as_register(keypoint);
    return candidate != nullptr && NAMES(*candidate) == names;
  });
  return position == group.end() ? nullptr : *position;
}

KPT_KEYPOINT* find_namesake(const NI_PAIR_VECTOR& side, const NAMES& names) {
  for (const NI_PAIR& pair : side) {
    KPT_KEYPOINT* keypoint = find_namesake(pair.first, names);
    keypoint = keypoint == nullptr ? find_namesake(pair.second, names) : keypoint;
    if (keypoint != nullptr) {
      return keypoint;
    }
  }
  return nullptr;
}

// The names of one side, for look-ups of many registers. A walk for each look-up
// is faster for the few registers that nearly every side has. A side with many
// registers is sorted once.
class SIDE_NAMES {
 public:
  explicit SIDE_NAMES(const NI_PAIR_VECTOR& side) : m_side(side) {
    std::size_t count = 0;
    KPT_TRANSFORMATION_IMPL::for_each_keypoint(side, [&](const KPT_KEYPOINT*) { ++count; });
    m_is_sorted = count > KPT_MOST_WALKED;
    if (m_is_sorted) {
      sort(count);
    }
  }

  // Most often the side lists the very same keypoint.
  bool contain(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const {
    if (m_is_sorted) {
      return m_sorted.contains(NAMES(keypoint));
    }
    return stands_in(m_side, &keypoint) || find_namesake(m_side, NAMES(keypoint)) != nullptr;
  }

 private:
  void sort(std::size_t count) {
    m_sorted.reserve(count);
    KPT_TRANSFORMATION_IMPL::for_each_keypoint(m_side, [&](const KPT_KEYPOINT* keypoint) {
      if (const KPT_REGISTER_KEYPOINT_IMPL* named = as_register(keypoint)) {
        m_sorted.add(NAMES(*named));
      }
    });
    m_sorted.sort();
  }

  const NI_PAIR_VECTOR& m_side;
  KPT_SORTED_SET<NAMES> m_sorted;
  bool m_is_sorted;
};

// Requires that memory was reserved.
void append_pairs(NI_PAIR_VECTOR& to, NI_PAIR_VECTOR&& from) {
  for (NI_PAIR& pair : from) {
    to.push_back(std::move(pair));
  }
}

// Reserves memory for more elements. It grows by doubling, so that adding one by one is as fast as adding all.
template <class LIST>
void make_room(LIST& list, std::size_t more) {
  const std::size_t wanted = list.size() + more;
  if (wanted > list.capacity()) {
    list.reserve(std::max(wanted, 2 * list.capacity()));
  }
}

// A side with every keypoint replaced by the result of `namesake_of`.
template <class F>
NI_PAIR_VECTOR translate_side(const NI_PAIR_VECTOR& side, F namesake_of) {
  const auto translate_group = [&](const KPT_KEYPOINT_LIST& group) {
    KPT_KEYPOINT_LIST translated;
    for (const KPT_KEYPOINT* keypoint : group) {
      KPT_KEYPOINT* namesake = namesake_of(keypoint);
      if (namesake != nullptr) {
        translated.push_back(namesake);
      }
    }
    return translated;
  };
  NI_PAIR_VECTOR translated;
  translated.reserve(side.size());
  for (const NI_PAIR& pair : side) {
    translated.emplace_back(translate_group(pair.first), translate_group(pair.second));
  }
  return translated;
}

}  // namespace

bool KPT_TRANSFORMATION_IMPL::copy_map(const KPT_TRANSFORMATION_IMPL& other) {
  NI_PAIR_VECTOR r = other.m_r_vector;
  NI_PAIR_VECTOR t = other.m_t_vector;
  make_room(m_r_vector, r.size());
  make_room(m_t_vector, t.size());
  append_pairs(m_r_vector, std::move(r));
  append_pairs(m_t_vector, std::move(t));
  return true;
}

// Reserves memory in the groups of the first pairs for either group of `other`.
void KPT_TRANSFORMATION_IMPL::make_room_for(const KPT_TRANSFORMATION_IMPL& other) {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    const std::size_t more = std::max(other.group(side, N_GROUP, 0).size(), other.group(side, I_GROUP, 0).size());
    for (const GROUP group : {N_GROUP, I_GROUP}) {
      KPT_KEYPOINT_LIST* keypoints = group_to_edit(side, group, 0);
      if (keypoints != nullptr && more != 0) {
        make_room(*keypoints, more);
      }
    }
  }
}

void KPT_TRANSFORMATION_IMPL::take_content(KPT_TRANSFORMATION_IMPL& other) noexcept {
  m_r_vector.swap(other.m_r_vector);
  m_t_vector.swap(other.m_t_vector);
  m_state_table.swap(other.m_state_table);
  m_elim_status = other.m_elim_status;
  m_fsm_flag = other.m_fsm_flag;
}

// Uses only the first NI pairs. It is meant for plain maps, which have no others.
// Callers that unite plain maps with several pairs rely on this. The status is
// that of the other map, which is the later one.
bool KPT_TRANSFORMATION_IMPL::make_simple_union(const KPT_TRANSFORMATION_IMPL& other) {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for (const GROUP group : {N_GROUP, I_GROUP}) {
      KPT_KEYPOINT_LIST* keypoints = group_to_edit(side, group, 0);
      if (keypoints != nullptr) {
        make_room(*keypoints, other.group(side, group, 0).size());
      }
    }
  }
  bool added = true;
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for (const GROUP group : {N_GROUP, I_GROUP}) {
      added = append_group(side, group, other) && added;
    }
  }
  if (added) {
    m_elim_status = other.m_elim_status;
  }
  return added;
}

// Reads the group again at every step, because `other` may be this map.
bool KPT_TRANSFORMATION_IMPL::append_group(KPT_SET_ENUM side, GROUP group, const KPT_TRANSFORMATION_IMPL& other) {
  bool added = true;
  const std::size_t count = other.group(side, group, 0).size();
  for (std::size_t k = 0; k < count; ++k) {
    added = add_keypoint(side, group, other.group(side, group, 0)[k], 0) && added;
  }
  return added;
}

// The columns of the product table are in the order of the NI pairs: first those
// of this map, then those of the other.
bool KPT_TRANSFORMATION_IMPL::make_union(const KPT_TRANSFORMATION_IMPL& other) {
  const bool fsm = map_has_fsm_transformation();
  const bool other_fsm = other.map_has_fsm_transformation();
  if (fsm && other_fsm) {
    kpt_msg_debug("Cannot unite 2 FSM transformations");
    return false;
  }
  if (!fsm && !other_fsm) {
    return make_simple_union(other);
  }
  auto product = std::make_unique<KPT_STATE_TABLE_IMPL>(state_table().cross_product_table(other.state_table()));
  const KPT_ELIM_ENUM status = other.m_elim_status;
  const bool copied = copy_map(other);
  m_state_table = std::move(product);
  m_fsm_flag = true;
  m_elim_status = status;
  return copied;
}

KPT_TRANSFORMATION_IMPL::GROUP_MEMBERSHIP KPT_TRANSFORMATION_IMPL::membership(KPT_SET_ENUM side,
                                                                              const KPT_KEYPOINT* keypoint) const {
  return {keypoint_is_in(side, N_GROUP, keypoint, 0), keypoint_is_in(side, I_GROUP, keypoint, 0)};
}

// Swaps the map of the later stage. False when a register is in no group.
bool KPT_TRANSFORMATION_IMPL::align(const GROUP_MEMBERSHIP& earlier, const GROUP_MEMBERSHIP& later,
                                    KPT_TRANSFORMATION_IMPL& later_map) {
  if (earlier.opposes(later)) {
    later_map.interchange_groups_of_both_sides();
  }
  return earlier.anywhere() && later.anywhere();
}

bool KPT_TRANSFORMATION_IMPL::align_r_register(const KPT_KEYPOINT* keypoint, const KPT_TRANSFORMATION_IMPL* other,
                                               const KPT_KEYPOINT* other_keypoint) {
  return other != nullptr &&
         align(other->membership(KPT_TRANSFORMED_SET, other_keypoint), membership(KPT_REFERENCE_SET, keypoint), *this);
}

bool KPT_TRANSFORMATION_IMPL::align_t_register(const KPT_KEYPOINT* keypoint, KPT_TRANSFORMATION_IMPL* other,
                                               const KPT_KEYPOINT* other_keypoint) const {
  return other != nullptr &&
         align(membership(KPT_TRANSFORMED_SET, keypoint), other->membership(KPT_REFERENCE_SET, other_keypoint), *other);
}

// Compares only names: a namesake at another index or in the opposite group
// counts. A union relies on this, because stages first have to agree on their
// registers, and are then aligned.
bool KPT_TRANSFORMATION_IMPL::t_equals_r(const KPT_TRANSFORMATION_IMPL& other) const {
  if (m_t_vector.size() != other.m_r_vector.size()) {
    return false;
  }
  const SIDE_NAMES others(other.m_r_vector);
  const auto has_namesake = [&](const KPT_KEYPOINT* keypoint) {
    const KPT_REGISTER_KEYPOINT_IMPL* own = as_register(keypoint);
    return own != nullptr && others.contain(*own);
  };
  return std::all_of(m_t_vector.begin(), m_t_vector.end(), [&](const NI_PAIR& pair) {
    return std::all_of(pair.first.begin(), pair.first.end(), has_namesake) &&
           std::all_of(pair.second.begin(), pair.second.end(), has_namesake);
  });
}

KPT_KEYPOINT* KPT_TRANSFORMATION_IMPL::find_register_in_s_vector(const NI_PAIR_VECTOR& side, std::string_view name) {
  return find_namesake(side, NAMES(true, name, {}, {}));
}

KPT_KEYPOINT* KPT_TRANSFORMATION_IMPL::find_register_in_s_vector(const NI_PAIR_VECTOR& side, std::string_view name,
                                                                 std::string_view entity_name,
                                                                 std::string_view register_type) {
  return find_namesake(side, NAMES(false, name, entity_name, register_type));
}

// Takes the status unchanged, also when this map inverts. The status is about the
// registers between the stages, and flows expect the constants that the second
// stage recorded.
bool KPT_TRANSFORMATION_IMPL::update_transformations(const KPT_TRANSFORMATION_IMPL& other, KPT_KEYPOINT_LIST& entered,
                                                     KPT_KEYPOINT_LIST& left) {
  std::unique_ptr<KPT_STATE_TABLE_IMPL> table;
  if (other.map_has_fsm_transformation()) {
    table = std::make_unique<KPT_STATE_TABLE_IMPL>(other.state_table());
  }
  for_each_keypoint(m_t_vector, [&](KPT_KEYPOINT* keypoint) { left.push_back(keypoint); });
  for_each_keypoint(other.m_t_vector, [&](KPT_KEYPOINT* keypoint) { entered.push_back(keypoint); });
  m_t_vector = other.m_t_vector;
  m_fsm_flag = other.m_fsm_flag;
  m_elim_status = other.m_elim_status;
  if (table != nullptr) {
    m_state_table = std::move(table);
  }
  return true;
}

KPT_ID_LIST KPT_TRANSFORMATION_IMPL::get_ids_in_list(const KPT_KEYPOINT_LIST& keypoints) {
  KPT_ID_LIST ids;
  ids.reserve(keypoints.size());
  for (const KPT_KEYPOINT* keypoint : keypoints) {
    if (keypoint != nullptr) {
      ids.push_back(keypoint->get_kpid());
    }
  }
  return ids;
}

NI_PAIR_VECTOR KPT_TRANSFORMATION_IMPL::translate_vector(const NI_PAIR_VECTOR& side, const KPT_KEYPOINT_SET_IMPL& set) {
  return translate_side(side, [&](const KPT_KEYPOINT* k) { return KPT_TRANSLATION::namesake_in(set, k); });
}

NI_PAIR_VECTOR KPT_TRANSFORMATION_IMPL::translate_vector(const NI_PAIR_VECTOR& side, KPT_TRANSLATION& translation) {
  return translate_side(side, [&](const KPT_KEYPOINT* k) { return translation.of(k); });
}

KPT_TRANSFORMATION_IMPL::KPT_TRANSFORMATION_IMPL(const KPT_TRANSFORMATION_IMPL& other, KPT_TRANSLATION& translation)
    : m_r_vector(translate_vector(other.m_r_vector, translation)),
      m_t_vector(translate_vector(other.m_t_vector, translation)),
      m_elim_status(other.m_elim_status),
      m_fsm_flag(other.m_fsm_flag),
      m_state_table(other.map_has_fsm_transformation() ? std::make_unique<KPT_STATE_TABLE_IMPL>(other.state_table())
                                                       : nullptr) {}
