#include "db/kpt/kpt_keypoint_set.h"

#include <cassert>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint.h"

KPT_REGISTER_KEYPOINT_LIST KPT_KEYPOINT_SET::get_list_of_registers() const {
  assert(m_impl != nullptr);
  KPT_REGISTER_KEYPOINT_LIST list;
  list.reserve(m_impl->size());
  m_impl->for_each_keypoint([&](KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    if (keypoint->is_register()) {
      list.emplace_back(keypoint);
    }
    return true;
  });
  return list;
}

KPT_REGISTER_KEYPOINT KPT_KEYPOINT_SET::get_register(std::string_view name) const {
  assert(m_impl != nullptr);
  return KPT_REGISTER_KEYPOINT(m_impl->get_register(name));
}

KPT_REGISTER_KEYPOINT KPT_KEYPOINT_SET::get_register(std::string_view name, std::string_view entity,
                                                     std::string_view register_type) const {
  assert(m_impl != nullptr);
  return KPT_REGISTER_KEYPOINT(m_impl->get_register(name, entity, register_type));
}
