#include "db/kpt/kpt_translation.h"

KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::namesake_in(const KPT_KEYPOINT_SET_IMPL& set,
                                                         const KPT_KEYPOINT* keypoint) {
  return keypoint != nullptr && keypoint->is_register()
             ? set.get_namesake(static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint))
             : nullptr;
}

KPT_REGISTER_KEYPOINT_IMPL* KPT_TRANSLATION::of(const KPT_KEYPOINT* keypoint) {
  KPT_REGISTER_KEYPOINT_IMPL* namesake = m_namesakes.find(keypoint);
  if (namesake == nullptr) {
    namesake = namesake_in(m_set, keypoint);
    if (namesake != nullptr) {
      remember(keypoint, namesake);
    }
  }
  return namesake;
}
