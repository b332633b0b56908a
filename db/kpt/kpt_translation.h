// Finds the namesakes of any database's keypoints in one keypoint set.
//
// Ownership: none; the set outlives the translation. A translation looks a name
// up once and keeps the result. So while it lives, registers may be added to the
// set, but no register is deleted or renamed.
#ifndef KPT_TRANSLATION_H
#define KPT_TRANSLATION_H

#include "db/kpt/kpt_keypoint_set_impl.h"

class KPT_TRANSLATION {
 public:
  explicit KPT_TRANSLATION(const KPT_KEYPOINT_SET_IMPL& set) : m_set(set) {}

  /// The register of the set with the same name, or for a block instance with the
  /// same name and register type. Null when there is none, and for a keypoint
  /// that is null or not a register.
  KPT_REGISTER_KEYPOINT_IMPL* of(const KPT_KEYPOINT* keypoint);
  /// The same for a register of a set that knows its hash.
  KPT_REGISTER_KEYPOINT_IMPL* of(const KPT_REGISTER_KEYPOINT_IMPL& keypoint, const KPT_KEYPOINT_SET_IMPL& its_set);
  /// The same, without keeping the result.
  static KPT_REGISTER_KEYPOINT_IMPL* namesake_in(const KPT_KEYPOINT_SET_IMPL& set, const KPT_KEYPOINT* keypoint);
  /// The result that was kept; null when there is none.
  KPT_REGISTER_KEYPOINT_IMPL* known(const KPT_KEYPOINT* keypoint) const {
    return m_namesakes.find(KPT_KEYPOINT::slot_of(keypoint));
  }
  /// All results that were kept. Code that knows further results adds them.
  KPT_NAMESAKES& namesakes() { return m_namesakes; }

 private:
  template <class LOOK_UP>
  KPT_REGISTER_KEYPOINT_IMPL* remembered(const KPT_KEYPOINT* keypoint, LOOK_UP look_up);

  const KPT_KEYPOINT_SET_IMPL& m_set;
  KPT_NAMESAKES m_namesakes;
};

#endif
