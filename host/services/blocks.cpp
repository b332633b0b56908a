#include "host/services/blocks.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

// Precedes every block, so that the size and the account of a block are found without a look-up.
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

void discharge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  thunk.m_live_bytes -= size;
  thunk.m_live_blocks -= 1;
}

}  // namespace

void* kpt_services::allocate_block(unsigned long size, MEM_TRACKER_THUNK* thunk) {
  void* const raw = size <= LARGEST_BLOCK ? std::malloc(sizeof(BLOCK_HEADER) + size) : nullptr;
  if (raw == nullptr) {
    throw std::bad_alloc();
  }
  charge(*thunk, size);
  return new (raw) BLOCK_HEADER{size, thunk} + 1;
}

void kpt_services::free_block(void* p) {
  if (p == nullptr) {
    return;
  }
  BLOCK_HEADER* const header = static_cast<BLOCK_HEADER*>(p) - 1;
  discharge(*header->m_thunk, header->m_size);
  std::free(header);
}
