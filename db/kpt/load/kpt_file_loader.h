// Loads a database file: by the scanner if the file is plain, and otherwise by
// xerces-c. The host gets the same messages in both cases.
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
  /// ALL_SOURCES unless a test wants the general source.
  enum SOURCES : bool { GENERAL_SOURCE_ALONE, ALL_SOURCES };
  /// Called with the name of the file's database, unless the name is empty. A
  /// null result means that the database is not wanted.
  using CREATE = std::function<KPT_KEYPOINTS_DB_IMPL*(std::string_view name)>;

  /// The whole load: returns the database of the file, or null. `problem`, unless
  /// it is null, then gets the reason.
  static std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(std::string_view file_name, const CREATE& create,
                                                     KPT_LOAD_PROBLEM* problem);
  /// The same from bytes. Messages use the name that is shown. `visitor` may be null.
  static std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(KPT_BYTES& bytes, std::string_view shown_name,
                                                     KPT_FILE_VISITOR* visitor, const CREATE& create,
                                                     KPT_LOAD_PROBLEM* problem);
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(const CREATE& create, KPT_LOAD_PROBLEM* problem);

  explicit KPT_FILE_LOADER(std::string_view file_name, SOURCES sources = ALL_SOURCES);
  /// Loads from bytes that outlive the loader. Messages use the name that is shown.
  KPT_FILE_LOADER(KPT_BYTES& bytes, std::string_view shown_name);
  ~KPT_FILE_LOADER();
  /// Gets the elements while they are read; outlives the loader.
  void set_visitor(KPT_FILE_VISITOR* visitor) { m_visitor = visitor; }
  KPT_FILE_LOADER(const KPT_FILE_LOADER&) = delete;
  KPT_FILE_LOADER& operator=(const KPT_FILE_LOADER&) = delete;

  /// Checks whether the file is well-formed, with a message when it is not, and
  /// reads its name. False when there is nothing to load.
  bool read(const CREATE& create);
  /// The database of the file. Call it after `read` returned true. Null when the
  /// file is refused because an element follows the transformations.
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> finish();

  /// The database name of a well-formed file; empty for any other file.
  const KPT_STRING& name() const { return m_name; }

  /// Whether `read` found that the file is plain.
  bool is_plain() const { return m_is_plain; }
  /// Why there is no database, unless `create` returned null.
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
  std::unique_ptr<GENERAL> m_general;           // what the general source made of any other file
};

#endif
