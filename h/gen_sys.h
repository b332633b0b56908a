// General utilities of the host.
//
// Ownership: arguments are read only during the call. The caller owns the results.
#ifndef H_GEN_SYS_H
#define H_GEN_SYS_H

#include "h/mem_alloc_sys.h"

/// The decimal number at the start of `text`, where blanks and a sign may precede it. 0 when there
/// is none. For a number beyond int, the nearest int.
KPT_HOST_API int gen_atoi(const MEM_STRING& text);

/// `value` in `base`, 2 to 36, in lower case, with a "-" when negative. Any other base means 10.
KPT_HOST_API void gen_itoa(int value, MEM_STRING& out, int base);
KPT_HOST_API MEM_STRING gen_itoa(int value, int base);

/// Like printf, with the text in `out`, which is replaced. `out` is empty when the format fails.
KPT_HOST_API __attribute__((format(printf, 2, 3))) void gen_sprintf(MEM_STRING* out, const char* format, ...);

/// Compares bytes, like strcmp. Neither argument is null.
KPT_HOST_API int gen_strcmp(const char* a, const char* b);

/// The local date and time, for people to read.
KPT_HOST_API MEM_STRING gen_get_current_time();

/// Ticks since some fixed moment. The number never decreases. The host chooses the unit.
KPT_HOST_API unsigned long gen_get_tick_count();

#endif
