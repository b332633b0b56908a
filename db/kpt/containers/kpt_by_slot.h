// A value for each of many objects that are known by their slots, the default
// value for all others.
//
// Ownership: owns its values, never the objects. The entry of an object of the
// first two pools that are met is never taken for one of another, since slots
// are given out once. Any other object is known by its address and must outlive
// its entry.
//
// The objects of the first two pools that are met, which are all that an index
// of one database ever sees, are looked up in an array a pool: four or eight
// bytes an object, no hash, and walks in order of creation run through memory
// in order. All others are in a hash by address.
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
  /// The object's value; the default value for the slot of nothing.
  VALUE find(const KPT_POOL_SLOT& slot) const {
    const VALUE* value = find_cell(slot);
    return value == nullptr ? VALUE() : *value;
  }

  /// The cell of the object's value, until the next call that makes room; null
  /// when there is none.
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

  /// The object's value, to change. Requires the slot of an object.
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
  static constexpr std::uint32_t FREE = UINT32_MAX;  // a number that no pool and no lone object has
  using VALUES = std::vector<VALUE, MEM_STL_ALLOCATOR<VALUE>>;
  struct SHELF {
    std::uint32_t pool = FREE;
    VALUES values;
  };

  // All that is allocated is used at once: objects come by the million, and one by one.
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
