// A database that is not in the manager's registry, as a value that owns it.
//
// For programs that look at several databases of one name, at a database that
// must not outlive a scope, or at a file whose load they want explained.
//
// Ownership: owns its database, destroys it with itself, and is moved, not
// copied. Handles from it are good as long as the database lives, whichever
// value owns it by then.
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
  /// An empty database. Any name will do; one that is empty, or that a file
  /// cannot hold, cannot be saved atomically.
  static KPT_UNREGISTERED_DB create(std::string_view name);
  /// The database in a file. Owns nothing when the file cannot be loaded:
  /// `problem`, unless null, then tells the first reason, and the host is told
  /// what the manager's load tells it. A registered database of the same name
  /// does not matter.
  static KPT_UNREGISTERED_DB load(std::string_view file_name, KPT_LOAD_PROBLEM* problem = nullptr);
  /// The same from bytes of the caller's; `shown_name` stands for the file in
  /// what the host is told. Bytes that count what is read of them tell how far a
  /// load has come: a file that the library wrote is read twice. `visitor`,
  /// unless null, sees every element once.
  static KPT_UNREGISTERED_DB load(KPT_BYTES& bytes, std::string_view shown_name, KPT_LOAD_PROBLEM* problem = nullptr,
                                  KPT_FILE_VISITOR* visitor = nullptr);

  ~KPT_UNREGISTERED_DB() { destroy(); }
  KPT_UNREGISTERED_DB(KPT_UNREGISTERED_DB&& other) noexcept;
  KPT_UNREGISTERED_DB& operator=(KPT_UNREGISTERED_DB&& other) noexcept;
  KPT_UNREGISTERED_DB(const KPT_UNREGISTERED_DB&) = delete;
  KPT_UNREGISTERED_DB& operator=(const KPT_UNREGISTERED_DB&) = delete;

  bool is_null() const { return m_db.is_null(); }
  /// The handle of the database, null when there is none. Its
  /// `delete_keypoints_db` is not for callers: `destroy` is.
  const KPT_KEYPOINTS_DB& get() const { return m_db; }
  const KPT_KEYPOINTS_DB& operator*() const { return m_db; }
  const KPT_KEYPOINTS_DB* operator->() const { return &m_db; }

  /// As the handle's; false when there is no database.
  bool save(std::string_view file_name) const;
  bool save_atomically(std::string_view file_name) const;
  /// Destroys the database. False when there is none.
  bool destroy();

 private:
  friend class KPT_KEYPOINTS_MANAGER;
  explicit KPT_UNREGISTERED_DB(KPT_KEYPOINTS_DB_IMPL* db) : m_db(db) {}
  // The database is the caller's from here on.
  KPT_KEYPOINTS_DB_IMPL* release();

  KPT_KEYPOINTS_DB m_db;
};

#endif
