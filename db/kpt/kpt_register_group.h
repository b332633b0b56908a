// One group of a map: the registers at an index of one side that hold its
// value, or those that hold the inverse.
//
// Ownership: none, and no copy of the list. Valid until the map is changed,
// deleted or absorbed, or its database is destroyed.
//
// A group may contain null handles, because a file may list ids that it does not
// define.
#ifndef KPT_REGISTER_GROUP_H
#define KPT_REGISTER_GROUP_H

#include <cstddef>
#include <iterator>

#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_REGISTER_GROUP {
 public:
  class ITERATOR {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = KPT_REGISTER_KEYPOINT;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = KPT_REGISTER_KEYPOINT;

    ITERATOR() = default;
    explicit ITERATOR(KPT_KEYPOINT* const* at) : m_at(at) {}
    KPT_REGISTER_KEYPOINT operator*() const { return handle(*m_at); }
    ITERATOR& operator++() {
      ++m_at;
      return *this;
    }
    ITERATOR operator++(int) { return ITERATOR(m_at++); }
    friend bool operator==(const ITERATOR&, const ITERATOR&) = default;

   private:
    KPT_KEYPOINT* const* m_at = nullptr;
  };
  using value_type = KPT_REGISTER_KEYPOINT;
  using const_iterator = ITERATOR;

  /// An empty group.
  KPT_REGISTER_GROUP() = default;
  KPT_REGISTER_GROUP(KPT_KEYPOINT* const* first, std::size_t size) : m_first(first), m_size(size) {}

  ITERATOR begin() const { return ITERATOR(m_first); }
  ITERATOR end() const { return ITERATOR(m_first + m_size); }
  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  /// A null handle beyond the group.
  KPT_REGISTER_KEYPOINT operator[](std::size_t k) const { return handle(k < m_size ? m_first[k] : nullptr); }

  /// The handle of a register; a null handle when the keypoint is not a register.
  static KPT_REGISTER_KEYPOINT handle(KPT_KEYPOINT* keypoint);

 private:
  KPT_KEYPOINT* const* m_first = nullptr;
  std::size_t m_size = 0;
};

#endif
