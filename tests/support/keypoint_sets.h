// The content of a set of keypoints.
#ifndef TESTS_SUPPORT_KEYPOINT_SETS_H
#define TESTS_SUPPORT_KEYPOINT_SETS_H

#include <string>
#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"

namespace kpt_test {

inline std::vector<std::string> names_in(const KPT_KEYPOINT_SET_IMPL& set) {
  std::vector<std::string> names;
  for (const KPT_KEYPOINT* keypoint : set.get_list_of_keypoints()) {
    names.emplace_back(keypoint->get_element_name());
  }
  return names;
}

inline std::vector<long> ids_in(const KPT_KEYPOINT_SET_IMPL& set) {
  std::vector<long> ids;
  for (const KPT_KEYPOINT* keypoint : set.get_list_of_keypoints()) {
    ids.push_back(keypoint->get_kpid());
  }
  return ids;
}

}  // namespace kpt_test

#endif
