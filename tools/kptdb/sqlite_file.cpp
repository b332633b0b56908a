#include "sqlite_file.h"

#include "outcome.h"

namespace kptdb {

namespace {

constexpr int PATIENCE = 60'000;  // ms to wait while another program writes the file

}  // namespace

SQL_FILE::SQL_FILE(const std::string& path) : m_path(path), m_db(nullptr, sqlite3_close) {
  sqlite3* db = nullptr;
  const int code = sqlite3_open(path.c_str(), &db);
  m_db.reset(db);
  if (code != SQLITE_OK) {
    fail();
  }
  sqlite3_busy_timeout(db, PATIENCE);
}

void SQL_FILE::fail() const {
  throw FAILURE(EXIT_FOUND, m_path + ": not written: " + (m_db == nullptr ? "no memory" : sqlite3_errmsg(m_db.get())));
}

void SQL_FILE::run(const std::string& sql) {
  if (sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    fail();
  }
}

std::int64_t SQL_FILE::number(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    fail();
  }
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> owner(statement, sqlite3_finalize);
  if (sqlite3_step(statement) != SQLITE_ROW) {
    fail();
  }
  return sqlite3_column_int64(statement, 0);
}

SQL_INSERT::SQL_INSERT(SQL_FILE& file, const std::string& sql) : m_file(file), m_statement(nullptr, sqlite3_finalize) {
  sqlite3_stmt* statement = nullptr;
  check(sqlite3_prepare_v2(file.m_db.get(), sql.c_str(), -1, &statement, nullptr));
  m_statement.reset(statement);
}

SQL_INSERT::SQL_INSERT(SQL_FILE& file, const std::string& sql, const std::string& first) : SQL_INSERT(file, sql) {
  check(sqlite3_bind_text(m_statement.get(), 1, first.data(), static_cast<int>(first.size()), SQLITE_TRANSIENT));
  m_column = m_kept = 1;
}

void SQL_INSERT::check(int code) const {
  if (code != SQLITE_OK && code != SQLITE_DONE) {
    m_file.fail();
  }
}

SQL_INSERT& SQL_INSERT::text(std::string_view text) {
  check(sqlite3_bind_text(m_statement.get(), ++m_column, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
  return *this;
}

SQL_INSERT& SQL_INSERT::number(std::int64_t number) {
  check(sqlite3_bind_int64(m_statement.get(), ++m_column, number));
  return *this;
}

SQL_INSERT& SQL_INSERT::null() {
  check(sqlite3_bind_null(m_statement.get(), ++m_column));
  return *this;
}

void SQL_INSERT::end_row() {
  check(sqlite3_step(m_statement.get()));
  check(sqlite3_reset(m_statement.get()));
  m_column = m_kept;
}

}  // namespace kptdb
