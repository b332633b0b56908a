// The host's memory services, on the heap of Yosys.
#include "h/mem_alloc_sys.h"
#include "host/services/blocks.h"

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  return kpt_services::allocate_block(size, thunk);
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) { kpt_services::free_block(p); }

// Yosys loads a library once and keeps it until it ends, so there is nothing to do.
MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}
MEM_INITIALIZER::~MEM_INITIALIZER() = default;
