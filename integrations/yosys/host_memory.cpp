// The memory services that the library asks of its host, on Yosys' own heap.
#include "h/mem_alloc_sys.h"
#include "host/services/blocks.h"

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  return kpt_services::allocate_block(size, thunk);
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) { kpt_services::free_block(p); }

// Yosys loads a library once and keeps it to its end: there is nothing to announce.
MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}
MEM_INITIALIZER::~MEM_INITIALIZER() = default;
