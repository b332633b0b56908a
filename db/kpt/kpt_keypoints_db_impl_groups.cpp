// Records a map of any shape at once: it is checked completely before anything is
// added, and removed completely when memory runs out.
#include <algorithm>
#include <boost/unordered/unordered_flat_set.hpp>

#include "db/kpt/kpt_groups.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_texts.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/msg_kpt.h"

namespace {

constexpr std::size_t MOST = 65535;  // the most indices of a side: the most columns of a state table

KPT_REGISTER_TEXTS texts_of(const KPT_REGISTER_NAME& name) {
  return name.is_signal ? KPT_REGISTER_TEXTS(name.name)
                        : KPT_REGISTER_TEXTS(name.name, name.entity, name.register_type);
}

template <class VISIT>
bool all_of(const KPT_GROUPS_SIDE& side, VISIT visit) {
  return std::all_of(side.begin(), side.end(), [&](const KPT_GROUPS& groups) {
    return std::all_of(groups.same.begin(), groups.same.end(), visit) &&
           std::all_of(groups.inverse.begin(), groups.inverse.end(), visit);
  });
}

bool refuse(const char* reason) {
  kpt_msg_debug("Error: Map not recorded: %s", reason);
  return false;
}

// Whether every register is new to the set and occurs once.
bool are_new(const KPT_GROUPS_SIDE& side, const KPT_KEYPOINT_SET_IMPL& set) {
  using KEY = std::pair<bool, KPT_STRINGPAIR_HASH_COMPARE::TEXTS>;
  struct HASH {
    std::size_t operator()(const KEY& key) const {
      return KPT_REGISTER_TEXTS(key.second.first, {}, key.second.second).hash;
    }
  };
  boost::unordered_flat_set<KEY, HASH, std::equal_to<>, MEM_STL_ALLOCATOR<KEY>> named;
  return all_of(side, [&](const KPT_REGISTER_NAME& name) {
    if (!named.emplace(name.is_signal, KPT_STRINGPAIR_HASH_COMPARE::TEXTS{name.name, name.register_type}).second) {
      kpt_msg_debug("Error: Map not recorded: it names %s twice", KPT_STRING(name.name).c_str());
      return false;
    }
    if (set.get_register(texts_of(name)) != nullptr) {
      kpt_msg_debug("Error: Map not recorded: %s already exists", KPT_STRING(name.name).c_str());
      return false;
    }
    return true;
  });
}

// Whether a table has the size of its sides and at least one row, and its first
// reference column agrees with the status.
bool table_fits(const KPT_STATE_TABLE_IMPL& table, std::size_t of_r, std::size_t of_t, KPT_ELIM_ENUM status) {
  if (table.get_num_reference_registers() != of_r || table.get_num_transformed_registers() != of_t) {
    return refuse("its table has not its size");
  }
  if (table.get_num_states() == 0) {
    return refuse("its table has no row");
  }
  const bool is_stuck = status == KPT_STUCK_AT_ZERO || status == KPT_STUCK_AT_ONE;
  const int value = status == KPT_STUCK_AT_ONE ? 1 : 0;
  for (unsigned row = 1; is_stuck && row <= table.get_num_states(); ++row) {
    if (of_r == 0 || table.get_reference_entry(static_cast<unsigned short>(row), 1) != value) {
      return refuse("its table contradicts its status");
    }
  }
  return true;
}

bool shape_is_right(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t, const KPT_STATE_TABLE_IMPL* table,
                    KPT_ELIM_ENUM status) {
  const auto none = [](const KPT_REGISTER_NAME&) { return false; };
  if (all_of(r, none) && all_of(t, none)) {
    return refuse("it names no register");
  }
  if (status < KPT_NOT_ELIMINATED || status > KPT_ELIMINATED) {
    return refuse("its status is unknown");
  }
  if (table == nullptr) {
    return (r.size() <= 1 && t.size() <= 1) || refuse("it has several indices and no table");
  }
  return ((r.size() <= MOST && t.size() <= MOST) || refuse("it has too many indices")) &&
         table_fits(*table, r.size(), t.size(), status);
}

}  // namespace

KPT_KEYPOINT* KPT_KEYPOINTS_DB_IMPL::create_noted(KPT_SET_ENUM set, const KPT_REGISTER_NAME& name,
                                                  KPT_KEYPOINT_LIST* created) {
  created->reserve(created->size() + 1 > created->capacity() ? 2 * created->size() + 1 : 0);
  created->push_back(create(set, texts_of(name)));
  return created->back();
}

// `make(name)` returns the keypoint for the group.
template <class MAKE>
NI_PAIR_VECTOR KPT_KEYPOINTS_DB_IMPL::groups_of(const KPT_GROUPS_SIDE& side, MAKE make) {
  NI_PAIR_VECTOR pairs(side.size());
  const auto fill = [&](const auto& names, KPT_KEYPOINT_LIST& group) {
    for (const KPT_REGISTER_NAME& name : names) {
      group.push_back(make(name));
    }
  };
  for (std::size_t k = 0; k < side.size(); ++k) {
    fill(side[k].same, pairs[k].first);
    fill(side[k].inverse, pairs[k].second);
  }
  return pairs;
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                                 const KPT_STATE_TABLE* table, KPT_ELIM_ENUM status) {
  std::unique_ptr<KPT_STATE_TABLE_IMPL> states;
  if (table != nullptr) {
    states = std::make_unique<KPT_STATE_TABLE_IMPL>(create_state_table_impl(*table));
  }
  if (!shape_is_right(r, t, states.get(), status) || !are_new(r, m_reference_set) || !are_new(t, m_transformed_set)) {
    return nullptr;
  }
  return add_groups(r, t, states.get(), status, false);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_groups_as_they_are(const KPT_GROUPS_SIDE& r,
                                                                       const KPT_GROUPS_SIDE& t,
                                                                       const KPT_STATE_TABLE* table,
                                                                       KPT_ELIM_ENUM status) {
  std::unique_ptr<KPT_STATE_TABLE_IMPL> states;
  if (table != nullptr) {
    states = std::make_unique<KPT_STATE_TABLE_IMPL>(create_state_table_impl(*table));
  }
  return add_groups(r, t, states.get(), status, true);
}

KPT_TRANSFORMATION_IMPL* KPT_KEYPOINTS_DB_IMPL::add_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                           KPT_STATE_TABLE_IMPL* states, KPT_ELIM_ENUM status,
                                                           bool as_they_are) {
  KPT_KEYPOINT_LIST of_r;
  KPT_KEYPOINT_LIST of_t;
  const auto maker = [&](KPT_SET_ENUM set, KPT_KEYPOINT_LIST* created) {
    return [this, set, created, as_they_are](const KPT_REGISTER_NAME& name) -> KPT_KEYPOINT* {
      KPT_KEYPOINT* const known = as_they_are ? set_of(set).get_register(texts_of(name)) : nullptr;
      return known != nullptr ? known : create_noted(set, name, created);
    };
  };
  try {
    NI_PAIR_VECTOR r_vector = groups_of(r, maker(KPT_REFERENCE_SET, &of_r));
    NI_PAIR_VECTOR t_vector = groups_of(t, maker(KPT_TRANSFORMED_SET, &of_t));
    return states == nullptr
               ? add_to_transformation_set(std::move(r_vector), std::move(t_vector), status)
               : add_to_transformation_set(std::move(r_vector), std::move(t_vector), std::move(*states), status);
  } catch (...) {
    take_back(KPT_REFERENCE_SET, of_r);
    take_back(KPT_TRANSFORMED_SET, of_t);
    throw;
  }
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_KEYPOINTS_DB_IMPL::add_register_without_map(KPT_SET_ENUM set,
                                                                            const KPT_REGISTER_NAME& name) {
  const bool exists = set_of(set).get_register(texts_of(name)) != nullptr;
  return exists ? nullptr : create(set, texts_of(name));
}
