// The entry point: creates, finds, loads, saves and destroys the databases of
// the process.
//
// Ownership: the manager owns every database that was recorded with it. It
// destroys the remaining ones at process exit. A pointer that it returns is
// valid until that database is destroyed. When a client deletes a database
// through a handle, the registry keeps an empty entry, which everything skips.
//
// Process exit: databases are destroyed in the order in which they were
// recorded, and no pointer or handle to them is valid any more. Code that runs
// later, such as the destructor of a static object that was made before the
// manager, finds the manager at the same address, empty and usable. A database
// that is recorded then is destroyed only by `destroy_keypoints_db`.
//
// Every function may be called in any thread. Threads that use databases of
// different names do not disturb each other.
#ifndef KPT_KEYPOINTS_MANAGER_H
#define KPT_KEYPOINTS_MANAGER_H

#include <list>
#include <memory>
#include <string_view>

#include "db/kpt/kpt_keypoints_db.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_types.h"

class KPT_UNREGISTERED_DB;

class KPT_EXPORT KPT_KEYPOINTS_MANAGER {
 public:
  /// The one manager, which the first call makes. The pointer is always valid.
  static KPT_KEYPOINTS_MANAGER* get_instance();

  /// Creates and records an empty database, also when the name is in use. Returns
  /// the first database of that name, which may be an earlier one. Flows that open
  /// their database twice rely on getting the first.
  KPT_KEYPOINTS_DB* create_keypoints_db(std::string_view name);
  /// A database that the caller owns. The caller then records or deletes it.
  KPT_KEYPOINTS_DB_IMPL* create_keypoints_db_impl(std::string_view name);
  /// Records the database; the manager then owns it. False for null.
  bool record_new_db(KPT_KEYPOINTS_DB_IMPL* db);
  /// Takes the database from the value that owned it, and returns its handle,
  /// also when the name is in use. Null when the value owned nothing.
  KPT_KEYPOINTS_DB* record_db(KPT_UNREGISTERED_DB&& db);
  /// The first database of that name (byte for byte), or null.
  KPT_KEYPOINTS_DB* get_keypoints_db(std::string_view name);
  /// Loads a database file and records the database. Null for each problem of
  /// KPT_LOAD_PROBLEM. Syntax errors are messages, and so is EKPT_OUT_OF_MEMORY,
  /// for too little memory. The debug line "DB called %s already exists\n" says
  /// that a database of its name is recorded.
  KPT_KEYPOINTS_DB* load_db(std::string_view file_name);
  /// The same. When the result is null, `problem` says why: the first problem.
  KPT_KEYPOINTS_DB* load_db(std::string_view file_name, KPT_LOAD_PROBLEM& problem);
  /// False, with the line "database named %s doesn't exist", for an unknown name.
  bool save_db(std::string_view name, std::string_view file_name);
  /// The same with KPT_KEYPOINTS_DB::save_atomically: the file is either complete
  /// or not written, and it can be read back without loss.
  bool save_db_atomically(std::string_view name, std::string_view file_name);
  /// Destroys the first database of that name. False for an unknown name.
  bool destroy_keypoints_db(std::string_view name);

  KPT_KEYPOINTS_MANAGER(const KPT_KEYPOINTS_MANAGER&) = delete;
  KPT_KEYPOINTS_MANAGER& operator=(const KPT_KEYPOINTS_MANAGER&) = delete;

 private:
  using DATABASES = std::list<KPT_KEYPOINTS_DB, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB>>;

  KPT_KEYPOINTS_MANAGER();
  ~KPT_KEYPOINTS_MANAGER();
  // Called while the database is destroyed: its entries become null.
  static void forget(const KPT_KEYPOINTS_DB_IMPL* db);
  // Callers of these functions hold the registry's lock.
  DATABASES::iterator find(std::string_view name);
  KPT_KEYPOINTS_DB* append(KPT_KEYPOINTS_DB_IMPL* db);
  // The list then owns the database. When the name is taken: null, and the caller still owns it.
  KPT_KEYPOINTS_DB* append_if_new(std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>& db);
  KPT_KEYPOINTS_DB* loaded(std::string_view file_name, KPT_LOAD_PROBLEM& problem);
  const KPT_KEYPOINTS_DB* find_to_save(std::string_view name);

  DATABASES m_databases;
};

#endif
