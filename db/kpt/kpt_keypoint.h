// A keypoint: one observable storage element of a netlist.
//
// Ownership: a keypoint belongs to the keypoint set that made it, or to the
// caller who wrote `new`. Maps and indexes hold plain pointers to it.
#ifndef KPT_KEYPOINT_H
#define KPT_KEYPOINT_H

#include <cstdint>
#include <string_view>

#include "db/kpt/kpt_types.h"
#include "db/kpt/kpt_zeroed.h"

template <class VALUE>
class KPT_BY_KEYPOINT;

class KPT_EXPORT KPT_KEYPOINT : public KPT_ZEROED {
 public:
  /// The type is not stored: `is_register` is the only question about it.
  KPT_KEYPOINT(KPT_TYPE_ENUM type, long id, std::string_view name);
  /// Takes name and id. The copy belongs to no set and stands in no index.
  KPT_KEYPOINT(const KPT_KEYPOINT& other);
  KPT_KEYPOINT& operator=(const KPT_KEYPOINT&) = delete;

  /// The register's name as it stands in its netlist.
  virtual const KPT_STRING& get_element_name() const;
  virtual bool is_register() const;
  /// Unequal when the ids differ, else when the names differ byte-wise.
  virtual bool operator!=(const KPT_KEYPOINT& other) const;
  /// A set goes on finding the keypoint under the name it was added with.
  virtual void set_element_name(std::string_view name);
  virtual ~KPT_KEYPOINT();

  /// Unique within a set. Saved through the host's `int` conversions, so an
  /// id beyond 2,147,483,647 does not survive a save.
  long get_kpid() const { return m_kpid; }

  /// What the indexes know a keypoint by, read off without a look at it: which
  /// set made it, by a number that no other set of the process ever has, and as
  /// which of its keypoints (from 0). All zero for no keypoint.
  static constexpr std::uint32_t OUTSIDE = 0;
  struct PLACE {
    std::uint32_t set;
    std::uint32_t place;
    const KPT_KEYPOINT* keypoint;
  };

  /// Writes a "key_point" element of type "keypoint". Always true. Such an
  /// element is not read back.
  bool save_keypoint(KPT_XML_WRITER& writer) const;

 protected:
  KPT_STRING m_element_name;
  long m_kpid;
  bool is_in_set() const { return m_set != OUTSIDE; }

 private:
  // Which set made the keypoint, by a number that no other set of the process
  // ever has, and as which of its keypoints (from 0): the key under which an
  // index knows the keypoint without a hash.
  friend class KPT_KEYPOINT_SET_IMPL;
  template <class VALUE>
  friend class KPT_BY_KEYPOINT;
  std::uint32_t m_set = OUTSIDE;
  std::uint32_t m_place = 0;
};

#endif
