// Register events, one for every remaining register, among N maps.
#include "bench/database.h"
#include "bench/workload.h"

namespace bench {

namespace {

RUN replicate(unsigned count) {
  return
      [db = recorded("replicate", count), of = names('b', count), made = names('c', count), order = shuffled(count)] {
        for (const unsigned k : *order) {
          (*db)->set_replicated_registers((*of)[k], (*made)[k]);
        }
      };
}

// Merges every register of the second half into one of the first half.
RUN merge(unsigned count) {
  return [db = recorded("merge", count), of = names('b', count), order = shuffled(count / 2), half = count / 2] {
    for (const unsigned k : *order) {
      (*db)->set_merged_registers((*of)[k], (*of)[k + half]);
    }
  };
}

RUN retime(unsigned count) {
  return [db = recorded("retime", count), of = names('b', count), order = shuffled(count)] {
    for (const unsigned k : *order) {
      (*db)->set_inverter_retimed_register((*of)[k]);
    }
  };
}

RUN eliminate(unsigned count) {
  return [db = recorded("eliminate", count), of = names('b', count), order = shuffled(count)] {
    for (const unsigned k : *order) {
      (*db)->set_eliminated_register_stuck_at_zero((*of)[k]);
    }
  };
}

}  // namespace

std::vector<WORKLOAD> event_workloads() {
  return {{"replicate/kpt", replicate}, {"merge/kpt", merge}, {"retime/kpt", retime}, {"eliminate/kpt", eliminate}};
}

}  // namespace bench
