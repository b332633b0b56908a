// Keypoints that maps may list: few names for many keypoints, so that there are
// namesakes. They have the numbers that plain maps list.
//
// Ownership: a WORLD owns its keypoints, and a set with namesakes of some of them.
#ifndef TESTS_MODEL_KEYPOINT_WORLD_H
#define TESTS_MODEL_KEYPOINT_WORLD_H

#include <cstddef>
#include <deque>
#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "tests/support/plain_map.h"

namespace kpt_test {

class WORLD {
 public:
  WORLD() {
    for (int copy = 0; copy < 2; ++copy) {
      for (const char* name : {"a", "b", "c", "d", "e"}) {
        enter(m_registers.emplace_back(next_id(), name));
      }
      enter(m_registers.emplace_back(next_id(), "a", "u1", "dff"));
      enter(m_registers.emplace_back(next_id(), "a", "u2", "dff"));
      enter(m_registers.emplace_back(next_id(), "b", "u1", "latch"));
    }
    m_keypoints.push_back({&m_no_register, {true, "a", "", ""}, false});
    m_first_of_set = m_keypoints.size();
    for (const char* name : {"a", "c", "e"}) {
      enter(*m_set.add_register(100, name));
    }
    enter(*m_set.add_register(101, "a", "u9", "dff"));
  }
  WORLD(const WORLD&) = delete;
  WORLD& operator=(const WORLD&) = delete;

  std::size_t count() const { return m_keypoints.size(); }
  const KPT_KEYPOINT_SET_IMPL& set() const { return m_set; }

  KPT_KEYPOINT* pointer(std::size_t k) const { return k == plain::NONE ? nullptr : m_keypoints[k].pointer; }
  std::size_t number(const KPT_KEYPOINT* pointer) const {
    for (std::size_t k = 0; k < count(); ++k) {
      if (m_keypoints[k].pointer == pointer) {
        return k;
      }
    }
    return plain::NONE;
  }

  const plain::KEY& name(std::size_t k) const { return m_keypoints[k].key; }
  /// Null for the null keypoint, and for the keypoint that is not a register.
  const plain::KEY* key_of(std::size_t k) const {
    return k == plain::NONE || !m_keypoints[k].is_register ? nullptr : &m_keypoints[k].key;
  }
  /// The set ignores the entities of instances.
  std::size_t namesake_in_set(std::size_t k) const {
    const plain::KEY* key = key_of(k);
    for (std::size_t other = m_first_of_set; key != nullptr && other < count(); ++other) {
      const plain::KEY& of_set = name(other);
      if (of_set.signal == key->signal && of_set.name == key->name && of_set.type == key->type) {
        return other;
      }
    }
    return plain::NONE;
  }

 private:
  struct NUMBERED {
    KPT_KEYPOINT* pointer;
    plain::KEY key;
    bool is_register;
  };

  long next_id() const { return static_cast<long>(m_keypoints.size()) + 1; }
  void enter(KPT_REGISTER_KEYPOINT_IMPL& keypoint) {
    m_keypoints.push_back({&keypoint,
                           {keypoint.register_is_signal(), std::string(keypoint.get_element_name()),
                            std::string(keypoint.get_entity_name()), std::string(keypoint.get_register_type())},
                           true});
  }

  std::deque<KPT_REGISTER_KEYPOINT_IMPL> m_registers;
  KPT_KEYPOINT m_no_register{KPT_REGISTER_TYPE, 99, "a"};
  KPT_KEYPOINT_SET_IMPL m_set;
  std::vector<NUMBERED> m_keypoints;
  std::size_t m_first_of_set = 0;
};

}  // namespace kpt_test

#endif
