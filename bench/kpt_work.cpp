// Runs one workload once, for an instruction counter:
//
//   kpt_work GROUP/WHO REGISTERS
//
// The instructions inside kpt_work_measured are counted.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/workload.h"

extern "C" __attribute__((noinline)) void kpt_work_measured(const bench::RUN& run) { run(); }

int main(int argc, char** argv) {
  if (argc == 3) {
    for (const bench::WORKLOAD& workload : bench::all_workloads()) {
      if (workload.name == argv[1]) {
        const bench::RUN run = workload.prepare(static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)));
        kpt_work_measured(run);
        return 0;
      }
    }
  }
  std::fprintf(stderr, "usage: kpt_work GROUP/WHO REGISTERS\n");
  return 2;
}
