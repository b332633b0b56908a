// Databases in short texts: recorded through the handle and read as
// text.
//
// Ownership: a DATABASE owns its database, which is not registered with a manager.
#ifndef TESTS_SUPPORT_DATABASES_H
#define TESTS_SUPPORT_DATABASES_H

#include <string>
#include <string_view>
#include <vector>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/maps.h"
#include "tests/support/messages.h"
#include "tests/support/state_table_text.h"

namespace kpt_test {

/// Words separated by blanks.
inline KPT_STRING_VECTOR names(const std::string& text) {
  KPT_STRING_VECTOR result;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    result.emplace_back(word);
  }
  return result;
}

inline std::string text_of(const KPT_TRANSFORMATION_IMPL* map) {
  return map == nullptr ? std::string("none") : text_of(*map);
}

class DATABASE {
 public:
  explicit DATABASE(std::string_view name = "d") : m_db(new KPT_KEYPOINTS_DB_IMPL(name)), m_handle(m_db) {}
  ~DATABASE() { delete m_db; }
  DATABASE(const DATABASE&) = delete;
  DATABASE& operator=(const DATABASE&) = delete;

  const KPT_KEYPOINTS_DB* operator->() const { return &m_handle; }
  KPT_KEYPOINTS_DB_IMPL& impl() const { return *m_db; }
  KPT_TRANSFORMATION_SET_IMPL& set() const { return *m_db->get_transformation_set(); }

  bool fsm(const std::string& r_names, const std::string& t_names, const STATES& states) const {
    return m_handle.associate_registers_fsm_signals(names(r_names), names(t_names),
                                                    KPT_STATE_TABLE(make_table(states)));
  }

  KPT_REGISTER_KEYPOINT_IMPL* r(std::string_view name) const { return m_db->get_reference_set()->get_register(name); }
  KPT_REGISTER_KEYPOINT_IMPL* t(std::string_view name) const { return m_db->get_transformed_set()->get_register(name); }
  KPT_TRANSFORMATION_IMPL* r_map(std::string_view name) const {
    return m_db->get_reference_register_transformation(name);
  }
  KPT_TRANSFORMATION_IMPL* t_map(std::string_view name) const {
    return m_db->get_transformed_register_transformation(name);
  }

  /// The map of a register, "none" when it has none.
  std::string of_r(std::string_view name) const { return text_of(r_map(name)); }
  std::string of_t(std::string_view name) const { return text_of(t_map(name)); }

  /// All maps, in order.
  std::vector<std::string> maps() const {
    std::vector<std::string> texts;
    for (const KPT_TRANSFORMATION_IMPL* map : set().get_list_of_register_transformations()) {
      texts.push_back(text_of(*map));
    }
    return texts;
  }
  /// The names of all registers of a side, in order.
  std::string r_names() const { return text_of(m_db->get_reference_set()->get_list_of_keypoints()); }
  std::string t_names() const { return text_of(m_db->get_transformed_set()->get_list_of_keypoints()); }

 private:
  KPT_KEYPOINTS_DB_IMPL* m_db;
  KPT_KEYPOINTS_DB m_handle;
};

}  // namespace kpt_test

#endif
