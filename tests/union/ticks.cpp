// The clock of these tests, which adds one tick at every reading. The library
// uses it, because a program's own services precede those of a host library.
#include "h/gen_sys.h"

unsigned long gen_get_tick_count() {
  static unsigned long ticks = 0;
  return ++ticks;
}
