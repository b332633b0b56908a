// Loads a database file: by the scanner if the file is plain, by xerces-c
// otherwise. The host is told the same in both cases.
//
// Ownership: owns the database from `read` to `finish`.
#ifndef KPT_FILE_LOADER_H
#define KPT_FILE_LOADER_H

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/kpt_file_visitor.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_load_problem.h"

class KPT_DATABASE_BUILDER;

class KPT_EXPORT KPT_FILE_LOADER {
 public:
  /// For tests of the general source.
  enum SOURCES : bool { GENERAL_SOURCE_ALONE, ALL_SOURCES };
  /// Called with the name of the file's database, unless that is empty. Null: it
  /// is not wanted.
  using CREATE = std::function<KPT_KEYPOINTS_DB_IMPL*(std::string_view name)>;

  /// All of it: the database that the file holds, or null. `problem`, unless
  /// null, then notes why.
  static std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(std::string_view file_name, const CREATE& create,
                                                     KPT_LOAD_PROBLEM* problem);
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(const CREATE& create, KPT_LOAD_PROBLEM* problem);

  explicit KPT_FILE_LOADER(std::string_view file_name, SOURCES sources = ALL_SOURCES);
  /// Bytes that outlive the loader, under a name for the messages.
  KPT_FILE_LOADER(KPT_BYTES& bytes, std::string_view shown_name);
  ~KPT_FILE_LOADER();
  /// Who sees the elements as they are read; outlives the loader.
  void set_visitor(KPT_FILE_VISITOR* visitor) { m_visitor = visitor; }
  KPT_FILE_LOADER(const KPT_FILE_LOADER&) = delete;
  KPT_FILE_LOADER& operator=(const KPT_FILE_LOADER&) = delete;

  /// Finds out whether the file is well-formed, with a message when it is not,
  /// and whose database it holds. False when there is nothing to load.
  bool read(const CREATE& create);
  /// The database that the file holds; after `read`, which was true. Null when
  /// the file is refused as one in which something follows the transformations.
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> finish();

  /// The name of the database of a well-formed file; else empty.
  const KPT_STRING& name() const { return m_name; }

  /// Whether `read` found the file to be plain.
  bool is_plain() const { return m_is_plain; }
  /// Why there is no database, unless `create` did not want it.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }

 private:
  struct GENERAL;

  bool look_through();
  bool read_generally(const CREATE& create);
  void show_what_is_not_wanted();
  bool build_from_plain(KPT_DATABASE_BUILDER& builder);
  void tell_parsed() const;
  void tell_parsing_starts() const;
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> complete(std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db);

  KPT_STRING m_file_name;
  SOURCES m_sources;
  KPT_LOAD_PROBLEM m_problem;
  std::optional<KPT_FILE_BYTES> m_file;
  KPT_BYTES* m_bytes;  // null for a file that cannot be opened
  KPT_FILE_VISITOR* m_visitor = nullptr;
  bool m_is_plain = false;
  KPT_STRING m_name;
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> m_db;  // of a plain file
  std::unique_ptr<GENERAL> m_general;           // what the general source made of another
};

#endif
