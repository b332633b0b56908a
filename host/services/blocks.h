// Blocks of memory that store their size and their account. Not installed.
//
// Ownership: the code that allocates a block owns it until it is freed. A tracker
// outlives the blocks that are counted in it.
#ifndef HOST_SERVICES_BLOCKS_H
#define HOST_SERVICES_BLOCKS_H

#include "h/mem_alloc_sys.h"

namespace kpt_services {

// Safe in any thread. The counters of a tracker are atomic, each by itself, once
// there are several threads.

/// Like MEM_MANAGER::new_wrapper.
void* allocate_block(unsigned long size, MEM_TRACKER_THUNK* thunk);
/// Like MEM_MANAGER::delete_wrapper.
void free_block(void* p);

}  // namespace kpt_services

#endif
