#include "db/kpt/kpt_translation.h"

KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::namesake_in(const KPT_KEYPOINT_SET_IMPL& set,
                                                         const KPT_KEYPOINT* keypoint) {
  return keypoint != nullptr && keypoint->is_register()
             ? set.get_namesake(static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint))
             : nullptr;
}

template <class LOOK_UP>
KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::remembered(const KPT_KEYPOINT* keypoint, LOOK_UP look_up) {
  KPT_REGISTER_KEYPOINT_IMPL* namesake = known(keypoint);
  if (namesake == nullptr) {
    namesake = look_up();
    if (namesake != nullptr) {
      m_namesakes.at(KPT_KEYPOINT::slot_of(keypoint)) = namesake;
    }
  }
  return namesake;
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::of(const KPT_KEYPOINT* keypoint) {
  return remembered(keypoint, [&] { return namesake_in(m_set, keypoint); });
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::of(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                                const KPT_KEYPOINT_SET_IMPL& its_set) {
  return remembered(&keypoint, [&] { return m_set.get_namesake(keypoint, its_set); });
}
