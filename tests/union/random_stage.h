// Stages recorded at random: a few registers with few names, so that names coincide.
//
// Ownership: a recorder refers to the caller's database, generator and names.
#ifndef TESTS_UNION_RANDOM_STAGE_H
#define TESTS_UNION_RANDOM_STAGE_H

#include <map>
#include <random>
#include <string>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_state_table.h"

namespace kpt_test {

/// The names with which registers were added that have other names now.
using RENAMED = std::map<const KPT_KEYPOINT*, std::string>;

/// Records registers of netlist `r` ("a" for a0 to a9) as registers of netlist `t`.
class RECORDER {
 public:
  RECORDER(KPT_KEYPOINTS_DB_IMPL& db, std::mt19937& random, char r, char t, RENAMED& renamed)
      : m_db(db), m_random(random), m_r(r), m_t(t), m_renamed(renamed) {}

  /// The events that passes record: associations, then events, many of which are refused.
  void record_passes() {
    for (unsigned steps = 1 + below(14); steps > 0; --steps) {
      associate();
    }
    for (unsigned steps = below(10); steps > 0; --steps) {
      event();
    }
  }

  /// The same and, sometimes, what passes cannot record but a file can hold.
  void record_anything() {
    record_passes();
    for (unsigned steps = below(5) == 0 ? below(4) : 0; steps > 0; --steps) {
      add_by_hand();
    }
  }

 private:
  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
  // Mostly a name of that netlist, sometimes a name of the other.
  std::string name(char netlist, char other) {
    return std::string(1, below(8) == 0 ? other : netlist) + std::to_string(below(10));
  }
  std::string r_name() { return name(m_r, m_t); }
  std::string t_name() { return name(m_t, m_r); }
  std::string type() { return "type" + std::to_string(below(2)); }
  std::string entity() { return "entity" + std::to_string(below(2)); }

  void associate() {
    switch (below(10)) {
      case 0:
        m_db.associate_registers_signal_to_instance(r_name(), t_name(), entity(), type());
        break;
      case 1:
        m_db.associate_registers_instance_to_signal(r_name(), entity(), type(), t_name());
        break;
      case 2:
        m_db.associate_registers_instance_to_instance(r_name(), entity(), type(), t_name(), entity(), type());
        break;
      case 3: {
        KPT_STRING_VECTOR r;
        KPT_STRING_VECTOR t;
        for (unsigned k = 1 + below(2); k > 0; --k) {
          r.emplace_back(r_name());
          t.emplace_back(t_name());
        }
        const auto wide = static_cast<unsigned short>(r.size());
        KPT_STATE_TABLE table(2, wide, wide);
        table.set_reference_entry(2, 1, true);
        table.set_transformed_entry(static_cast<unsigned short>(1 + below(2)), wide, true);
        m_db.associate_registers_fsm_signals(r, t, table);
        break;
      }
      default:
        m_db.associate_registers_signal_to_signal(r_name(), t_name());
    }
  }

  void event() {
    switch (below(8)) {
      case 0:
      case 1:
        m_db.set_replicated_registers(t_name(), t_name());
        break;
      case 2:
      case 3:
        m_db.set_merged_registers(t_name(), t_name());
        break;
      case 4:
      case 5:
        m_db.set_inverter_retimed_register(t_name());
        break;
      default:
        m_db.set_eliminated_register(t_name(), static_cast<KPT_ELIM_ENUM>(1 + below(4)));
    }
  }

  KPT_KEYPOINT* any(const KPT_KEYPOINT_SET_IMPL& set) {
    const KPT_KEYPOINT_LIST all = set.get_list_of_keypoints();
    return all.empty() || below(12) == 0 ? nullptr : all[below(static_cast<unsigned>(all.size()))];
  }
  NI_PAIR_VECTOR any_side(const KPT_KEYPOINT_SET_IMPL& set) {
    NI_PAIR_VECTOR side(below(4));
    for (NI_PAIR& pair : side) {
      for (KPT_KEYPOINT_LIST* group : {&pair.first, &pair.second}) {
        // Large groups are searched in another way.
        for (unsigned k = below(10) == 0 ? 20 : below(3); k > 0; --k) {
          group->push_back(any(set));
        }
      }
    }
    return side;
  }

  void add_by_hand() {
    KPT_KEYPOINT_SET_IMPL& r = *m_db.get_reference_set();
    KPT_KEYPOINT_SET_IMPL& t = *m_db.get_transformed_set();
    const KPT_SET_ENUM set = below(2) == 0 ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
    switch (below(5)) {
      case 0:
        m_db.add_to_register_set(set, 500 + below(100), set == KPT_REFERENCE_SET ? r_name() : t_name());
        break;
      case 1: {
        KPT_KEYPOINT* keypoint = any(set == KPT_REFERENCE_SET ? r : t);
        if (keypoint != nullptr) {
          m_renamed.emplace(keypoint, keypoint->get_element_name());
          keypoint->set_element_name(set == KPT_REFERENCE_SET ? r_name() : t_name());
        }
        break;
      }
      case 2:
        for (KPT_TRANSFORMATION_IMPL* map : m_db.get_transformation_set()->get_list_of_register_transformations()) {
          if (below(3) == 0) {
            map->interchange_registers_in_n_i_groups_of_map(set);
          }
        }
        break;
      default:
        m_db.add_to_transformation_set(any_side(r), any_side(t),
                                       static_cast<KPT_ELIM_ENUM>(below(3) == 0 ? below(5) : 0));
    }
  }

  KPT_KEYPOINTS_DB_IMPL& m_db;
  std::mt19937& m_random;
  char m_r;
  char m_t;
  RENAMED& m_renamed;
};

}  // namespace kpt_test

#endif
