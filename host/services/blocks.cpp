#include "host/services/blocks.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace {

// Precedes every block, so that the size and the account of a block are found without a look-up.
struct alignas(std::max_align_t) BLOCK_HEADER {
  unsigned long m_size;
  MEM_TRACKER_THUNK* m_thunk;
};

constexpr unsigned long LARGEST_BLOCK =
    static_cast<unsigned long>(std::numeric_limits<std::ptrdiff_t>::max()) - sizeof(BLOCK_HEADER);

// Threads that allocate at the same time charge the same accounts. Most
// processes have one thread, and an atomic step costs as much as all the others.
bool is_alone() {
#if __has_include(<sys/single_threaded.h>)
  return __libc_single_threaded != 0;
#else
  return false;
#endif
}

void raise(unsigned long& live, unsigned long& peak, unsigned long by) {
  if (is_alone()) {
    live += by;
    peak = std::max(peak, live);
    return;
  }
  const unsigned long now = std::atomic_ref(live).fetch_add(by, std::memory_order_relaxed) + by;
  const std::atomic_ref highest(peak);
  unsigned long value = highest.load(std::memory_order_relaxed);
  while (value < now && !highest.compare_exchange_weak(value, now, std::memory_order_relaxed)) {
  }
}

void lower(unsigned long& live, unsigned long by) {
  if (is_alone()) {
    live -= by;
  } else {
    std::atomic_ref(live).fetch_sub(by, std::memory_order_relaxed);
  }
}

void charge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  raise(thunk.m_live_bytes, thunk.m_peak_bytes, size);
  raise(thunk.m_live_blocks, thunk.m_peak_blocks, 1);
}

void discharge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  lower(thunk.m_live_bytes, size);
  lower(thunk.m_live_blocks, 1);
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
