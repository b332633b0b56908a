// Asks for each of N registers once, by name, in random order.
#include <benchmark/benchmark.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include "bench/database.h"
#include "bench/sqlite.h"
#include "bench/workload.h"

namespace bench {

namespace {

RUN lookup_kpt(unsigned count) {
  return [db = recorded("query", count), asked = names('a', count), order = shuffled(count)] {
    for (const unsigned k : *order) {
      benchmark::DoNotOptimize((*db)->get_reference_register_transformation((*asked)[k]).is_null());
    }
  };
}

RUN answers_kpt(unsigned count) {
  return [db = recorded("query", count), asked = names('a', count), order = shuffled(count)] {
    for (const unsigned k : *order) {
      const KPT_REGISTER_TRANSFORMATION map = (*db)->get_reference_register_transformation((*asked)[k]);
      benchmark::DoNotOptimize(map.get_transformed(0).is_null());
      benchmark::DoNotOptimize(map.get_transformed_equivalents(0).size());
    }
  };
}

RUN lookup_flat(unsigned count) {
  auto flat = std::make_shared<boost::unordered_flat_map<std::string, unsigned>>();
  const NAMES keys = names('a', count);
  for (unsigned k = 0; k < count; ++k) {
    flat->emplace((*keys)[k], k);
  }
  return [flat, asked = keys, order = shuffled(count)] {
    for (const unsigned k : *order) {
      benchmark::DoNotOptimize(flat->find((*asked)[k])->second);
    }
  };
}

RUN lookup_sqlite(unsigned count) {
  auto db = std::make_shared<SQLITE>();
  db->record("stage", names('a', count), names('b', count), in_order(count));
  return [db, asked = names('a', count), order = shuffled(count)] {
    sqlite3_stmt* select = db->prepare("SELECT t FROM stage WHERE r = ?");
    for (const unsigned k : *order) {
      SQLITE::bind(select, 1, (*asked)[k]);
      sqlite3_step(select);
      benchmark::DoNotOptimize(sqlite3_column_text(select, 0));
      sqlite3_reset(select);
    }
    sqlite3_finalize(select);
  };
}

}  // namespace

std::vector<WORKLOAD> query_workloads() {
  return {{"query/kpt", lookup_kpt},
          {"query/kpt_answers", answers_kpt},
          {"query/flat", lookup_flat},
          {"query/sqlite", lookup_sqlite}};
}

}  // namespace bench
