// A value that owns a database which is not in the manager's registry.
//
// For programs that use several databases of one name, that need a database
// only within a scope, or that want to know why a load failed.
//
// Ownership: owns its database and destroys it in its destructor. It can be
// moved, but not copied. Its handles are valid as long as the database exists,
// also when another value owns the database.
#ifndef KPT_UNREGISTERED_DB_H
#define KPT_UNREGISTERED_DB_H

#include <string_view>

#include "db/kpt/kpt_bytes.h"
#include "db/kpt/kpt_file_visitor.h"
#include "db/kpt/kpt_keypoints_db.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_UNREGISTERED_DB {
 public:
  /// Owns nothing.
  KPT_UNREGISTERED_DB() = default;
  /// An empty database. Any name is accepted. A database cannot be saved
  /// atomically when its name is empty or a file cannot hold it.
  static KPT_UNREGISTERED_DB create(std::string_view name);
  /// The database in a file. Owns nothing when the file cannot be loaded. Then
  /// `problem`, unless it is null, has the first reason. The host gets the same
  /// messages as from the manager's load. A registered database of the same name
  /// does not matter.
  static KPT_UNREGISTERED_DB load(std::string_view file_name, KPT_LOAD_PROBLEM* problem = nullptr);
  /// The same from the caller's bytes. Messages name `shown_name` instead of the
  /// file. A plain file is read twice, so a source that shows progress by what it
  /// has read counts up to twice the size. `visitor`, unless it is null, gets every
  /// element once.
  static KPT_UNREGISTERED_DB load(KPT_BYTES& bytes, std::string_view shown_name, KPT_LOAD_PROBLEM* problem = nullptr,
                                  KPT_FILE_VISITOR* visitor = nullptr);

  ~KPT_UNREGISTERED_DB() { destroy(); }
  KPT_UNREGISTERED_DB(KPT_UNREGISTERED_DB&& other) noexcept;
  KPT_UNREGISTERED_DB& operator=(KPT_UNREGISTERED_DB&& other) noexcept;
  KPT_UNREGISTERED_DB(const KPT_UNREGISTERED_DB&) = delete;
  KPT_UNREGISTERED_DB& operator=(const KPT_UNREGISTERED_DB&) = delete;

  bool is_null() const { return m_db.is_null(); }
  /// The handle of the database; null when there is none. Call `destroy`, and
  /// not the handle's `delete_keypoints_db`.
  const KPT_KEYPOINTS_DB& get() const { return m_db; }
  const KPT_KEYPOINTS_DB& operator*() const { return m_db; }
  const KPT_KEYPOINTS_DB* operator->() const { return &m_db; }

  /// Like the handle's operations; false when there is no database.
  bool save(std::string_view file_name) const;
  bool save_atomically(std::string_view file_name, KPT_PROGRESS* progress = nullptr) const;
  /// Destroys the database. False when there is none.
  bool destroy();

 private:
  friend class KPT_KEYPOINTS_MANAGER;
  explicit KPT_UNREGISTERED_DB(KPT_KEYPOINTS_DB_IMPL* db) : m_db(db) {}
  // The caller owns the database afterwards.
  KPT_KEYPOINTS_DB_IMPL* release();

  KPT_KEYPOINTS_DB m_db;
};

#endif
