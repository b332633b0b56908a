// A keypoint: one observable storage element of a netlist.
//
// Ownership: a keypoint belongs to the keypoint set that made it, or to the
// caller who made it with `new`. Maps and indexes hold plain pointers to it.
#ifndef KPT_KEYPOINT_H
#define KPT_KEYPOINT_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "db/kpt/containers/kpt_pool_slot.h"
#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_KEYPOINT : public KPT_ZEROED {
 public:
  /// The type is not stored, because only `is_register` depends on it.
  KPT_KEYPOINT(KPT_TYPE_ENUM type, long id, std::string_view name);
  /// Copies name and id. The copy belongs to no set and is in no index.
  KPT_KEYPOINT(const KPT_KEYPOINT& other);
  KPT_KEYPOINT& operator=(const KPT_KEYPOINT&) = delete;

  /// The register's name in its netlist.
  virtual const KPT_STRING& get_element_name() const;
  virtual bool is_register() const;
  /// True when the ids or the bytes of the names differ.
  virtual bool operator!=(const KPT_KEYPOINT& other) const;
  /// A set finds the keypoint under the name with which it was added.
  virtual void set_element_name(std::string_view name);
  virtual ~KPT_KEYPOINT();

  /// Unique within a set. Saved through the host's `int` conversions, so an
  /// id beyond 2,147,483,647 does not survive a save.
  long get_kpid() const { return m_kpid; }

  /// The slot by which indexes find a keypoint: the number of the set that made
  /// it, which no other set of the process has, and its own number in that set.
  /// An empty slot for null.
  using POOL_SLOT = KPT_POOL_SLOT;
  static POOL_SLOT slot_of(const KPT_KEYPOINT* keypoint) {
    return keypoint == nullptr ? POOL_SLOT() : POOL_SLOT{keypoint->m_set, keypoint->m_slot, keypoint};
  }

  /// The side of the set that made the keypoint. Empty when no set made it, or
  /// when the set belongs to no database.
  std::optional<KPT_SET_ENUM> get_side() const;

  /// Writes a "key_point" element of type "keypoint". Always true. Such an
  /// element is not read back.
  bool save_keypoint(KPT_XML_WRITER& writer) const;

 protected:
  KPT_STRING m_element_name;
  long m_kpid;
  bool is_in_set() const { return m_set != POOL_SLOT::NO_POOL; }

 private:
  friend class KPT_KEYPOINT_SET_IMPL;
  // The lowest two bits of a set's number are the side.
  enum SIDE_IN_NUMBER : std::uint32_t { NO_SIDE = 0, REFERENCE = 1, TRANSFORMED = 2, SIDE_BITS = 3 };
  std::uint32_t m_set = POOL_SLOT::NO_POOL;
  std::uint32_t m_slot = 0;
};

#endif
