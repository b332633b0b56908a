// A value for each of many objects, which are identified by their slots. All
// other objects have the default value.
//
// Ownership: owns its values, not the objects. Slots are never used twice, so an
// entry of an object of the first two pools is never taken for the entry of
// another. Any other object is identified by its address and has to outlive its
// entry.
//
// One array for each of the first two pools holds the values of their objects. An
// index of one database sees no other pools. An entry takes four or eight bytes
// and no hash, and a walk in order of creation reads memory in order. All other
// objects are in a hash table by address.
#ifndef KPT_BY_SLOT_H
#define KPT_BY_SLOT_H

#include <algorithm>
#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <vector>

#include "db/kpt/containers/kpt_pool_slot.h"
#include "h/mem_alloc_sys.h"

template <class VALUE>
class KPT_BY_SLOT {
 public:
  /// The object's value; the default value for an empty slot.
  VALUE find(const KPT_POOL_SLOT& slot) const {
    const VALUE* value = find_cell(slot);
    return value == nullptr ? VALUE() : *value;
  }

  /// The cell of the object's value, which is valid until the next call that
  /// makes room; null when there is none.
  VALUE* find_cell(const KPT_POOL_SLOT& slot) {
    return const_cast<VALUE*>(static_cast<const KPT_BY_SLOT&>(*this).find_cell(slot));
  }
  const VALUE* find_cell(const KPT_POOL_SLOT& slot) const {
    if (slot.object == nullptr) {
      return nullptr;
    }
    for (const SHELF& shelf : m_shelves) {
      if (shelf.pool == slot.pool) {
        return slot.number < shelf.values.size() ? &shelf.values[slot.number] : nullptr;
      }
    }
    const auto found = m_others.find(slot.object);
    return found == m_others.end() ? nullptr : &found->second;
  }

  /// The object's value, which may be changed. Requires the slot of an object.
  VALUE& at(const KPT_POOL_SLOT& slot) {
    for (SHELF& shelf : m_shelves) {
      if (shelf.pool == FREE && slot.pool != KPT_POOL_SLOT::NO_POOL) {
        shelf.pool = slot.pool;
      }
      if (shelf.pool == slot.pool) {
        if (slot.number >= shelf.values.size()) {
          make_room(shelf.values, std::size_t{slot.number} + 1);
        }
        return shelf.values[slot.number];
      }
    }
    return m_others[slot.object];
  }

 private:
  static constexpr std::uint32_t FREE = UINT32_MAX;  // a number that no pool and no object outside the pools has
  using VALUES = std::vector<VALUE, MEM_STL_ALLOCATOR<VALUE>>;
  struct SHELF {
    std::uint32_t pool = FREE;
    VALUES values;
  };

  // Uses all memory that the allocation has: there may be millions of objects, added one by one.
  static void make_room(VALUES& values, std::size_t count) {
    values.reserve(std::max(count, count > values.capacity() ? 2 * values.capacity() : 0));
    values.resize(values.capacity());
  }

  std::array<SHELF, 2> m_shelves;
  boost::unordered_flat_map<const void*, VALUE, boost::hash<const void*>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const void* const, VALUE>>>
      m_others;
};

#endif
