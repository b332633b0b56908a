// The handle through which clients see the registers of one netlist.
//
// Ownership: none. A copy points to the same set. The handle is valid until its
// database is destroyed. Every call but `is_null` needs a handle that is not
// null; debug builds assert this.
#ifndef KPT_KEYPOINT_SET_H
#define KPT_KEYPOINT_SET_H

#include <cstddef>
#include <iterator>
#include <string_view>

#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_KEYPOINT_SET {
 public:
  explicit KPT_KEYPOINT_SET(KPT_KEYPOINT_SET_IMPL* set = nullptr) : m_impl(set) {}

  /// Walks over the registers without making a list:
  ///   for (const KPT_REGISTER_KEYPOINT& keypoint : db.get_reference_set())
  /// Signals come first, then block instances, each in order of creation.
  /// Registers may be added and deleted during a walk; added ones are not visited.
  class ITERATOR {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = KPT_REGISTER_KEYPOINT;
    using difference_type = std::ptrdiff_t;
    using pointer = const KPT_REGISTER_KEYPOINT*;
    using reference = const KPT_REGISTER_KEYPOINT&;

    /// The end of every walk.
    ITERATOR() = default;
    const KPT_REGISTER_KEYPOINT& operator*() const { return m_keypoint; }
    const KPT_REGISTER_KEYPOINT* operator->() const { return &m_keypoint; }
    KPT_EXPORT ITERATOR& operator++();
    void operator++(int) { ++*this; }
    friend bool operator==(const ITERATOR& a, const ITERATOR& b) { return a.m_keypoint == b.m_keypoint; }

   private:
    friend class KPT_KEYPOINT_SET;
    const KPT_KEYPOINT_SET_IMPL* m_set = nullptr;
    std::size_t m_step = 0;
    std::size_t m_count = 0;
    KPT_REGISTER_KEYPOINT m_keypoint;
  };
  using value_type = KPT_REGISTER_KEYPOINT;
  using const_iterator = ITERATOR;
  ITERATOR begin() const;
  ITERATOR end() const { return {}; }
  /// The number of registers.
  std::size_t size() const;

  /// Every register, in the order of a walk.
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
