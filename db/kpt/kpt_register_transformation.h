// The handle through which clients see a map: what became of a register.
//
// Ownership: none. A copy points to the same map. The handle is valid until the
// map is deleted or absorbed by a merge or a union, or its database is destroyed.
// Every call but `is_null` and `get_fate` needs a handle that is not null; debug
// builds assert this. Registers are returned as handles, which are null where there is none.
//
// An index (from 0) is one bit of the state encoding: index k is column k + 1
// of that side of the state table. An index beyond the side's indices, and an
// index where nothing is recorded, has no register.
#ifndef KPT_REGISTER_TRANSFORMATION_H
#define KPT_REGISTER_TRANSFORMATION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "db/kpt/kpt_fate.h"
#include "db/kpt/kpt_register_group.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_REGISTER_TRANSFORMATION {
 public:
  explicit KPT_REGISTER_TRANSFORMATION(KPT_TRANSFORMATION_IMPL* map = nullptr) : m_impl(map) {}

  /// The map's number in its database, from 1 in order of creation. No other map
  /// ever gets the number, even after this map is deleted.
  std::uint32_t get_number() const;

  /// Whether the map is that of a re-encoded state machine.
  bool has_fsm() const;
  /// An independent copy of the table. A map without a state machine has a table
  /// of the states 0 and 1, or the table that a union with a machine left.
  KPT_STATE_TABLE get_state_table() const;

  /// The representative of the index.
  KPT_REGISTER_KEYPOINT get_reference(unsigned short index) const;
  KPT_REGISTER_KEYPOINT get_transformed(unsigned short index) const;
  /// The registers that hold the same value as the representative.
  KPT_REGISTER_KEYPOINT_LIST get_reference_equivalents(unsigned short index) const;
  KPT_REGISTER_KEYPOINT_LIST get_transformed_equivalents(unsigned short index) const;
  /// The registers that hold the inverse value.
  KPT_REGISTER_KEYPOINT_LIST get_reference_inverted_equivalents(unsigned short index) const;
  KPT_REGISTER_KEYPOINT_LIST get_transformed_inverted_equivalents(unsigned short index) const;

  // The two groups of an index, whatever its representative.

  /// The registers at an index that hold its value, or those that hold the
  /// inverse. Empty beyond the side's indices.
  KPT_REGISTER_GROUP get_reference_group(std::size_t index, bool inverted) const {
    return get_group(KPT_REFERENCE_SET, index, inverted);
  }
  KPT_REGISTER_GROUP get_transformed_group(std::size_t index, bool inverted) const {
    return get_group(KPT_TRANSFORMED_SET, index, inverted);
  }
  KPT_REGISTER_GROUP get_group(KPT_SET_ENUM side, std::size_t index, bool inverted) const;
  /// The number of indices of the side.
  std::size_t get_number_of_indices(KPT_SET_ENUM side) const;

  /// Whether the two representatives have the same value, or inverse values.
  /// Both are false when one of them is only at an index above 0, where the search
  /// does not look. Otherwise both are true in the map of a state machine.
  bool is_positive_unate(unsigned short r_index, unsigned short t_index) const;
  bool is_negative_unate(unsigned short r_index, unsigned short t_index) const;

  /// The number of indices of the side, modulo 65,536; get_number_of_indices has the full number.
  unsigned short get_state_reference_size() const;
  unsigned short get_state_transformed_size() const;
  /// The number of states; 2 for a map without a state machine.
  unsigned short get_number_of_states() const;

  /// Whether and why registers of the map were eliminated.
  KPT_ELIM_ENUM get_elimination() const;
  bool is_stuck_at_zero() const;
  bool is_stuck_at_one() const;
  bool has_no_fanout() const;
  /// What became of the reference registers of the index. It is exact for each
  /// index, while the operations above have one answer for the whole map.
  /// Unknown for a null handle.
  KPT_FATE_ENUM get_fate(unsigned short r_index) const;

  /// Sets or replaces the attribute. Always true. `save_atomically` saves attributes, `save` does not.
  bool add_attribute(std::string_view name, std::string_view value) const;
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name) const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const;
  /// Every attribute, sorted by name.
  KPT_ATTRIBUTE_LIST get_attributes() const;

  bool is_null() const { return m_impl == nullptr; }
  /// Whether both are the same map of the same database, or both null.
  friend bool operator==(const KPT_REGISTER_TRANSFORMATION&, const KPT_REGISTER_TRANSFORMATION&) = default;

 private:
  friend struct std::hash<KPT_REGISTER_TRANSFORMATION>;

  KPT_TRANSFORMATION_IMPL* m_impl;
};

/// For tables whose keys are handles. The value has no other meaning and differs between runs.
template <>
struct std::hash<KPT_REGISTER_TRANSFORMATION> {
  std::size_t operator()(const KPT_REGISTER_TRANSFORMATION& map) const noexcept {
    return std::hash<const void*>()(map.m_impl);
  }
};

#endif
