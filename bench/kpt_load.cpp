// Loads one file and prints nothing: for counting the instructions of a load.
//
//   kpt_load FILE
#include <cstdio>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"

// The instruction counter finds this function by its name and counts only inside it.
extern "C" __attribute__((noinline)) bool kpt_load_measured(const char* file) {
  return KPT_KEYPOINTS_MANAGER::get_instance()->load_db(file) != nullptr;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: kpt_load FILE\n");
    return 2;
  }
  kpt_host::set_error_sink([](const char*, const char* text) { std::fprintf(stderr, "%s\n", text); });
  return kpt_load_measured(argv[1]) ? 0 : 1;
}
