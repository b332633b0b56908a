// An SQLite file that is being written.
//
// Ownership: a file owns its connection and statements. Every failure is a FAILURE that names it.
#ifndef KPTDB_SQLITE_FILE_H
#define KPTDB_SQLITE_FILE_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kptdb {

class SQL_FILE {
 public:
  explicit SQL_FILE(const std::string& path);
  void run(const std::string& sql);
  std::int64_t number(const std::string& sql);

 private:
  friend class SQL_INSERT;
  [[noreturn]] void fail() const;

  std::string m_path;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> m_db;
};

/// Inserts rows into a table. Texts are read only during `end_row`.
class SQL_INSERT {
 public:
  SQL_INSERT(SQL_FILE& file, const std::string& sql);
  /// The text is the first column of every row.
  SQL_INSERT(SQL_FILE& file, const std::string& sql, const std::string& first);
  SQL_INSERT& text(std::string_view text);
  SQL_INSERT& number(std::int64_t number);
  SQL_INSERT& null();
  void end_row();

 private:
  void check(int code) const;

  SQL_FILE& m_file;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> m_statement;
  int m_column = 0;
  int m_kept = 0;  // columns that are the same in every row
};

}  // namespace kptdb

#endif
