#include <cxxabi.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

#include "h/mem_alloc_sys.h"
#include "host/kpt_host.h"

namespace {

// Stands before every block, so that a block finds its size and its account without a lookup.
struct alignas(std::max_align_t) BLOCK_HEADER {
  unsigned long m_size;
  MEM_TRACKER_THUNK* m_thunk;
};

constexpr unsigned long LARGEST_BLOCK =
    static_cast<unsigned long>(std::numeric_limits<std::ptrdiff_t>::max()) - sizeof(BLOCK_HEADER);

// Never destroyed: static objects of other libraries allocate and free until the very end.
std::vector<MEM_TRACKER_THUNK*>& known_thunks() {
  static auto* const thunks = new std::vector<MEM_TRACKER_THUNK*>;
  return *thunks;
}

// A thunk that never counted a block has not been seen yet.
void charge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  if (thunk.m_peak_blocks == 0) {
    known_thunks().push_back(&thunk);
  }
  thunk.m_live_bytes += size;
  thunk.m_live_blocks += 1;
  thunk.m_peak_bytes = std::max(thunk.m_peak_bytes, thunk.m_live_bytes);
  thunk.m_peak_blocks = std::max(thunk.m_peak_blocks, thunk.m_live_blocks);
}

void discharge(MEM_TRACKER_THUNK& thunk, unsigned long size) {
  thunk.m_live_bytes -= size;
  thunk.m_live_blocks -= 1;
}

const void* library_of(const void* address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

std::string readable_name(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                         &std::free);
  return name != nullptr ? name.get() : type.name();
}

}  // namespace

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  std::unique_ptr<void, decltype(&std::free)> raw(
      size <= LARGEST_BLOCK ? std::malloc(sizeof(BLOCK_HEADER) + size) : nullptr, &std::free);
  if (raw == nullptr) {
    throw std::bad_alloc();
  }
  charge(*thunk, size);  // may need memory of its own
  return new (raw.release()) BLOCK_HEADER{size, thunk} + 1;
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) {
  if (p == nullptr) {
    return;
  }
  BLOCK_HEADER* const header = static_cast<BLOCK_HEADER*>(p) - 1;
  discharge(*header->m_thunk, header->m_size);
  std::free(header);
}

MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}

// A library that goes takes its trackers along. Should it allocate once more before it is gone,
// its trackers count as new.
MEM_INITIALIZER::~MEM_INITIALIZER() {
  const void* const leaving = library_of(this);
  std::erase_if(known_thunks(), [leaving](MEM_TRACKER_THUNK* thunk) {
    const bool leaves = leaving != nullptr && library_of(thunk) == leaving;
    if (leaves) {
      thunk->m_peak_blocks = 0;
    }
    return leaves;
  });
}

std::vector<kpt_host::TRACKER> kpt_host::trackers() {
  std::vector<TRACKER> result;
  for (const MEM_TRACKER_THUNK* thunk : known_thunks()) {
    result.push_back({readable_name(*thunk->m_type), thunk->m_live_bytes, thunk->m_live_blocks, thunk->m_peak_bytes,
                      thunk->m_peak_blocks});
  }
  return result;
}
