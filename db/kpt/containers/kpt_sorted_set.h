// Values that are sorted once and then searched many times.
//
// Ownership: holds copies of the values.
#ifndef KPT_SORTED_SET_H
#define KPT_SORTED_SET_H

#include <algorithm>
#include <functional>
#include <vector>

#include "h/mem_alloc_sys.h"

/// With more values than this on a map's side, a sorted copy is faster than a walk.
constexpr std::size_t KPT_MOST_WALKED = 16;

template <class T>
class KPT_SORTED_SET {
 public:
  void reserve(std::size_t count) { m_values.reserve(count); }
  void add(const T& value) { m_values.push_back(value); }
  /// Call it when all values have been added.
  void sort() { std::sort(m_values.begin(), m_values.end(), std::less<>()); }
  bool contains(const T& value) const {
    return std::binary_search(m_values.begin(), m_values.end(), value, std::less<>());
  }
  void swap(KPT_SORTED_SET& other) noexcept { m_values.swap(other.m_values); }

 private:
  std::vector<T, MEM_STL_ALLOCATOR<T>> m_values;
};

#endif
