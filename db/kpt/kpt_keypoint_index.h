// The registers of one kind of one keypoint set, by the texts they were added
// under.
//
// Ownership: none; the keypoints live in the pool of the set, which outlives
// the index.
//
// A flat table of eight bytes an entry: the keypoint's place in the pool and
// 32 bits of its hash. Growing the table touches no keypoint, and a probe
// reads a keypoint only when those 32 bits agree.
#ifndef KPT_KEYPOINT_INDEX_H
#define KPT_KEYPOINT_INDEX_H

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <string_view>

#include "db/kpt/kpt_pool.h"
#include "db/kpt/kpt_register_keypoint_impl.h"

class KPT_KEYPOINT_INDEX {
 public:
  using POOL = KPT_POOL<KPT_REGISTER_KEYPOINT_IMPL>;
  /// The type is empty for signal registers: their hash is then that of the name alone.
  using KEY = KPT_REGISTER_KEYPOINT_IMPL::KEY;

  explicit KPT_KEYPOINT_INDEX(const POOL& pool);

  KPT_REGISTER_KEYPOINT_IMPL* find(const KEY& key) const;
  /// Enters the keypoint at that place of the pool; the one that was found
  /// under the same texts until now, or null.
  KPT_REGISTER_KEYPOINT_IMPL* enter(std::uint32_t place);
  /// Takes the entry out and returns its keypoint, or null.
  KPT_REGISTER_KEYPOINT_IMPL* remove(const KEY& key);
  std::size_t size() const { return m_entries.size(); }

 private:
  struct ENTRY {
    mutable std::uint32_t place;  // changes when a later keypoint takes the texts over; the hash does not
    std::uint32_t hash;
  };
  struct PROBE {
    KEY key;
    std::uint32_t hash;
  };
  struct HASH {
    using is_transparent = void;
    std::size_t operator()(const ENTRY& entry) const { return entry.hash; }
    std::size_t operator()(const PROBE& probe) const { return probe.hash; }
  };
  struct EQUAL {
    using is_transparent = void;
    const POOL* pool;
    bool operator()(const PROBE& probe, const ENTRY& entry) const;
    bool operator()(const ENTRY& entry, const PROBE& probe) const { return (*this)(probe, entry); }
    bool operator()(const ENTRY& a, const ENTRY& b) const;
  };
  using ENTRIES = boost::unordered_flat_set<ENTRY, HASH, EQUAL, MEM_STL_ALLOCATOR<ENTRY>>;

  static PROBE probe_for(const KEY& key);

  const POOL& m_pool;
  ENTRIES m_entries;
};

#endif
