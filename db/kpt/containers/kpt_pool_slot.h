// The slot of an object in a pool: the key under which an index knows the
// object without a hash, and without a look at the object.
//
// Ownership: none. Numbers of pools and slots are given out once, so a slot
// never names another object than the one it was given out for.
#ifndef KPT_POOL_SLOT_H
#define KPT_POOL_SLOT_H

#include <cstdint>

struct KPT_POOL_SLOT {
  /// The number of no pool, for objects that are in none.
  static constexpr std::uint32_t NO_POOL = 0;

  std::uint32_t pool = NO_POOL;
  std::uint32_t number = 0;      // from 0, in order of creation; counts in a pool alone
  const void* object = nullptr;  // null: the slot of nothing
};

#endif
