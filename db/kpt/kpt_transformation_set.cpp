#include "db/kpt/kpt_transformation_set.h"

#include <cassert>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_transformation_set_impl.h"

KPT_TRANSFORMATION_SET::ITERATOR& KPT_TRANSFORMATION_SET::ITERATOR::operator++() {
  KPT_TRANSFORMATION_IMPL* next = nullptr;
  while (next == nullptr && m_position < m_last) {
    next = m_list->at(++m_position);
  }
  m_map = KPT_REGISTER_TRANSFORMATION(next);
  return *this;
}

KPT_TRANSFORMATION_SET::ITERATOR KPT_TRANSFORMATION_SET::begin() const {
  assert(m_impl != nullptr);
  ITERATOR first;
  first.m_list = &m_impl->get_list_of_register_transformations();
  first.m_last = first.m_list->last_position();
  return ++first;
}

std::size_t KPT_TRANSFORMATION_SET::size() const {
  assert(m_impl != nullptr);
  return m_impl->get_list_of_register_transformations().size();
}

KPT_REGISTER_TRANSFORMATION KPT_TRANSFORMATION_SET::get_map(std::uint32_t number) const {
  assert(m_impl != nullptr);
  return KPT_REGISTER_TRANSFORMATION(m_impl->get_list_of_register_transformations().at(number));
}

std::uint32_t KPT_TRANSFORMATION_SET::get_number_of_map(KPT_SET_ENUM side,
                                                        const KPT_REGISTER_KEYPOINT& keypoint) const {
  assert(m_impl != nullptr);
  return m_impl->get_position_of_map(side, keypoint.m_impl);
}

KPT_REGISTER_TRANSFORMATION_LIST KPT_TRANSFORMATION_SET::get_list_of_register_transformations() const {
  KPT_REGISTER_TRANSFORMATION_LIST list;
  list.reserve(size());
  for (const KPT_REGISTER_TRANSFORMATION& map : *this) {
    list.push_back(map);
  }
  return list;
}
