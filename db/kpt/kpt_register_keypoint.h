// The handle through which clients see a register.
//
// Ownership: none. A copy points to the same register. The handle is good
// until the database of the register is destroyed. Every call but `is_null`
// needs a handle that is not null; debug builds assert it.
#ifndef KPT_REGISTER_KEYPOINT_H
#define KPT_REGISTER_KEYPOINT_H

#include <string_view>

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_REGISTER_KEYPOINT {
 public:
  explicit KPT_REGISTER_KEYPOINT(KPT_REGISTER_KEYPOINT_IMPL* keypoint = nullptr) : m_impl(keypoint) {}

  const KPT_STRING& get_name() const;
  /// Empty for a signal register.
  const KPT_STRING& get_entity_name() const;
  /// The register type; empty for a signal register.
  const KPT_STRING& get_type() const;
  bool is_signal() const;
  bool is_block_instance() const;

  /// Makes the register a signal of that name. The database goes on finding
  /// it under the name it was recorded with.
  bool substitute_with_signal(std::string_view name) const;
  bool substitute_with_instance(std::string_view name, std::string_view entity, std::string_view register_type) const;

  /// Sets the attribute, new or not. Always true. Attributes are not saved.
  bool add_attribute(std::string_view name, std::string_view value) const;
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name) const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const;

  bool is_null() const { return m_impl == nullptr; }

 private:
  KPT_REGISTER_KEYPOINT_IMPL* m_impl;
};

#endif
