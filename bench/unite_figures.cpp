// The processor time of the union of two databases of N one-to-one registers.
//
//   unite_figures N ordered|shuffled [library|sqlite|none]
//
// The first stage maps u_core/a_k to u_core/b_k, the second u_core/b_k to
// u_core/c_k, recorded in the same order or shuffled. "library" prints the processor
// time of the union per register; "sqlite" that of the same join in an in-memory
// database: INSERT ... SELECT over two tables that are indexed by name, and the
// indexes of the result on both of its names; "none" records and ends.
#include <sqlite3.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"

namespace {

// The processor time of this process, without other programs.
struct CLOCK {
  using duration = std::chrono::nanoseconds;
  using time_point = duration;
  static time_point now() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + duration(time.tv_nsec);
  }
};

struct STAGE {
  char from;
  char to;
  std::vector<int> order;
};

std::string name_of(char netlist, int number) {
  return std::string("u_core/") + netlist + "_" + std::to_string(number);
}

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "unite_figures: %s\n", what);
  std::exit(1);
}

void print_figure(const char* what, int registers, const char* order, CLOCK::duration time) {
  const double nanoseconds = std::chrono::duration<double, std::nano>(time).count();
  std::printf("%s %d %s %.0f ns per register\n", what, registers, order, nanoseconds / registers);
}

KPT_KEYPOINTS_DB* record(const char* name, const STAGE& stage) {
  KPT_KEYPOINTS_DB* db = KPT_KEYPOINTS_MANAGER::get_instance()->create_keypoints_db(name);
  for (const int number : stage.order) {
    if (!db->associate_registers_signal_to_signal(name_of(stage.from, number), name_of(stage.to, number))) {
      fail("a register was refused");
    }
  }
  return db;
}

void measure_library(const STAGE& first, const STAGE& second, const char* order, bool unite) {
  KPT_KEYPOINTS_DB* db1 = record("first", first);
  KPT_KEYPOINTS_DB* db2 = record("second", second);
  if (!unite) {
    return;
  }
  const CLOCK::time_point start = CLOCK::now();
  const bool ok = db1->unite(*db2);
  const CLOCK::duration time = CLOCK::now() - start;
  const int registers = static_cast<int>(first.order.size());
  const KPT_REGISTER_TRANSFORMATION map = db1->get_reference_register_transformation(name_of('a', registers / 2));
  if (!ok || map.is_null() || map.get_transformed(0).get_name() != name_of('c', registers / 2).c_str()) {
    fail("the union went wrong");
  }
  print_figure("library", registers, order, time);
}

class DATABASE {
 public:
  DATABASE() {
    if (sqlite3_open(":memory:", &m_db) != SQLITE_OK) {
      fail("no database");
    }
  }
  DATABASE(const DATABASE&) = delete;
  DATABASE& operator=(const DATABASE&) = delete;
  ~DATABASE() { sqlite3_close(m_db); }

  void run(const char* statement) {
    if (sqlite3_exec(m_db, statement, nullptr, nullptr, nullptr) != SQLITE_OK) {
      fail(sqlite3_errmsg(m_db));
    }
  }

  void fill(const char* statement, const STAGE& stage) {
    sqlite3_stmt* insert = nullptr;
    if (sqlite3_prepare_v2(m_db, statement, -1, &insert, nullptr) != SQLITE_OK) {
      fail(sqlite3_errmsg(m_db));
    }
    for (const int number : stage.order) {
      const std::string from = name_of(stage.from, number);
      const std::string to = name_of(stage.to, number);
      sqlite3_bind_text(insert, 1, from.data(), static_cast<int>(from.size()), nullptr);
      sqlite3_bind_text(insert, 2, to.data(), static_cast<int>(to.size()), nullptr);
      if (sqlite3_step(insert) != SQLITE_DONE) {
        fail(sqlite3_errmsg(m_db));
      }
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
  }

  int changes() const { return sqlite3_changes(m_db); }

 private:
  sqlite3* m_db = nullptr;
};

void measure_sqlite(const STAGE& first, const STAGE& second, const char* order) {
  DATABASE db;
  db.run(
      "CREATE TABLE first (r TEXT, t TEXT); CREATE TABLE second (r TEXT, t TEXT);"
      "CREATE TABLE united (r TEXT, t TEXT); BEGIN");
  db.fill("INSERT INTO first VALUES (?, ?)", first);
  db.fill("INSERT INTO second VALUES (?, ?)", second);
  db.run(
      "CREATE INDEX first_r ON first (r); CREATE INDEX first_t ON first (t);"
      "CREATE INDEX second_r ON second (r); CREATE INDEX second_t ON second (t); ANALYZE; COMMIT");
  const CLOCK::time_point start = CLOCK::now();
  db.run("BEGIN; INSERT INTO united SELECT first.r, second.t FROM first JOIN second ON second.r = first.t");
  const int joined = db.changes();
  db.run("CREATE INDEX united_r ON united (r); CREATE INDEX united_t ON united (t); COMMIT");
  const CLOCK::duration time = CLOCK::now() - start;
  if (joined != static_cast<int>(first.order.size())) {
    fail("the join went wrong");
  }
  print_figure("sqlite", joined, order, time);
}

}  // namespace

int main(int argc, char** argv) {
  const int registers = argc > 1 ? std::atoi(argv[1]) : 0;
  const char* order = argc > 2 ? argv[2] : "";
  const char* what = argc > 3 ? argv[3] : "library";
  const bool shuffled = std::strcmp(order, "shuffled") == 0;
  if (registers < 1 || (!shuffled && std::strcmp(order, "ordered") != 0)) {
    fail("usage: unite_figures N ordered|shuffled [library|sqlite|none]");
  }
  STAGE first{'a', 'b', std::vector<int>(static_cast<std::size_t>(registers))};
  std::iota(first.order.begin(), first.order.end(), 0);
  STAGE second{'b', 'c', first.order};
  if (shuffled) {
    std::mt19937 random(1);
    std::shuffle(second.order.begin(), second.order.end(), random);
  }
  if (std::strcmp(what, "sqlite") == 0) {
    measure_sqlite(first, second, order);
  } else {
    measure_library(first, second, order, std::strcmp(what, "none") != 0);
  }
  return 0;
}
