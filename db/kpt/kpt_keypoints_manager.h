// The entry point: creates, finds, loads, saves and destroys the databases of
// the process.
//
// Ownership: the manager owns every database that was recorded with it and
// destroys those that are left at process exit. A pointer that it hands out is
// good until that entry is destroyed. A database that a client deleted through
// a handle leaves a dead entry, which everything here passes over.
//
// The process's end: databases go in the order in which they were recorded,
// and with them every pointer and handle to them. Whoever runs later, such as
// the destructor of a static object that was made before the manager, finds
// the manager at the same address, empty and in working order. What is
// recorded with it then is destroyed by name only.
//
// Safe in any thread. What a thread finds here under a name that it shares with
// no other thread is its own.
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
  /// The one manager, made by the first call. The pointer is good at any time.
  static KPT_KEYPOINTS_MANAGER* get_instance();

  /// Creates and records an empty database, and returns the first database of
  /// that name: an earlier one when the name is in use. Flows that open their
  /// database twice rely on getting the first.
  KPT_KEYPOINTS_DB* create_keypoints_db(std::string_view name);
  /// A database that nothing owns yet: the caller records or deletes it.
  KPT_KEYPOINTS_DB_IMPL* create_keypoints_db_impl(std::string_view name);
  /// Takes the database over. False for null.
  bool record_new_db(KPT_KEYPOINTS_DB_IMPL* db);
  /// Takes the database over from the value that owned it, and returns its
  /// entry, also when the name is in use. Null when the value owned nothing.
  KPT_KEYPOINTS_DB* record_db(KPT_UNREGISTERED_DB&& db);
  /// The first database of that name (byte for byte), or null.
  KPT_KEYPOINTS_DB* get_keypoints_db(std::string_view name);
  /// Loads a database file and records what it holds. Null when the file
  /// cannot be read or has no name, when memory ends, which the message
  /// EKPT_OUT_OF_MEMORY tells, or, with the line "DB called %s already
  /// exists\n", when a database of its name is recorded.
  KPT_KEYPOINTS_DB* load_db(std::string_view file_name);
  /// The same; when it is null, `problem` tells the first reason.
  KPT_KEYPOINTS_DB* load_db(std::string_view file_name, KPT_LOAD_PROBLEM& problem);
  /// False, with the line "database named %s doesn't exist", for an unknown name.
  bool save_db(std::string_view name, std::string_view file_name);
  /// The same by KPT_KEYPOINTS_DB::save_atomically: the file is written whole or
  /// not at all, and is read back as it was.
  bool save_db_atomically(std::string_view name, std::string_view file_name);
  /// Destroys the first database of that name. False for an unknown name.
  bool destroy_keypoints_db(std::string_view name);

  KPT_KEYPOINTS_MANAGER(const KPT_KEYPOINTS_MANAGER&) = delete;
  KPT_KEYPOINTS_MANAGER& operator=(const KPT_KEYPOINTS_MANAGER&) = delete;

 private:
  using DATABASES = std::list<KPT_KEYPOINTS_DB, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB>>;

  KPT_KEYPOINTS_MANAGER();
  ~KPT_KEYPOINTS_MANAGER();
  // The database is being destroyed: its entries are dead.
  static void forget(const KPT_KEYPOINTS_DB_IMPL* db);
  // Of these the caller holds the registry's lock.
  DATABASES::iterator find(std::string_view name);
  KPT_KEYPOINTS_DB* append(KPT_KEYPOINTS_DB_IMPL* db);
  // The database is the list's then; null, leaving it, when its name is taken.
  KPT_KEYPOINTS_DB* append_if_new(std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>& db);
  KPT_KEYPOINTS_DB* loaded(std::string_view file_name, KPT_LOAD_PROBLEM& problem);
  const KPT_KEYPOINTS_DB* find_to_save(std::string_view name);

  DATABASES m_databases;
};

#endif
