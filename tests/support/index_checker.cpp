#include "tests/support/index_checker.h"

#include <cstddef>
#include <map>

#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_transformation_set_impl.h"

namespace {

using kpt_test::INDEX_FACTS;
using LISTING_MAPS = std::vector<const KPT_TRANSFORMATION_IMPL*>;

class CHECK {
 public:
  CHECK(const KPT_TRANSFORMATION_SET_IMPL& maps, std::vector<std::string>& differences)
      : m_maps(maps), m_differences(differences) {
    for (const KPT_TRANSFORMATION_IMPL* map : maps.get_list_of_register_transformations()) {
      m_numbers.emplace(map, m_numbers.size());
    }
  }

  void side(KPT_SET_ENUM set, const std::vector<const KPT_KEYPOINT*>& further, const INDEX_FACTS& facts) {
    std::map<const KPT_KEYPOINT*, LISTING_MAPS> listed;
    for (const KPT_TRANSFORMATION_IMPL* map : m_maps.get_list_of_register_transformations()) {
      for (const NI_PAIR& pair : set == KPT_REFERENCE_SET ? map->r_vec() : map->t_vec()) {
        for (const KPT_KEYPOINT_LIST* group : {&pair.first, &pair.second}) {
          for (const KPT_KEYPOINT* keypoint : *group) {
            LISTING_MAPS& its_maps = listed[keypoint];
            if (its_maps.empty() || its_maps.back() != map) {
              its_maps.push_back(map);
            }
          }
        }
      }
    }
    // A keypoint that no map lists must be looked up as well: it must have no map.
    for (const INDEX_FACTS::KEYPOINTS* named : {&facts.erased, &facts.repointed, &facts.entered}) {
      for (const KPT_KEYPOINT* keypoint : *named) {
        listed[keypoint];
      }
    }
    for (const KPT_KEYPOINT* keypoint : further) {
      listed[keypoint];
    }

    std::size_t entries = 0;
    for (const auto& [keypoint, its_maps] : listed) {
      const KPT_TRANSFORMATION_IMPL* found =
          set == KPT_REFERENCE_SET ? m_maps.get_map_of_r_keypoint(keypoint) : m_maps.get_map_of_t_keypoint(keypoint);
      entries += found == nullptr ? 0U : 1U;
      keypoint_entry(set, keypoint, its_maps, found, facts);
    }
    const std::size_t size = m_maps.index_size(set);
    if (size < entries || size > entries + facts.dead) {
      report(set, "has " + std::to_string(size) + " entries where " + std::to_string(entries) + " lead to a map and " +
                      std::to_string(facts.dead) + " may lead to none");
    }
  }

 private:
  void keypoint_entry(KPT_SET_ENUM set, const KPT_KEYPOINT* keypoint, const LISTING_MAPS& its_maps,
                      const KPT_TRANSFORMATION_IMPL* found, const INDEX_FACTS& facts) {
    if (keypoint == nullptr) {
      if (found != nullptr) {
        report(set, "leads from null to " + name(found));
      }
      return;
    }
    const KPT_TRANSFORMATION_IMPL* newest = its_maps.empty() ? nullptr : its_maps.back();
    if (found == newest) {
      return;
    }
    const std::string wanted = ", not to " + name(newest);
    const std::string what = "leads from " + name(keypoint) + " to " + name(found) + wanted;
    if (found != nullptr && !m_numbers.contains(found)) {
      report(set, what);
    } else if (found == nullptr) {
      explained(set, what, keypoint, facts.erased);
    } else {
      bool lists_it = false;
      for (const KPT_TRANSFORMATION_IMPL* map : its_maps) {
        lists_it = lists_it || map == found;
      }
      explained(set, what, keypoint, lists_it ? facts.repointed : facts.entered);
    }
  }

  void explained(KPT_SET_ENUM set, const std::string& what, const KPT_KEYPOINT* keypoint,
                 const INDEX_FACTS::KEYPOINTS& fact) {
    if (!fact.contains(keypoint)) {
      report(set, what);
    }
  }

  void report(KPT_SET_ENUM set, const std::string& what) {
    m_differences.push_back((set == KPT_REFERENCE_SET ? "the reference index " : "the transformed index ") + what);
  }

  static std::string name(const KPT_KEYPOINT* keypoint) {
    return "'" + std::string(keypoint->get_element_name()) + "' (id " + std::to_string(keypoint->get_kpid()) + ")";
  }

  std::string name(const KPT_TRANSFORMATION_IMPL* map) const {
    if (map == nullptr) {
      return "no map";
    }
    const auto number = m_numbers.find(map);
    return number == m_numbers.end() ? "a map that is not of the set" : "map " + std::to_string(number->second);
  }

  const KPT_TRANSFORMATION_SET_IMPL& m_maps;
  std::vector<std::string>& m_differences;
  std::map<const KPT_TRANSFORMATION_IMPL*, std::size_t> m_numbers;
};

}  // namespace

std::vector<std::string> kpt_test::index_differences(const KPT_TRANSFORMATION_SET_IMPL& maps,
                                                     const std::vector<const KPT_KEYPOINT*>& further_keypoints,
                                                     const EXPLANATIONS& facts) {
  std::vector<std::string> differences;
  CHECK check(maps, differences);
  check.side(KPT_REFERENCE_SET, further_keypoints, facts.r);
  check.side(KPT_TRANSFORMED_SET, further_keypoints, facts.t);
  return differences;
}

std::vector<std::string> kpt_test::index_differences(KPT_KEYPOINTS_DB_IMPL& db, const EXPLANATIONS& facts) {
  std::vector<const KPT_KEYPOINT*> keypoints;
  for (const KPT_KEYPOINT_SET_IMPL* set : {db.get_reference_set(), db.get_transformed_set()}) {
    for (const KPT_KEYPOINT* keypoint : set->get_list_of_keypoints()) {
      keypoints.push_back(keypoint);
    }
  }
  return index_differences(*db.get_transformation_set(), keypoints, facts);
}
