// The handle through which clients see all maps of a database.
//
// Ownership: none. A copy points to the same set. The handle is valid until its
// database is destroyed. Every call but `is_null` needs a handle that is not
// null; debug builds assert this.
#ifndef KPT_TRANSFORMATION_SET_H
#define KPT_TRANSFORMATION_SET_H

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_TRANSFORMATION_SET {
 public:
  explicit KPT_TRANSFORMATION_SET(KPT_TRANSFORMATION_SET_IMPL* set = nullptr) : m_impl(set) {}

  /// Walks over the maps in order of creation without making a list:
  ///   for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set())
  /// Maps may be added and deleted during a walk; added ones are not visited.
  class ITERATOR {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = KPT_REGISTER_TRANSFORMATION;
    using difference_type = std::ptrdiff_t;
    using pointer = const KPT_REGISTER_TRANSFORMATION*;
    using reference = const KPT_REGISTER_TRANSFORMATION&;

    /// The end of every walk.
    ITERATOR() = default;
    const KPT_REGISTER_TRANSFORMATION& operator*() const { return m_map; }
    const KPT_REGISTER_TRANSFORMATION* operator->() const { return &m_map; }
    KPT_EXPORT ITERATOR& operator++();
    void operator++(int) { ++*this; }
    friend bool operator==(const ITERATOR& a, const ITERATOR& b) { return a.m_map == b.m_map; }

   private:
    friend class KPT_TRANSFORMATION_SET;
    const KPT_TRANSFORMATION_LIST* m_list = nullptr;
    std::uint32_t m_position = 0;
    std::uint32_t m_last = 0;
    KPT_REGISTER_TRANSFORMATION m_map;
  };
  using value_type = KPT_REGISTER_TRANSFORMATION;
  using const_iterator = ITERATOR;
  ITERATOR begin() const;
  ITERATOR end() const { return {}; }
  /// The number of maps.
  std::size_t size() const;
  /// The map with that number (see KPT_REGISTER_TRANSFORMATION::get_number), or a
  /// null handle when it was deleted or absorbed: for clients that keep maps
  /// while the database changes.
  KPT_REGISTER_TRANSFORMATION get_map(std::uint32_t number) const;
  /// The number of the map that has the register on that side, without reading the map; 0 when there is none,
  /// for a null handle and for a register of another database. Any value but the transformed side means the
  /// reference side.
  std::uint32_t get_number_of_map(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& keypoint) const;

  /// A handle for every map, in order of creation.
  KPT_REGISTER_TRANSFORMATION_LIST get_list_of_register_transformations() const;
  bool is_null() const { return m_impl == nullptr; }

 private:
  KPT_TRANSFORMATION_SET_IMPL* m_impl;
};

#endif
