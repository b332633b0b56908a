// A process that leaves databases to the manager and ends in one of several
// ways. The result is checked after the manager's end: the host must have no
// memory left, and a leak checker, where there is one, looks for other
// leaks.
//
// Usage: kpt_process_end WAY FILE, where FILE is a database file of the name "top".
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "host/kpt_host.h"

namespace {

void require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what);
    ::_exit(1);
  }
}

void require_no_live_blocks() {
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    require(tracker.live_blocks == 0, tracker.type.c_str());
  }
}

// Made before the manager, and so destroyed after it.
class LAST {
 public:
  ~LAST() {
    if (m_manager != nullptr) {
      find_the_manager_empty();
      record_a_database();
      use_an_own_database();
    }
    require_no_live_blocks();
  }

  void ask_to_use_the_manager(KPT_KEYPOINTS_MANAGER* manager) {
    m_manager = manager;
    m_own = KPT_KEYPOINTS_DB(manager->create_keypoints_db_impl("own"));
  }

 private:
  void find_the_manager_empty() const {
    require(KPT_KEYPOINTS_MANAGER::get_instance() == m_manager, "the manager has moved");
    for (const char* name : {"left", "top", "twice", "deleted", "own"}) {
      require(m_manager->get_keypoints_db(name) == nullptr, "a database is found after the manager's end");
      require(!m_manager->destroy_keypoints_db(name), "a database is destroyed after the manager's end");
      require(!m_manager->save_db(name, "never_written.xml"), "a database is saved after the manager's end");
    }
  }

  void record_a_database() const {
    KPT_KEYPOINTS_DB* db = m_manager->create_keypoints_db("late");
    require(db != nullptr && db->associate_registers_signal_to_signal("r", "x"), "nothing can be recorded");
    require(m_manager->get_keypoints_db("late") == db, "what was recorded is not found");
    require(m_manager->destroy_keypoints_db("late"), "what was recorded cannot be destroyed");
  }

  void use_an_own_database() {
    require(m_own.associate_registers_signal_to_signal("r", "x"), "an own database cannot be used");
    require(!m_own.get_reference_register_transformation("r").is_null(), "an own database answers nothing");
    require(m_own.delete_keypoints_db(), "an own database cannot be deleted");
  }

  KPT_KEYPOINTS_MANAGER* m_manager = nullptr;
  KPT_KEYPOINTS_DB m_own;
};

LAST s_last;

void fill_the_manager(const char* file) {
  KPT_KEYPOINTS_MANAGER* manager = KPT_KEYPOINTS_MANAGER::get_instance();
  for (int k = 0; k < 3; ++k) {
    manager->create_keypoints_db("left")->associate_registers_signal_to_signal("r" + std::to_string(k), "x");
  }
  require(manager->load_db(file) != nullptr, "the file cannot be loaded");
  KPT_KEYPOINTS_DB copy = *manager->create_keypoints_db("deleted");
  copy.delete_keypoints_db();
  KPT_KEYPOINTS_DB_IMPL* twice = manager->create_keypoints_db_impl("twice");
  manager->record_new_db(twice);
  manager->record_new_db(twice);
}

// There is a handle on every level that the exit leaves.
[[noreturn]] void exit_from_within(int levels) {
  const KPT_KEYPOINTS_DB handle = *KPT_KEYPOINTS_MANAGER::get_instance()->get_keypoints_db("left");
  if (levels == 0 || handle.is_null()) {
    std::exit(0);
  }
  exit_from_within(levels - 1);
}

}  // namespace

int main(int argc, char** argv) {
  require(argc == 3, "usage: kpt_process_end WAY FILE");
  fill_the_manager(argv[2]);
  if (std::strcmp(argv[1], "exits_from_a_nested_call") == 0) {
    exit_from_within(3);
  }
  if (std::strcmp(argv[1], "uses_the_manager_afterwards") == 0) {
    s_last.ask_to_use_the_manager(KPT_KEYPOINTS_MANAGER::get_instance());
  }
  return 0;
}
