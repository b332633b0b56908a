#include <cxxabi.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "h/mem_alloc_sys.h"
#include "host/kpt_host.h"
#include "host/services/blocks.h"

namespace {

// Protects the list of trackers.
constinit std::mutex s_lock;

// Never destroyed: static objects of other libraries allocate and free until the process ends.
std::vector<MEM_TRACKER_THUNK*>& known_thunks() {
  static auto* const thunks = new std::vector<MEM_TRACKER_THUNK*>;
  return *thunks;
}

// Other threads may be charging it.
unsigned long read(unsigned long& counter) { return std::atomic_ref(counter).load(std::memory_order_relaxed); }

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

// A tracker without any counted block is seen for the first time.
void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  const auto is_new = [&] { return read(thunk->m_peak_blocks) == 0; };
  if (!is_new()) {
    return kpt_services::allocate_block(size, thunk);
  }
  const std::lock_guard lock(s_lock);
  const bool is_first = is_new();  // of the threads that have come here
  if (is_first) {
    known_thunks().reserve(known_thunks().size() + 1);  // before the block is there, which would be lost
  }
  void* const block = kpt_services::allocate_block(size, thunk);
  if (is_first) {
    known_thunks().push_back(thunk);
  }
  return block;
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) { kpt_services::free_block(p); }

MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}

// The trackers of a library are gone when it is unloaded. If it allocates once
// more before, its trackers count as new.
MEM_INITIALIZER::~MEM_INITIALIZER() {
  const void* const leaving = library_of(this);
  const std::lock_guard lock(s_lock);
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
  const std::lock_guard lock(s_lock);
  for (MEM_TRACKER_THUNK* thunk : known_thunks()) {
    result.push_back({readable_name(*thunk->m_type), read(thunk->m_live_bytes), read(thunk->m_live_blocks),
                      read(thunk->m_peak_bytes), read(thunk->m_peak_blocks)});
  }
  return result;
}
