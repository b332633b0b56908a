#include "db/kpt/kpt_transformation_set.h"

#include <cassert>

#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_transformation_set_impl.h"

KPT_REGISTER_TRANSFORMATION_LIST KPT_TRANSFORMATION_SET::get_list_of_register_transformations() const {
  assert(m_impl != nullptr);
  const KPT_TRANSFORMATION_LIST& maps = m_impl->get_list_of_register_transformations();
  KPT_REGISTER_TRANSFORMATION_LIST list;
  list.reserve(maps.size());
  for (KPT_TRANSFORMATION_IMPL* map : maps) {
    list.emplace_back(map);
  }
  return list;
}
