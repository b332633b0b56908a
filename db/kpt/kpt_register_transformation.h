// The handle through which clients see a map: what became of a register.
//
// Ownership: none. A copy points to the same map. The handle is good until the
// map is deleted or absorbed by a merge or a union, or its database destroyed.
// Every call but `is_null` needs a handle that is not null; debug builds
// assert it. Registers come back as handles, a null one for what is no register.
//
// An index (from 0) is one bit of the state encoding: index k is column k + 1
// of that side of the state table. Beyond the side's size, and where nothing is
// recorded, there is no register.
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

  /// The map's number in its database, from 1 in order of creation. It is given
  /// out once: after the map's end it stands for no other.
  std::uint32_t get_number() const;

  /// Whether the registers are those of a re-encoded state machine.
  bool has_fsm() const;
  /// An independent copy. Without a state machine: the table of a register
  /// that is kept as it is, unless a union with a state machine left another.
  KPT_STATE_TABLE get_state_table() const;

  /// The representative of the index.
  KPT_REGISTER_KEYPOINT get_reference(unsigned short index) const;
  KPT_REGISTER_KEYPOINT get_transformed(unsigned short index) const;
  /// The registers that carry the same value as the representative.
  KPT_REGISTER_KEYPOINT_LIST get_reference_equivalents(unsigned short index) const;
  KPT_REGISTER_KEYPOINT_LIST get_transformed_equivalents(unsigned short index) const;
  /// The registers that carry the inverse value.
  KPT_REGISTER_KEYPOINT_LIST get_reference_inverted_equivalents(unsigned short index) const;
  KPT_REGISTER_KEYPOINT_LIST get_transformed_inverted_equivalents(unsigned short index) const;

  // The map as it is: what each index lists, whatever its representative.

  /// The registers that an index lists with their value as it is, or with the
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

  /// Whether the two representatives move together, or against each other.
  /// Both answer false for registers that stand at a further index only, and
  /// both answer true for those of a state machine.
  bool is_positive_unate(unsigned short r_index, unsigned short t_index) const;
  bool is_negative_unate(unsigned short r_index, unsigned short t_index) const;

  /// The number of indices of the side, modulo 65,536; get_number_of_indices has all of them.
  unsigned short get_state_reference_size() const;
  unsigned short get_state_transformed_size() const;
  /// 2 without a state machine.
  unsigned short get_number_of_states() const;

  /// Whether and why registers of the map were eliminated.
  KPT_ELIM_ENUM get_elimination() const;
  bool is_stuck_at_zero() const;
  bool is_stuck_at_one() const;
  bool has_no_fanout() const;
  /// What became of the reference registers of the index, exactly: of a map
  /// with several indices the questions above speak of all of them alike.
  /// Unknown for a null handle.
  KPT_FATE_ENUM get_fate(unsigned short r_index) const;

  /// Sets the attribute, new or not. Always true. `save_atomically` keeps attributes, `save` does not.
  bool add_attribute(std::string_view name, std::string_view value) const;
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name) const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const;
  /// Every attribute, in the order of the names.
  KPT_ATTRIBUTE_LIST get_attributes() const;

  bool is_null() const { return m_impl == nullptr; }
  /// Whether both are the same map of the same database, or both null.
  friend bool operator==(const KPT_REGISTER_TRANSFORMATION&, const KPT_REGISTER_TRANSFORMATION&) = default;

 private:
  friend struct std::hash<KPT_REGISTER_TRANSFORMATION>;

  KPT_TRANSFORMATION_IMPL* m_impl;
};

/// For tables whose keys are handles. The value says nothing else and differs from run to run.
template <>
struct std::hash<KPT_REGISTER_TRANSFORMATION> {
  std::size_t operator()(const KPT_REGISTER_TRANSFORMATION& map) const noexcept {
    return std::hash<const void*>()(map.m_impl);
  }
};

#endif
