// Finds the registers of one kind in one keypoint set by the texts with which
// they were added.
//
// Ownership: none; the keypoints live in the pool of the set, which outlives
// the index.
//
// A hash table with linear probing. An entry has eight bytes: the keypoint's
// slot in the pool and 32 bits of its hash. A probe reads one cache line, and
// reads a keypoint only when these 32 bits agree. Growing reads no keypoint.
// Callers pass the hash, so a walk over registers with known hashes computes
// none. A walk can also fetch the memory of its next look-ups while it works on
// the present one. The flat tables of Boost do neither, and read one more
// cache line for each probe.
#ifndef KPT_KEYPOINT_INDEX_H
#define KPT_KEYPOINT_INDEX_H

#include <cstdint>
#include <vector>

#include "db/kpt/containers/kpt_pool.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_texts.h"

class KPT_KEYPOINT_INDEX {
 public:
  using POOL = KPT_POOL<KPT_REGISTER_KEYPOINT_IMPL>;

  explicit KPT_KEYPOINT_INDEX(const POOL& pool);

  /// By name and register type; null when there is none.
  KPT_REGISTER_KEYPOINT_IMPL* find(const KPT_REGISTER_TEXTS& texts) const;
  /// The register's slot in the pool, or NO_SLOT.
  std::uint32_t find_slot(const KPT_REGISTER_TEXTS& texts) const;
  static constexpr std::uint32_t NO_SLOT = UINT32_MAX;
  /// Enters the keypoint in that slot of the pool, with the hash of its key.
  /// Returns the keypoint that had the same key until now, or null.
  KPT_REGISTER_KEYPOINT_IMPL* enter(std::uint32_t slot, std::uint32_t hash);
  /// Removes the entry of the keypoint in that slot. False when it has none.
  bool remove(std::uint32_t slot, std::uint32_t hash);
  std::size_t size() const { return m_size; }

  /// Prefetch what a later `find` reads, one step after the other: the entry,
  /// the keypoint that the entry names, and the keypoint's name.
  void fetch_entry(std::uint32_t hash) const;
  void fetch_keypoint(std::uint32_t hash) const;
  void fetch_name(std::uint32_t hash) const;

 private:
  struct ENTRY {
    std::uint32_t slot;  // from 1; 0 in a free entry
    std::uint32_t hash;
  };

  // Requires a table. A search goes from `home` to the first free entry.
  std::size_t home(std::uint32_t hash) const { return hash >> m_shift; }
  std::size_t after(std::size_t at) const { return (at + 1) & (m_entries.size() - 1); }
  KPT_REGISTER_KEYPOINT_IMPL* keypoint(const ENTRY& entry) const { return m_pool.at(entry.slot - 1U); }
  using KEY = KPT_REGISTER_KEYPOINT_IMPL::KEY;
  bool stands_for(const ENTRY& entry, const KEY& key, std::uint32_t hash) const;
  std::size_t position_of(const KEY& key, std::uint32_t hash) const;
  KPT_REGISTER_KEYPOINT_IMPL* first_with(std::uint32_t hash) const;
  void close_gap(std::size_t gap);
  void make_room();

  const POOL& m_pool;
  std::vector<ENTRY, MEM_STL_ALLOCATOR<ENTRY>> m_entries;  // none, or a power of two
  std::size_t m_size = 0;
  unsigned m_shift = 0;  // a hash shifted by this is the number of an entry
};

#endif
