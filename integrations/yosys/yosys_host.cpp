#include "yosys_host.h"

#include "kernel/yosys.h"

bool kpt_yosys::debug_is_shown() { return Yosys::log_make_debug != 0 || Yosys::log_force_debug != 0; }

bool kpt_yosys::show_debug(const char* tag, const char* text) {
  if (!debug_is_shown()) {
    return false;
  }
  Yosys::log("%s: %s\n", tag, text);
  return true;
}

void kpt_yosys::show_warning(const char* tag, const char* text) { Yosys::log_warning("%s: %s\n", tag, text); }
