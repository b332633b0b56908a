// Files, and databases as readable text.
//
// Ownership: a FOLDER owns its directory and removes it; a LOADED owns its
// database. Everything else is a value.
#ifndef TESTS_FORMAT_DATABASES_H
#define TESTS_FORMAT_DATABASES_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kpt_test {

/// The path of a file of tests/format/data.
std::string data_file(const std::string& name);
std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view bytes);

/// A new directory in the system's directory for temporary files.
class FOLDER {
 public:
  FOLDER();
  ~FOLDER();
  FOLDER(const FOLDER&) = delete;
  FOLDER& operator=(const FOLDER&) = delete;

  const std::string& path() const { return m_path; }
  std::string file(const std::string& name) const { return m_path + "/" + name; }
  /// Writes a file of these bytes and returns its path.
  std::string file_of(std::string_view bytes, const std::string& name = "db.xml") const;
  /// The names of the files in it, sorted.
  std::vector<std::string> names() const;

 private:
  std::string m_path;
};

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

inline DATABASE new_database(std::string_view name) { return DATABASE(new KPT_KEYPOINTS_DB_IMPL(name)); }

struct LOADED {
  DATABASE db;
  bool result;
};

/// Loads the file without a manager.
LOADED load(const std::string& path);
/// The same for a file of tests/format/data.
LOADED load_data(const std::string& name);
/// The file that a save of `db` writes.
std::string saved(KPT_KEYPOINTS_DB_IMPL& db);

/// "1:a" for a signal, "2:b/entity/type" for a block instance, in the set's order.
std::vector<std::string> registers(const KPT_KEYPOINT_SET_IMPL& set);
/// "a b~c|~d" is a side of two indices: a and b in the n group and c in the i
/// group of index 0, d in the i group of index 1. "null" is a null keypoint.
std::string side_text(const NI_PAIR_VECTOR& side);
/// "a~ -> x~" and, where there is one, " (1)" for the elimination and
/// " [01/1 10/0]" for the table: a state's reference entries, then its
/// transformed ones.
std::vector<std::string> maps(KPT_KEYPOINTS_DB_IMPL& db);

/// Sets both id counters while it exists, and then restores them.
class COUNTERS {
 public:
  COUNTERS(long r, long t);
  ~COUNTERS();
  COUNTERS(const COUNTERS&) = delete;
  COUNTERS& operator=(const COUNTERS&) = delete;

 private:
  long m_r;
  long m_t;
};

}  // namespace kpt_test

#endif
