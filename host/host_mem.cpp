#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdlib>
#include <memory>

#include "h/mem_alloc_sys.h"
#include "host/kpt_host.h"
#include "host/services/blocks.h"

namespace {

// Never destroyed: static objects of other libraries allocate and free until the process ends.
std::vector<MEM_TRACKER_THUNK*>& known_thunks() {
  static auto* const thunks = new std::vector<MEM_TRACKER_THUNK*>;
  return *thunks;
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

// A tracker without any counted block is seen for the first time.
void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  const bool is_new = thunk->m_peak_blocks == 0;
  if (is_new) {
    known_thunks().reserve(known_thunks().size() + 1);  // before the block exists, because a failure here would lose it
  }
  void* const block = kpt_services::allocate_block(size, thunk);
  if (is_new) {
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
