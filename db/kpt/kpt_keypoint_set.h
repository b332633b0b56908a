// The handle through which clients see the registers of one netlist.
//
// Ownership: none. A copy points to the same set. The handle is good until its
// database is destroyed. It must not be null for any call but `is_null`; debug
// builds assert it.
#ifndef KPT_KEYPOINT_SET_H
#define KPT_KEYPOINT_SET_H

#include <string_view>

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_KEYPOINT_SET {
 public:
  explicit KPT_KEYPOINT_SET(KPT_KEYPOINT_SET_IMPL* set = nullptr) : m_impl(set) {}

  /// Every register: signals, then block instances, each in order of creation.
  KPT_REGISTER_KEYPOINT_LIST get_list_of_registers() const;
  /// The signal register of that name, or a null handle.
  KPT_REGISTER_KEYPOINT get_register(std::string_view name) const;
  /// The block instance of that name and register type, or a null handle. The entity is ignored.
  KPT_REGISTER_KEYPOINT get_register(std::string_view name, std::string_view entity,
                                     std::string_view register_type) const;
  bool is_null() const { return m_impl == nullptr; }

 private:
  KPT_KEYPOINT_SET_IMPL* m_impl;
};

#endif
