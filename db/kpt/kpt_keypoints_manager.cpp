#include "db/kpt/kpt_keypoints_manager.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_unregistered_db.h"
#include "db/kpt/load/kpt_file_loader.h"
#include "db/kpt/msg_kpt.h"

namespace {

// Over the list of databases and its entries, not over the databases: nothing
// that takes long, and nothing of the host's but memory, is called under it.
// Without an end of its own, it serves static objects that end after the manager.
constinit std::mutex s_registry;

}  // namespace

// Static objects that were made before the manager are destroyed after it, and
// may ask it for a database. They find an empty manager at the same address. It
// holds no memory and needs no destructor.
KPT_KEYPOINTS_MANAGER* KPT_KEYPOINTS_MANAGER::get_instance() {
  alignas(KPT_KEYPOINTS_MANAGER) static std::byte s_place[sizeof(KPT_KEYPOINTS_MANAGER)];
  struct LIFE {
    LIFE() { new (s_place) KPT_KEYPOINTS_MANAGER; }
    ~LIFE() {
      manager()->~KPT_KEYPOINTS_MANAGER();
      new (s_place) KPT_KEYPOINTS_MANAGER;
    }
    static KPT_KEYPOINTS_MANAGER* manager() { return std::launder(reinterpret_cast<KPT_KEYPOINTS_MANAGER*>(s_place)); }
  };
  static const LIFE s_life;
  return LIFE::manager();
}

KPT_KEYPOINTS_MANAGER::KPT_KEYPOINTS_MANAGER() = default;

KPT_KEYPOINTS_MANAGER::~KPT_KEYPOINTS_MANAGER() {
  for (KPT_KEYPOINTS_DB& db : m_databases) {
    db.delete_keypoints_db();
  }
}

void KPT_KEYPOINTS_MANAGER::forget(const KPT_KEYPOINTS_DB_IMPL* db) {
  KPT_KEYPOINTS_MANAGER* const manager = get_instance();
  const std::lock_guard lock(s_registry);
  for (KPT_KEYPOINTS_DB& entry : manager->m_databases) {
    if (entry.m_impl == db) {
      entry.m_impl = nullptr;
    }
  }
}

KPT_KEYPOINTS_MANAGER::DATABASES::iterator KPT_KEYPOINTS_MANAGER::find(std::string_view name) {
  return std::find_if(m_databases.begin(), m_databases.end(),
                      [&](const KPT_KEYPOINTS_DB& db) { return !db.is_null() && db.get_name() == name; });
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::create_keypoints_db(std::string_view name) {
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db(create_keypoints_db_impl(name));
  record_new_db(db.get());
  static_cast<void>(db.release());  // the list has it now
  return get_keypoints_db(name);
}

KPT_KEYPOINTS_DB_IMPL* KPT_KEYPOINTS_MANAGER::create_keypoints_db_impl(std::string_view name) {
  return new KPT_KEYPOINTS_DB_IMPL(name);
}

bool KPT_KEYPOINTS_MANAGER::record_new_db(KPT_KEYPOINTS_DB_IMPL* db) {
  if (db == nullptr) {
    return false;
  }
  const std::lock_guard lock(s_registry);
  append(db);
  return true;
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::append(KPT_KEYPOINTS_DB_IMPL* db) {
  m_databases.emplace_back(db);
  db->m_forget = &KPT_KEYPOINTS_MANAGER::forget;
  return &m_databases.back();
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::get_keypoints_db(std::string_view name) {
  const std::lock_guard lock(s_registry);
  const auto found = find(name);
  return found == m_databases.end() ? nullptr : &*found;
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::record_db(KPT_UNREGISTERED_DB&& db) {
  if (db.is_null()) {
    return nullptr;
  }
  const std::lock_guard lock(s_registry);
  KPT_KEYPOINTS_DB* const entry = append(db.get().m_impl);
  db.release();
  return entry;
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::load_db(std::string_view file_name) {
  KPT_LOAD_PROBLEM problem;
  return load_db(file_name, problem);
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::load_db(std::string_view file_name, KPT_LOAD_PROBLEM& problem) {
  problem = {};
  try {
    return loaded(file_name, problem);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    problem.note_end_of_memory();
    return nullptr;
  }
}

KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::loaded(std::string_view file_name, KPT_LOAD_PROBLEM& problem) {
  const auto create = [&](std::string_view name) {
    return get_keypoints_db(name) == nullptr ? create_keypoints_db_impl(name) : nullptr;
  };
  KPT_FILE_LOADER loader(file_name);
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db = loader.read(create) ? loader.finish() : nullptr;
  KPT_KEYPOINTS_DB* const entry = db != nullptr ? append_if_new(db) : nullptr;
  if (entry != nullptr) {
    return entry;
  }
  problem = loader.problem();
  if (problem.is_none()) {
    kpt_msg_debug("DB called %s already exists\n", loader.name().c_str());
    problem.note({KPT_LOAD_PROBLEM::NAME_IS_TAKEN, "a database of this name exists already"});
  }
  return nullptr;
}

// Another thread may have taken the name while the file was read.
KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::append_if_new(std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>& db) {
  const std::lock_guard lock(s_registry);
  if (find(db->get_db_name()) != m_databases.end()) {
    return nullptr;
  }
  KPT_KEYPOINTS_DB* const entry = append(db.get());
  static_cast<void>(db.release());  // the list has it now
  return entry;
}

const KPT_KEYPOINTS_DB* KPT_KEYPOINTS_MANAGER::find_to_save(std::string_view name) {
  const KPT_KEYPOINTS_DB* db = get_keypoints_db(name);
  if (db == nullptr) {
    kpt_msg_debug("database named %s doesn't exist", KPT_STRING(name).c_str());
  }
  return db;
}

bool KPT_KEYPOINTS_MANAGER::save_db(std::string_view name, std::string_view file_name) {
  const KPT_KEYPOINTS_DB* db = find_to_save(name);
  return db != nullptr && db->save(file_name);
}

bool KPT_KEYPOINTS_MANAGER::save_db_atomically(std::string_view name, std::string_view file_name) {
  const KPT_KEYPOINTS_DB* db = find_to_save(name);
  return db != nullptr && db->save_atomically(file_name);
}

bool KPT_KEYPOINTS_MANAGER::destroy_keypoints_db(std::string_view name) {
  DATABASES leaving;
  {
    const std::lock_guard lock(s_registry);
    const auto found = find(name);
    if (found == m_databases.end()) {
      return false;
    }
    leaving.splice(leaving.end(), m_databases, found);
  }
  return leaving.front().delete_keypoints_db();
}
