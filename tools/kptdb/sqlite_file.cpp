#include "sqlite_file.h"

#include "outcome.h"

namespace kptdb {

namespace {

constexpr std::size_t ROWS_AT_ONCE = 32;
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

void SQL_FILE::check(int code) const {
  if (code != SQLITE_OK && code != SQLITE_DONE) {
    fail();
  }
}

std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> SQL_FILE::prepared(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  check(sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &statement, nullptr));
  return {statement, sqlite3_finalize};
}

void SQL_FILE::run_with(const std::string& sql, const std::string& text) {
  const auto statement = prepared(sql);
  check(sqlite3_bind_text(statement.get(), 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
  check(sqlite3_step(statement.get()));
}

std::int64_t SQL_FILE::number(const std::string& sql) {
  const auto statement = prepared(sql);
  if (sqlite3_step(statement.get()) != SQLITE_ROW) {
    fail();
  }
  return sqlite3_column_int64(statement.get(), 0);
}

SQL_INSERT::SQL_INSERT(SQL_FILE& file, std::string table, std::size_t columns, const std::string& first)
    : m_file(file),
      m_table(std::move(table)),
      m_columns(columns - 1),
      m_first(first),
      m_many(statement_for(ROWS_AT_ONCE)) {
  m_cells.reserve(m_columns * ROWS_AT_ONCE);
}

// Parameter 1 is the first column of all rows.
SQL_INSERT::STATEMENT SQL_INSERT::statement_for(std::size_t rows) const {
  std::string row = "(?1";
  for (std::size_t k = 0; k < m_columns; ++k) {
    row += ",?";
  }
  row += ')';
  std::string sql = "INSERT INTO " + m_table + " VALUES" + row;
  for (std::size_t k = 1; k < rows; ++k) {
    sql += ',' + row;
  }
  STATEMENT statement = m_file.prepared(sql);
  m_file.check(sqlite3_bind_text(statement.get(), 1, m_first.data(), static_cast<int>(m_first.size()), SQLITE_STATIC));
  return statement;
}

SQL_INSERT& SQL_INSERT::text(std::string_view text) {
  m_cells.push_back({CELL::TEXT, 0, text});
  return *this;
}

SQL_INSERT& SQL_INSERT::number(std::int64_t number) {
  m_cells.push_back({CELL::NUMBER, number, {}});
  return *this;
}

SQL_INSERT& SQL_INSERT::null() {
  m_cells.push_back({CELL::NOTHING, 0, {}});
  return *this;
}

void SQL_INSERT::end_row() {
  if (m_cells.size() == m_columns * ROWS_AT_ONCE) {
    insert(m_many.get());
  }
}

void SQL_INSERT::finish() {
  if (!m_cells.empty()) {
    insert(statement_for(m_cells.size() / m_columns).get());
  }
}

void SQL_INSERT::insert(sqlite3_stmt* statement) {
  int parameter = 1;
  for (const CELL& cell : m_cells) {
    ++parameter;
    m_file.check(cell.kind == CELL::NUMBER ? sqlite3_bind_int64(statement, parameter, cell.number)
                 : cell.kind == CELL::TEXT ? sqlite3_bind_text(statement, parameter, cell.text.data(),
                                                               static_cast<int>(cell.text.size()), SQLITE_STATIC)
                                           : sqlite3_bind_null(statement, parameter));
  }
  m_cells.clear();
  m_file.check(sqlite3_step(statement));
  m_file.check(sqlite3_reset(statement));
}

}  // namespace kptdb
