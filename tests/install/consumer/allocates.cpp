// A client that makes and deletes objects of the library. In code that runs once,
// as this code is marked, a compiler inlines only the smaller half of the
// allocation pair, and must not find a reason to warn.
#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_transformation_impl.h"

[[gnu::cold]] void make_and_delete() {
  delete new KPT_KEYPOINTS_DB_IMPL("own");
  delete new KPT_REGISTER_KEYPOINT_IMPL(1, "count");
  delete new KPT_STATE_TABLE(2, 1, 1);
  delete new KPT_TRANSFORMATION_SET_IMPL;
  delete new KPT_KEYPOINT_SET_IMPL;
}
