// A client outside the source tree: records two registers, saves, loads and asks.
#include <cstdio>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"

#ifdef XERCES_CPP_NAMESPACE
#error "the client's header brings the XML parser along"
#endif

namespace {

bool save(KPT_KEYPOINTS_MANAGER& manager, const char* file) {
  KPT_KEYPOINTS_DB* db = manager.create_keypoints_db("counter");
  const bool recorded = db->associate_registers_signal_to_signal("count", "count_reg") &&
                        db->associate_registers_signal_to_signal("carry", "carry_reg");
  return recorded && manager.save_db("counter", file) && manager.destroy_keypoints_db("counter");
}

bool load(KPT_KEYPOINTS_MANAGER& manager, const char* file) {
  const KPT_KEYPOINTS_DB* db = manager.load_db(file);
  return db != nullptr && !db->get_reference_register_transformation("count").is_null() &&
         !db->get_transformed_register_transformation("count_reg").is_null() &&
         db->get_reference_register_transformation("count_reg").is_null();
}

}  // namespace

int main() {
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  const bool good = save(manager, "counter.xml") && load(manager, "counter.xml");
  std::printf("%s, %zu types of memory\n", good ? "good" : "bad", kpt_host::trackers().size());
  return good ? 0 : 1;
}
