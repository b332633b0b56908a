// The memory services that the library asks of its host, on Yosys' own heap.
#include <algorithm>
#include <cstdlib>
#include <limits>

#include "h/mem_alloc_sys.h"

namespace {

// Stands before every block, so that a block finds its size and its account.
struct alignas(std::max_align_t) BLOCK_HEADER {
  unsigned long m_size;
  MEM_TRACKER_THUNK* m_thunk;
};

constexpr unsigned long LARGEST_BLOCK =
    static_cast<unsigned long>(std::numeric_limits<std::ptrdiff_t>::max()) - sizeof(BLOCK_HEADER);

void charge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  thunk.m_live_bytes += size;
  thunk.m_live_blocks += 1;
  thunk.m_peak_bytes = std::max(thunk.m_peak_bytes, thunk.m_live_bytes);
  thunk.m_peak_blocks = std::max(thunk.m_peak_blocks, thunk.m_live_blocks);
}

}  // namespace

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  void* const raw = size <= LARGEST_BLOCK ? std::malloc(sizeof(BLOCK_HEADER) + size) : nullptr;
  if (raw == nullptr) {
    throw std::bad_alloc();
  }
  charge(*thunk, size);
  return new (raw) BLOCK_HEADER{size, thunk} + 1;
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) {
  if (p == nullptr) {
    return;
  }
  BLOCK_HEADER* const header = static_cast<BLOCK_HEADER*>(p) - 1;
  header->m_thunk->m_live_bytes -= header->m_size;
  header->m_thunk->m_live_blocks -= 1;
  std::free(header);
}

// Yosys loads a library once and keeps it to its end: there is nothing to announce.
MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}
MEM_INITIALIZER::~MEM_INITIALIZER() = default;
