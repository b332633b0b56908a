#include "db/kpt/kpt_register_group.h"

#include "db/kpt/kpt_register_keypoint_impl.h"

KPT_REGISTER_KEYPOINT KPT_REGISTER_GROUP::handle(KPT_KEYPOINT* keypoint) {
  return KPT_REGISTER_KEYPOINT(
      keypoint != nullptr && keypoint->is_register() ? static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(keypoint) : nullptr);
}
