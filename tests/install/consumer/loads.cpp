// A client that only loads a database and asks it a question: it calls no
// function of the host itself.
#include <cstdio>

#include "db/kpt/kpt.h"

int main(int, char** arguments) {
  const KPT_KEYPOINTS_DB* db = KPT_KEYPOINTS_MANAGER::get_instance()->load_db(arguments[1]);
  const bool found = db != nullptr && !db->get_reference_register_transformation("count").is_null();
  std::printf("%s\n", found ? "found" : "not found");
  return found ? 0 : 1;
}
