// Loads a database file: by the scanner if the file is plain, by xerces-c
// otherwise, and says to the host what loading has always said.
//
// Ownership: owns the database from `read` to `finish`.
#ifndef KPT_FILE_LOADER_H
#define KPT_FILE_LOADER_H

#include <functional>
#include <memory>
#include <string_view>

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/kpt_keypoints_db_impl.h"

class KPT_EXPORT KPT_FILE_LOADER {
 public:
  /// For tests of the general source.
  enum SOURCES : bool { GENERAL_SOURCE_ALONE, ALL_SOURCES };
  /// Called with the name of a well-formed file's database. Null: it is not wanted.
  using CREATE = std::function<KPT_KEYPOINTS_DB_IMPL*(std::string_view name)>;

  explicit KPT_FILE_LOADER(std::string_view file_name, SOURCES sources = ALL_SOURCES);
  ~KPT_FILE_LOADER();
  KPT_FILE_LOADER(const KPT_FILE_LOADER&) = delete;
  KPT_FILE_LOADER& operator=(const KPT_FILE_LOADER&) = delete;

  /// Finds out whether the file is well-formed, with a message when it is not,
  /// and whose database it holds. False when there is nothing to load.
  bool read(const CREATE& create);
  /// The database that the file holds; after `read`, which was true. Null when
  /// the file is refused as one in which something follows the transformations.
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> finish();

  /// Whether `read` found the file to be plain.
  bool is_plain() const { return m_plain != nullptr; }

 private:
  bool look_through(KPT_STRING& name);
  void tell_parsed() const;

  KPT_STRING m_file_name;
  SOURCES m_sources;
  std::unique_ptr<KPT_BYTES> m_plain;  // of a plain file
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> m_db;
};

#endif
