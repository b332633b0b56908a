// A database outside the manager's registry, so that two of one name can be looked at together.
//
// Ownership: a DATABASE owns its database; what it hands out is good as long as it lives.
#ifndef KPTDB_DATABASE_H
#define KPTDB_DATABASE_H

#include <memory>
#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kptdb {

class DATABASE {
 public:
  /// An empty database.
  static DATABASE create(const std::string& name);
  /// Reads a database file. FAILURE when it cannot be read.
  static DATABASE load(const std::string& path);

  /// Writes the file whole or not at all. FAILURE when that is not possible.
  void save(const std::string& path) const;

  KPT_KEYPOINTS_DB handle() const { return KPT_KEYPOINTS_DB(m_db.get()); }
  KPT_KEYPOINTS_DB_IMPL& impl() const { return *m_db; }
  KPT_KEYPOINT_SET_IMPL& registers(KPT_SET_ENUM side) const;
  KPT_TRANSFORMATION_SET_IMPL& maps() const { return *m_db->get_transformation_set(); }
  std::string name() const { return std::string(std::string_view(m_db->get_db_name())); }

 private:
  explicit DATABASE(KPT_KEYPOINTS_DB_IMPL* db) : m_db(db) {}
  void move_counters_past_own_ids() const;
  void refuse_ids_that_do_not_survive(const std::string& path) const;

  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> m_db;
};

}  // namespace kptdb

#endif
