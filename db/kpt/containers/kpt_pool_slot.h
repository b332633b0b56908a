// The slot of an object in a pool. An index finds the object by its slot, without
// a hash and without reading the object.
//
// Ownership: none. The numbers of pools and slots are never used twice, so a slot
// never names another object.
#ifndef KPT_POOL_SLOT_H
#define KPT_POOL_SLOT_H

#include <cstdint>

struct KPT_POOL_SLOT {
  /// The pool number of an object that is in no pool.
  static constexpr std::uint32_t NO_POOL = 0;

  std::uint32_t pool = NO_POOL;
  std::uint32_t number = 0;      // from 0, in order of creation; has a meaning only in a pool
  const void* object = nullptr;  // null: an empty slot
};

#endif
