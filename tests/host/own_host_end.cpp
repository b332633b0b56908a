// A process that leaves two databases to the manager and ends. Its host prints
// the calls that it gets: the databases are destroyed in order of creation, and
// then the library is unloaded.
#include "db/kpt/kpt.h"
#include "tests/host/own_host.h"

int main() {
  KPT_KEYPOINTS_MANAGER* manager = KPT_KEYPOINTS_MANAGER::get_instance();
  manager->create_keypoints_db("telling that the first of both has gone");
  manager->create_keypoints_db("telling that the second has gone as well");
  own_host::record().tells_of_the_end = true;
  return 0;
}
