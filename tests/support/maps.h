// Maps as short texts. "a b~c|~d" is a side of two indices: a and b are in the n
// group and c in the i group of index 0, d is in the i group of index 1. "~" is
// an index with two empty groups, "" a side without indices, "null" a null
// keypoint.
//
// Ownership: REGISTERS owns every keypoint that it makes and has to outlive the maps.
#ifndef TESTS_SUPPORT_MAPS_H
#define TESTS_SUPPORT_MAPS_H

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_transformation_impl.h"

namespace kpt_test {

class REGISTERS {
 public:
  /// The signal register of that name, which the first call makes; ids count from 1.
  KPT_REGISTER_KEYPOINT_IMPL* operator[](const std::string& name) {
    KPT_REGISTER_KEYPOINT_IMPL*& keypoint = m_signals[name];
    if (keypoint == nullptr) {
      keypoint = keep(new KPT_REGISTER_KEYPOINT_IMPL(next_id(), name));
    }
    return keypoint;
  }

  /// More keypoints; every call makes new ones.
  KPT_REGISTER_KEYPOINT_IMPL* another(const std::string& name) {
    return keep(new KPT_REGISTER_KEYPOINT_IMPL(next_id(), name));
  }
  KPT_REGISTER_KEYPOINT_IMPL* instance(const std::string& name, const std::string& entity, const std::string& type) {
    return keep(new KPT_REGISTER_KEYPOINT_IMPL(next_id(), name, entity, type));
  }
  KPT_KEYPOINT* no_register(const std::string& name) {
    return keep(new KPT_KEYPOINT(KPT_REGISTER_TYPE, next_id(), name));
  }

  KPT_KEYPOINT_LIST list(const std::string& names) {
    KPT_KEYPOINT_LIST keypoints;
    std::istringstream words(names);
    for (std::string word; words >> word;) {
      keypoints.push_back(word == "null" ? nullptr : (*this)[word]);
    }
    return keypoints;
  }

  NI_PAIR_VECTOR side(const std::string& text) {
    NI_PAIR_VECTOR pairs;
    std::istringstream indices(text);
    for (std::string index; std::getline(indices, index, '|');) {
      const std::size_t tilde = index.find('~');
      pairs.push_back({list(index.substr(0, tilde)), list(index.substr(tilde + 1))});
    }
    return pairs;
  }

 private:
  long next_id() const { return static_cast<long>(m_all.size()) + 1; }

  template <class KEYPOINT>
  KEYPOINT* keep(KEYPOINT* keypoint) {
    m_all.emplace_back(keypoint);
    return keypoint;
  }

  std::vector<std::unique_ptr<KPT_KEYPOINT>> m_all;
  std::map<std::string, KPT_REGISTER_KEYPOINT_IMPL*> m_signals;
};

inline std::string text_of(const KPT_KEYPOINT* keypoint) {
  return keypoint == nullptr ? std::string("null") : std::string(keypoint->get_element_name());
}

inline std::string text_of(const KPT_KEYPOINT_LIST& group) {
  std::string text;
  for (const KPT_KEYPOINT* keypoint : group) {
    text += (text.empty() ? "" : " ") + text_of(keypoint);
  }
  return text;
}

inline std::string text_of(const NI_PAIR_VECTOR& side) {
  std::string text;
  for (const NI_PAIR& pair : side) {
    text += (text.empty() ? "" : "|") + text_of(pair.first) + "~" + text_of(pair.second);
  }
  return text;
}

/// Both sides: "a~ -> b~".
inline std::string text_of(const KPT_TRANSFORMATION_IMPL& map) {
  return text_of(map.r_vec()) + " -> " + text_of(map.t_vec());
}

}  // namespace kpt_test

#endif
