// A database outside the manager's registry, so that a command can use two databases of one name.
//
// Ownership: a DATABASE owns its database. Everything that it returns is valid as long as it exists.
#ifndef KPTDB_DATABASE_H
#define KPTDB_DATABASE_H

#include <string>

#include "db/kpt/kpt.h"
#include "outline.h"

namespace kptdb {

class DATABASE {
 public:
  /// An empty database.
  static DATABASE create(const std::string& name);
  /// Reads a database file, or standard input for "-", compressed or not. FAILURE when
  /// it cannot be read. `outline`, unless it is null, gets the elements of the file.
  static DATABASE load(const std::string& path, OUTLINE* outline = nullptr);

  /// Writes the file completely or not at all, compressed if its name ends with
  /// ".gz"; "-" means standard output. FAILURE when that is not possible.
  void save(const std::string& path) const;

  const KPT_KEYPOINTS_DB& handle() const { return m_db.get(); }
  KPT_KEYPOINT_SET registers(KPT_SET_ENUM side) const { return handle().get_set(side); }
  KPT_TRANSFORMATION_SET maps() const { return handle().get_transformation_set(); }
  std::string name() const { return std::string(std::string_view(handle().get_name())); }

 private:
  explicit DATABASE(KPT_UNREGISTERED_DB db) : m_db(std::move(db)) {}
  void refuse_ids_that_do_not_survive(const std::string& path) const;
  void save_plainly(const std::string& path, const std::string& shown) const;

  KPT_UNREGISTERED_DB m_db;
};

}  // namespace kptdb

#endif
