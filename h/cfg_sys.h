// Configuration switches of the host.
//
// Ownership: the host owns the switches. It reads a key only during the call.
#ifndef H_CFG_SYS_H
#define H_CFG_SYS_H

#include "h/mem_alloc_sys.h"

/// The value of the switch `key`, or `default_value` when nothing sets it. The library calls this
/// each time it needs the value, so a host may change it between two operations.
KPT_HOST_API bool cfg_is_on(const char* key, bool default_value);

#endif
