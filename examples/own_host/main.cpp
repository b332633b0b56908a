// A flow with services of its own uses the database: the library's messages
// appear in the flow's log, and the flow counts the library's memory.
#include <cstdio>

#include "db/kpt/kpt.h"
#include "host.h"

namespace {

// Records one stage and asks one question.
bool record_and_ask() {
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  KPT_KEYPOINTS_DB& db = *manager.create_keypoints_db("counter");
  bool good = db.associate_registers_signal_to_signal("count", "count_reg");
  good = db.set_replicated_registers("count_reg", "count_dup") && good;
  good = db.set_inverter_retimed_register("count_dup") && good;
  const bool refused = !db.set_merged_registers("count_reg", "carry_reg");  // the log says why
  const auto inverted = db.get_reference_register_transformation("count").get_transformed_inverted_equivalents(0);
  std::printf("count has %zu inverted equivalent, %s\n", inverted.size(),
              flow::live_blocks() > 0 ? "in memory of the flow" : "in memory from elsewhere");
  good = inverted.size() == 1 && inverted.front().get_name() == "count_dup" && good;
  return manager.destroy_keypoints_db("counter") && refused && good;
}

}  // namespace

int main() {
  flow::set_verbose(true);
  return record_and_ask() ? 0 : 1;
}
