// The handle through which clients see a register.
//
// Ownership: none. A copy points to the same register. The handle is valid
// until the database of the register is destroyed. Every call but `is_null`
// needs a handle that is not null; debug builds assert this.
#ifndef KPT_REGISTER_KEYPOINT_H
#define KPT_REGISTER_KEYPOINT_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_REGISTER_KEYPOINT {
 public:
  explicit KPT_REGISTER_KEYPOINT(KPT_REGISTER_KEYPOINT_IMPL* keypoint = nullptr) : m_impl(keypoint) {}

  const KPT_STRING& get_name() const;
  /// The id, which identifies a register of a side in a database file.
  long get_id() const;
  /// The side on which the register was recorded; empty when no database made
  /// it. In a united database a map may list a register of the transformed side on
  /// its reference side. This is the side of the register, not that of the list.
  std::optional<KPT_SET_ENUM> get_side() const;
  /// Empty for a signal register.
  const KPT_STRING& get_entity_name() const;
  /// The register type; empty for a signal register.
  const KPT_STRING& get_type() const;
  bool is_signal() const;
  bool is_block_instance() const;

  /// Makes the register a signal of that name. The database finds it only
  /// under the name with which it was recorded.
  bool substitute_with_signal(std::string_view name) const;
  bool substitute_with_instance(std::string_view name, std::string_view entity, std::string_view register_type) const;

  /// Sets or replaces the attribute. Always true. `save_atomically` saves attributes, `save` does not.
  bool add_attribute(std::string_view name, std::string_view value) const;
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name) const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const;
  /// Every attribute, sorted by name.
  KPT_ATTRIBUTE_LIST get_attributes() const;

  bool is_null() const { return m_impl == nullptr; }
  /// Whether both are the same register of the same database, or both null.
  friend bool operator==(const KPT_REGISTER_KEYPOINT&, const KPT_REGISTER_KEYPOINT&) = default;

 private:
  friend class KPT_KEYPOINTS_DB;
  friend class KPT_TRANSFORMATION_SET;
  friend struct std::hash<KPT_REGISTER_KEYPOINT>;

  KPT_REGISTER_KEYPOINT_IMPL* m_impl;
};

/// For tables whose keys are handles. The value has no other meaning and differs between runs.
template <>
struct std::hash<KPT_REGISTER_KEYPOINT> {
  std::size_t operator()(const KPT_REGISTER_KEYPOINT& keypoint) const noexcept {
    return std::hash<const void*>()(keypoint.m_impl);
  }
};

#endif
