// The timing lines of the long operations.
//
// Ownership: none.
#ifndef KPT_TICKS_H
#define KPT_TICKS_H

#include "db/kpt/kpt_types.h"
#include "h/gen_sys.h"

/// The ticks (the host's unit) since `start`, as text for a "TIME: " line.
inline KPT_STRING kpt_ticks_since(unsigned long start) {
  KPT_STRING text;
  gen_sprintf(&text, "%d", static_cast<int>(gen_get_tick_count() - start));
  return text;
}

#endif
