#include "db/kpt/kpt_keypoint_set.h"

#include <cassert>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint.h"

KPT_KEYPOINT_SET::ITERATOR& KPT_KEYPOINT_SET::ITERATOR::operator++() {
  KPT_REGISTER_KEYPOINT_IMPL* next = m_set->walk(m_step, m_count);
  while (next != nullptr && !next->is_register()) {
    next = m_set->walk(m_step, m_count);
  }
  m_keypoint = KPT_REGISTER_KEYPOINT(next);
  return *this;
}

KPT_KEYPOINT_SET::ITERATOR KPT_KEYPOINT_SET::begin() const {
  assert(m_impl != nullptr);
  ITERATOR first;
  first.m_set = m_impl;
  first.m_count = m_impl->count();
  return ++first;
}

std::size_t KPT_KEYPOINT_SET::size() const {
  assert(m_impl != nullptr);
  return m_impl->size();
}

KPT_REGISTER_KEYPOINT_LIST KPT_KEYPOINT_SET::get_list_of_registers() const {
  assert(m_impl != nullptr);
  KPT_REGISTER_KEYPOINT_LIST list;
  list.reserve(size());
  for (const KPT_REGISTER_KEYPOINT& keypoint : *this) {
    list.push_back(keypoint);
  }
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
