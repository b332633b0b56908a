// An SQLite database in memory, which exists as long as a workload. An error ends
// the program, because a workload that fails has no figure.
#ifndef KPT_BENCH_SQLITE_H
#define KPT_BENCH_SQLITE_H

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/names.h"

namespace bench {

class SQLITE {
 public:
  SQLITE() { check(sqlite3_open(":memory:", &m_db)); }
  ~SQLITE() { sqlite3_close(m_db); }
  SQLITE(const SQLITE&) = delete;
  SQLITE& operator=(const SQLITE&) = delete;

  void run(const char* sql) { check(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr)); }
  sqlite3_stmt* prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(m_db, sql.c_str(), -1, &statement, nullptr));
    return statement;
  }
  static void bind(sqlite3_stmt* statement, int place, const std::string& text) {
    sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }

  /// A table of pairs of names with an index for each, which one transaction fills.
  void record(const std::string& table, const NAMES& from, const NAMES& to, const ORDER& order) {
    run(("CREATE TABLE " + table + "(r TEXT, t TEXT); BEGIN").c_str());
    sqlite3_stmt* insert = prepare("INSERT INTO " + table + " VALUES(?, ?)");
    for (const unsigned k : *order) {
      bind(insert, 1, (*from)[k]);
      bind(insert, 2, (*to)[k]);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    run(("COMMIT; CREATE UNIQUE INDEX " + table + "_r ON " + table + "(r); CREATE UNIQUE INDEX " + table + "_t ON " +
         table + "(t)")
            .c_str());
  }

 private:
  void check(int result) const {
    if (result != SQLITE_OK) {
      std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(m_db));
      std::exit(1);
    }
  }
  sqlite3* m_db = nullptr;
};

}  // namespace bench

#endif
