// The registers of one kind of one keypoint set, by the texts they were added
// under.
//
// Ownership: none; the keypoints live in the pool of the set, which outlives
// the index.
//
// An open table of eight bytes an entry, the keypoint's slot in the pool and
// 32 bits of its hash, probed step by step from the entry that the hash names.
// A probe reads one line of memory and a keypoint only when those 32 bits
// agree; growing reads no keypoint. Callers bring the hash, so that a walk over
// registers whose hashes are known computes none, and can ask for the memory
// that its next look-ups need while it works on the present one; the flat
// tables of Boost offer neither, and read one line more a probe.
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
  /// Its slot in the pool, or NO_SLOT.
  std::uint32_t find_slot(const KPT_REGISTER_TEXTS& texts) const;
  static constexpr std::uint32_t NO_SLOT = UINT32_MAX;
  /// Enters the keypoint in that slot of the pool, with the hash of its key;
  /// the one that was found under the same key until now, or null.
  KPT_REGISTER_KEYPOINT_IMPL* enter(std::uint32_t slot, std::uint32_t hash);
  /// Takes the entry of the keypoint in that slot out. False when it has none.
  bool remove(std::uint32_t slot, std::uint32_t hash);
  std::size_t size() const { return m_size; }

  /// Ask for what a coming `find` reads: its entry; the keypoint, once the
  /// entry has come; the keypoint's name, once that has come.
  void fetch_entry(std::uint32_t hash) const;
  void fetch_keypoint(std::uint32_t hash) const;
  void fetch_name(std::uint32_t hash) const;

 private:
  struct ENTRY {
    std::uint32_t slot;  // from 1; 0 in a free entry
    std::uint32_t hash;
  };

  // Requires a table. Entries are passed from `home` on until a free one.
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
  unsigned m_shift = 0;  // leaves of a hash as many bits as tell the entries apart
};

#endif
