// The handle through which clients see all maps of a database.
//
// Ownership: none. A copy points to the same set. The handle is good until its
// database is destroyed. It must not be null for any call but `is_null`; debug
// builds assert it.
#ifndef KPT_TRANSFORMATION_SET_H
#define KPT_TRANSFORMATION_SET_H

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_TRANSFORMATION_SET {
 public:
  explicit KPT_TRANSFORMATION_SET(KPT_TRANSFORMATION_SET_IMPL* set = nullptr) : m_impl(set) {}

  /// A handle for every map, in order of creation.
  KPT_REGISTER_TRANSFORMATION_LIST get_list_of_register_transformations() const;
  bool is_null() const { return m_impl == nullptr; }

 private:
  KPT_TRANSFORMATION_SET_IMPL* m_impl;
};

#endif
