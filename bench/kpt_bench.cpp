// Runs the workloads at sizes from 1,000 to 1,000,000 registers. A time is that of a
// whole workload; "ns_per_register" divides it. "heap" is the memory per register after
// the run, and "peak_MiB" is the most memory that the run adds in a process of its own.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <memory>

#include "bench/workload.h"

namespace {

using bench::CLOCK;
using bench::RUN;
using bench::WORKLOAD;

double seconds(CLOCK clock) {
  if (clock == CLOCK::WALL) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) + 1e-6 * static_cast<double>(usage.ru_utime.tv_usec);
}

double heap_in_use() {
  const auto info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

double peak_resident_mebibytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

// Frees unused memory, and starts to measure the peak again.
bool forget_peak() {
  malloc_trim(0);
  std::ofstream file("/proc/self/clear_refs");
  return static_cast<bool>(file << "5" << std::flush);
}

// The most resident memory that the run adds, in a child process; not a number
// when it cannot be measured.
double peak_mebibytes(const WORKLOAD& workload, unsigned count) {
  const RUN run = workload.prepare(count);
  int ends[2];
  if (pipe(ends) != 0) {
    return 0;
  }
  const pid_t child = fork();
  if (child == 0) {
    if (!forget_peak()) {
      _exit(1);
    }
    const double before = peak_resident_mebibytes();
    run();
    const double added = peak_resident_mebibytes() - before;
    _exit(write(ends[1], &added, sizeof added) == sizeof added ? 0 : 1);
  }
  close(ends[1]);
  double added = 0;
  if (read(ends[0], &added, sizeof added) != sizeof added) {
    added = std::nan("");
  }
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return added;
}

// The host of a virtual machine may have to find each page that is touched for
// the first time, and takes back freed pages. The first workload would pay for
// this. So the process keeps its memory, and touches enough pages for any
// workload before each run.
void keep_memory() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, -1);
}

void touch_memory(unsigned count) {
  constexpr std::size_t PAGE = 4096;
  constexpr std::size_t AMPLE = 2048;  // bytes per register
  const std::size_t size = AMPLE * count;
  const std::unique_ptr<char[]> memory(new char[size]);
  volatile char* const pages = memory.get();
  for (std::size_t at = 0; at < size; at += PAGE) {
    pages[at] = 1;
  }
}

void measure(benchmark::State& state, const WORKLOAD& workload) {
  const auto count = static_cast<unsigned>(state.range(0));
  double time = 0;
  double heap = 0;
  for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): how the library counts
    const RUN run = workload.prepare(count);
    touch_memory(count);
    const double heap_before = heap_in_use();
    const double start = seconds(workload.clock);
    run();
    const double spent = seconds(workload.clock) - start;
    heap = heap_in_use() - heap_before;
    time += spent;
    state.SetIterationTime(spent);
  }
  state.counters["ns_per_register"] = 1e9 * time / (static_cast<double>(state.iterations()) * count);
  state.counters["heap"] = heap / count;
  state.counters["peak_MiB"] = peak_mebibytes(workload, count);
}

}  // namespace

int main(int argc, char** argv) {
  for (const WORKLOAD& workload : bench::all_workloads()) {
    benchmark::RegisterBenchmark(workload.name.c_str(),
                                 [workload](benchmark::State& state) { measure(state, workload); })
        ->RangeMultiplier(10)
        ->Range(1000, 1000000)
        ->UseManualTime();
  }
  keep_memory();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
