// The maps of a transformation set, in order of creation.
//
// Ownership: none; the set owns the maps. Iterators stay valid while maps are
// added or deleted: a walk skips deleted maps and does not visit added ones.
//
// A map's position (from 1) is never used for another map. So an index that
// names a position finds that map or, when it was deleted, none.
#ifndef KPT_TRANSFORMATION_LIST_H
#define KPT_TRANSFORMATION_LIST_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_TRANSFORMATION_LIST {
 public:
  /// The position of a map in its set, from 1; 0 means no map.
  using MAP_POSITION = std::uint32_t;

  class ITERATOR {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = KPT_TRANSFORMATION_IMPL*;
    using difference_type = std::ptrdiff_t;
    using pointer = KPT_TRANSFORMATION_IMPL* const*;
    using reference = KPT_TRANSFORMATION_IMPL*;

    ITERATOR() = default;
    ITERATOR(const KPT_TRANSFORMATION_LIST* list, std::size_t cell)
        : m_list(list), m_cell(cell), m_end(list->m_cells.size()) {
      skip();
    }
    KPT_TRANSFORMATION_IMPL* operator*() const { return m_list->m_cells[m_cell]; }
    ITERATOR& operator++() {
      ++m_cell;
      skip();
      return *this;
    }
    ITERATOR operator++(int) {
      ITERATOR before = *this;
      ++*this;
      return before;
    }
    // A walk ends where the list ended when the walk began. Two iterators that
    // are at their ends are equal, even if these ends differ.
    friend bool operator==(const ITERATOR& a, const ITERATOR& b) {
      return a.m_cell == b.m_cell || (a.done() && b.done());
    }

   private:
    bool done() const { return m_cell >= m_end; }
    void skip() {
      while (!done() && m_list->m_cells[m_cell] == nullptr) {
        ++m_cell;
      }
    }
    const KPT_TRANSFORMATION_LIST* m_list = nullptr;
    std::size_t m_cell = 0;
    std::size_t m_end = 0;
  };
  using value_type = KPT_TRANSFORMATION_IMPL*;
  using iterator = ITERATOR;
  using const_iterator = ITERATOR;

  KPT_TRANSFORMATION_LIST() = default;
  KPT_TRANSFORMATION_LIST(const KPT_TRANSFORMATION_LIST&) = delete;
  KPT_TRANSFORMATION_LIST& operator=(const KPT_TRANSFORMATION_LIST&) = delete;

  ITERATOR begin() const { return {this, 0}; }
  ITERATOR end() const { return {this, m_cells.size()}; }
  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  /// Null when the list is empty.
  KPT_TRANSFORMATION_IMPL* front() const { return empty() ? nullptr : *begin(); }
  KPT_TRANSFORMATION_IMPL* back() const;

  /// The map at a position (from 1); null when it was deleted or never existed.
  KPT_TRANSFORMATION_IMPL* at(MAP_POSITION position) const {
    return position - 1U < m_cells.size() ? m_cells[position - 1U] : nullptr;
  }

  /// Prefetches the memory that `at` reads.
  void fetch(MAP_POSITION position) const {
    if (position - 1U < m_cells.size()) {
      __builtin_prefetch(&m_cells[position - 1U]);
    }
  }

  /// The highest position that any map has had; 0 at first.
  MAP_POSITION last_position() const { return static_cast<MAP_POSITION>(m_cells.size()); }
  /// The position of a map in the list that holds it; 0 when none does.
  static MAP_POSITION position_of(const KPT_TRANSFORMATION_IMPL& map);

 private:
  friend class KPT_TRANSFORMATION_SET_IMPL;
  // Allocates memory, so that `more` appends cannot fail.
  void make_room(std::size_t more = 1);
  void append(KPT_TRANSFORMATION_IMPL* map);
  bool contains(const KPT_TRANSFORMATION_IMPL* map) const;
  void remove(const KPT_TRANSFORMATION_IMPL* map);
  std::vector<KPT_TRANSFORMATION_IMPL*, MEM_STL_ALLOCATOR<KPT_TRANSFORMATION_IMPL*>> m_cells;
  std::size_t m_size = 0;
};

#endif
