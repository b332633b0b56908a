// A vector whose first element lives inside the object.
//
// Ownership: the vector owns its elements. A copy is independent. Growth, erase
// and swap make iterators and references invalid.
//
// Nearly every group of a map holds one keypoint, and nearly every side has one
// pair of groups. So a single element is stored in the vector itself: 16 bytes
// for a group, 40 for a side, and no allocation. (boost::container::small_vector
// takes 32 and 56 bytes, which adds half to the size of a plain map.)
#ifndef KPT_SMALL_VECTOR_H
#define KPT_SMALL_VECTOR_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "h/mem_alloc_sys.h"

template <class T>
class KPT_SMALL_VECTOR {
 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using pointer = T*;
  using const_pointer = const T*;
  using iterator = T*;
  using const_iterator = const T*;
  using allocator_type = MEM_STL_ALLOCATOR<T>;

  // A defaulted constructor would be deleted, because it would have to construct the element of the union.
  KPT_SMALL_VECTOR() noexcept {}  // NOLINT(modernize-use-equals-default)
  explicit KPT_SMALL_VECTOR(size_type count) {
    guarded([&] { resize(count); });
  }
  KPT_SMALL_VECTOR(size_type count, const T& value) {
    guarded([&] {
      reserve(count);
      for (size_type k = 0; k < count; ++k) {
        push_back(value);
      }
    });
  }
  KPT_SMALL_VECTOR(std::initializer_list<T> items) : KPT_SMALL_VECTOR(items.begin(), items.end()) {}
  template <std::forward_iterator I>
  KPT_SMALL_VECTOR(I first, I last) {
    guarded([&] { append_all(first, last); });
  }
  KPT_SMALL_VECTOR(const KPT_SMALL_VECTOR& other) {
    if (other.m_size == 1) {
      append(other.front());
    } else if (other.m_size > 1) {
      guarded([&] { append_all(other.begin(), other.end()); });
    }
  }
  KPT_SMALL_VECTOR(KPT_SMALL_VECTOR&& other) noexcept { take(other); }
  ~KPT_SMALL_VECTOR() { release(); }

  KPT_SMALL_VECTOR& operator=(const KPT_SMALL_VECTOR& other) {
    if (this != &other) {
      KPT_SMALL_VECTOR copy(other);
      release();
      take(copy);
    }
    return *this;
  }
  KPT_SMALL_VECTOR& operator=(KPT_SMALL_VECTOR&& other) noexcept {
    if (this != &other) {
      release();
      take(other);
    }
    return *this;
  }

  iterator begin() noexcept { return data(); }
  iterator end() noexcept { return data() + m_size; }
  const_iterator begin() const noexcept { return data(); }
  const_iterator end() const noexcept { return data() + m_size; }
  const_iterator cbegin() const noexcept { return begin(); }
  const_iterator cend() const noexcept { return end(); }

  T* data() noexcept { return is_inline() ? &m_inline : m_heap; }
  const T* data() const noexcept { return is_inline() ? &m_inline : m_heap; }
  size_type size() const noexcept { return m_size; }
  size_type capacity() const noexcept { return is_inline() ? 1 : m_capacity; }
  bool empty() const noexcept { return m_size == 0; }
  T& operator[](size_type k) { return data()[k]; }
  const T& operator[](size_type k) const { return data()[k]; }
  T& front() { return *begin(); }
  const T& front() const { return *begin(); }
  T& back() { return end()[-1]; }
  const T& back() const { return end()[-1]; }

  void reserve(size_type count) {
    if (count > capacity()) {
      grow(count);
    }
  }
  void resize(size_type count) {
    reserve(count);
    while (m_size < count) {
      emplace_back();
    }
    truncate(count);
  }
  void push_back(const T& value) { emplace_back(value); }
  void push_back(T&& value) { emplace_back(std::move(value)); }
  template <class... A>
  T& emplace_back(A&&... arguments) {
    if (m_size == capacity()) {
      // The arguments may refer to an element of this vector, so the value is built before the vector grows.
      T value(std::forward<A>(arguments)...);
      grow(2 * static_cast<size_type>(m_size));
      return *append(std::move(value));
    }
    return *append(std::forward<A>(arguments)...);
  }
  void pop_back() { truncate(m_size - 1); }
  iterator erase(const_iterator position) { return erase(position, position + 1); }
  iterator erase(const_iterator first, const_iterator last) {
    iterator to = begin() + (first - begin());
    iterator from = begin() + (last - begin());
    iterator result = to;
    for (; from != end(); ++from, ++to) {
      *to = std::move(*from);
    }
    truncate(static_cast<size_type>(to - begin()));
    return result;
  }
  void clear() noexcept { truncate(0); }
  void swap(KPT_SMALL_VECTOR& other) noexcept {
    KPT_SMALL_VECTOR mine(std::move(*this));
    take(other);
    other.take(mine);
  }
  friend void swap(KPT_SMALL_VECTOR& a, KPT_SMALL_VECTOR& b) noexcept { a.swap(b); }

  friend bool operator==(const KPT_SMALL_VECTOR& a, const KPT_SMALL_VECTOR& b) {
    if (a.size() != b.size()) {
      return false;
    }
    for (size_type k = 0; k < a.size(); ++k) {
      if (!(a[k] == b[k])) {
        return false;
      }
    }
    return true;
  }

 private:
  static_assert(std::is_nothrow_move_constructible_v<T>);
  using ALLOCATOR = MEM_STL_ALLOCATOR<T>;

  // A constructor that throws runs no destructor, so the elements that were built are destroyed here.
  template <class F>
  void guarded(F&& build) {
    try {
      build();
    } catch (...) {
      release();
      throw;
    }
  }

  bool is_inline() const noexcept { return m_capacity == 0; }

  template <class... A>
  T* append(A&&... arguments) {
    T* place = std::construct_at(data() + m_size, std::forward<A>(arguments)...);
    ++m_size;
    return place;
  }

  template <class I>
  void append_all(I first, I last) {
    reserve(static_cast<size_type>(std::distance(first, last)));
    for (; first != last; ++first) {
      emplace_back(*first);
    }
  }

  void truncate(size_type count) noexcept {
    while (m_size > count) {
      std::destroy_at(data() + --m_size);
    }
  }

  void grow(size_type count) {
    if (count > std::numeric_limits<std::uint32_t>::max()) {
      throw std::bad_alloc();
    }
    T* block = ALLOCATOR().allocate(count);
    const size_type kept = m_size;
    for (size_type k = 0; k < kept; ++k) {
      std::construct_at(block + k, std::move((*this)[k]));
    }
    release();
    m_heap = block;
    m_capacity = static_cast<std::uint32_t>(count);
    m_size = static_cast<std::uint32_t>(kept);
  }

  void release() noexcept {
    truncate(0);
    if (!is_inline()) {
      ALLOCATOR().deallocate(m_heap, m_capacity);
      m_capacity = 0;
    }
  }

  // Requires that this vector is empty and has no block.
  void take(KPT_SMALL_VECTOR& other) noexcept {
    if (other.is_inline()) {
      if (other.m_size != 0) {
        append(std::move(other.m_inline));
        other.truncate(0);
      }
      return;
    }
    m_heap = other.m_heap;
    m_capacity = std::exchange(other.m_capacity, 0U);
    m_size = std::exchange(other.m_size, 0U);
  }

  std::uint32_t m_size = 0;
  std::uint32_t m_capacity = 0;  // 0: the element is in the vector itself
  union {
    T m_inline;
    T* m_heap;
  };
};

#endif
