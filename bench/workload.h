// The workloads that are measured: those of the library, and those with which they are compared.
//
// A workload is prepared for a number of registers and then run once. Only the
// run is measured. What the preparation made exists as long as the run that it
// returned.
#ifndef KPT_BENCH_WORKLOAD_H
#define KPT_BENCH_WORKLOAD_H

#include <functional>
#include <string>
#include <vector>

namespace bench {

using RUN = std::function<void()>;

enum class CLOCK { WALL, USER };

struct WORKLOAD {
  std::string name;  // "group/who"
  std::function<RUN(unsigned registers)> prepare;
  CLOCK clock = CLOCK::WALL;
};

std::vector<WORKLOAD> record_workloads();
std::vector<WORKLOAD> query_workloads();
std::vector<WORKLOAD> event_workloads();
std::vector<WORKLOAD> file_workloads();
std::vector<WORKLOAD> unite_workloads();
std::vector<WORKLOAD> container_workloads();

inline std::vector<WORKLOAD> all_workloads() {
  std::vector<WORKLOAD> all;
  for (const auto part :
       {record_workloads, query_workloads, event_workloads, file_workloads, unite_workloads, container_workloads}) {
    for (WORKLOAD& workload : part()) {
      all.push_back(std::move(workload));
    }
  }
  return all;
}

}  // namespace bench

#endif
