// A client that makes and deletes objects of the library itself. In code that
// runs once, as this is marked, a compiler inlines the smaller half of an
// allocation's pair only, and must find nothing to warn of.
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
