// An SQLite file that is being written.
//
// Ownership: a file owns its connection and statements. Every failure is a FAILURE that names it.
#ifndef KPTDB_SQLITE_FILE_H
#define KPTDB_SQLITE_FILE_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kptdb {

class SQL_FILE {
 public:
  explicit SQL_FILE(const std::string& path);
  void run(const std::string& sql);
  /// One statement with one text as its parameter.
  void run_with(const std::string& sql, const std::string& text);
  std::int64_t number(const std::string& sql);

 private:
  friend class SQL_INSERT;
  [[noreturn]] void fail() const;
  void check(int code) const;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> prepared(const std::string& sql) const;

  std::string m_path;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> m_db;
};

/// Inserts rows into a table, many with each statement: one at a time takes twice as long. Texts are
/// read during `end_row` or `finish`, so that they have to live until `finish`.
class SQL_INSERT {
 public:
  /// The first column of every row is the given text.
  SQL_INSERT(SQL_FILE& file, std::string table, std::size_t columns, const std::string& first);
  SQL_INSERT& text(std::string_view text);
  SQL_INSERT& number(std::int64_t number);
  SQL_INSERT& null();
  void end_row();
  /// Inserts the rows that are left. More rows may follow.
  void finish();

 private:
  using STATEMENT = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;
  struct CELL {
    enum { NOTHING, NUMBER, TEXT } kind;
    std::int64_t number;
    std::string_view text;
  };

  STATEMENT statement_for(std::size_t rows) const;
  void insert(sqlite3_stmt* statement);

  SQL_FILE& m_file;
  std::string m_table;
  std::size_t m_columns;  // without the first
  std::string m_first;
  STATEMENT m_many;
  std::vector<CELL> m_cells;
};

}  // namespace kptdb

#endif
