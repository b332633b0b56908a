// Loads one file and says no more: for counting what a load costs.
//
//   kpt_load FILE
#include <cstdio>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"

// Found by its name: what is counted begins and ends here.
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
