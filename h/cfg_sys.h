// Configuration switches of the host.
//
// Ownership: the host owns the switches; a key is read during the call only.
#ifndef H_CFG_SYS_H
#define H_CFG_SYS_H

#include "h/mem_alloc_sys.h"

/// The value of the switch `key`, or `default_value` when nothing sets it. Asked anew each time the
/// switch matters, so a host may change it between two operations.
KPT_HOST_API bool cfg_is_on(const char* key, bool default_value);

#endif
