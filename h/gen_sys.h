// General utilities of the host.
//
// Ownership: arguments are read during the call only; results are values of the caller.
#ifndef H_GEN_SYS_H
#define H_GEN_SYS_H

#include "h/mem_alloc_sys.h"

/// The decimal number that `text` begins with, after blanks and a sign; 0 when there is none.
/// A number beyond int gives the nearest int.
KPT_HOST_API int gen_atoi(const MEM_STRING& text);

/// `value` in `base`, 2 to 36, lower case, with a "-" when negative. Another base counts as 10.
KPT_HOST_API void gen_itoa(int value, MEM_STRING& out, int base);
KPT_HOST_API MEM_STRING gen_itoa(int value, int base);

/// printf into `out`, which is replaced. A format that cannot be carried out leaves it empty.
KPT_HOST_API __attribute__((format(printf, 2, 3))) void gen_sprintf(MEM_STRING* out, const char* format, ...);

/// Byte order, as strcmp. Neither is null.
KPT_HOST_API int gen_strcmp(const char* a, const char* b);

/// The local date and time, for people to read.
KPT_HOST_API MEM_STRING gen_get_current_time();

/// Ticks since some fixed moment; never goes back. The unit is the host's.
KPT_HOST_API unsigned long gen_get_tick_count();

#endif
