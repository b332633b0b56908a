#include "db/kpt/files/kpt_xml_memory.h"

#include <functional>
#include <limits>
#include <new>
#include <utility>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

using namespace XERCES_CPP_NAMESPACE;

namespace {

// The type by which the host's trackers count the parser's memory.
struct KPT_XML_BYTES {
  std::byte byte;
};
using ALLOCATOR = MEM_STL_ALLOCATOR<KPT_XML_BYTES>;

}  // namespace

void* KPT_XML_MEMORY::take(std::size_t bytes) { return ALLOCATOR().allocate(bytes); }

void KPT_XML_MEMORY::give_back(void* memory) noexcept {
  ALLOCATOR().deallocate(static_cast<KPT_XML_BYTES*>(memory), 0);
}

void* KPT_XML_MEMORY::allocate(XMLSize_t size) {
  if (void* const provided = cut(size)) {
    return provided;
  }
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(BLOCK)) {
    throw OutOfMemoryException();
  }
  BLOCK* block = nullptr;
  try {
    block = static_cast<BLOCK*>(take(sizeof(BLOCK) + size));
  } catch (const std::bad_alloc&) {
    throw OutOfMemoryException();
  }
  const std::lock_guard lock(m_lock);
  *block = {m_blocks, nullptr};
  if (m_blocks != nullptr) {
    m_blocks->previous = block;
  }
  m_blocks = block;
  return block + 1;
}

void KPT_XML_MEMORY::deallocate(void* memory) {
  if (memory == nullptr || was_provided(memory)) {
    return;
  }
  BLOCK* const block = static_cast<BLOCK*>(memory) - 1;
  {
    const std::lock_guard lock(m_lock);
    unlink(*block);
  }
  give_back(block);
}

void KPT_XML_MEMORY::unlink(const BLOCK& block) noexcept {
  if (block.next != nullptr) {
    block.next->previous = block.previous;
  }
  (block.previous == nullptr ? m_blocks : block.previous->next) = block.next;
}

MemoryManager* KPT_XML_MEMORY::getExceptionMemoryManager() { return XMLPlatformUtils::fgMemoryManager; }

void KPT_XML_MEMORY::provide(std::size_t bytes) {
  m_provision = static_cast<std::byte*>(take(bytes));
  m_provided = bytes;
  m_cut = 0;
}

// Null when there is too little memory left.
void* KPT_XML_MEMORY::cut(std::size_t bytes) noexcept {
  constexpr std::size_t STEP = alignof(std::max_align_t);
  const std::lock_guard lock(m_lock);
  const std::size_t left = m_provided - m_cut;
  const std::size_t steps = bytes / STEP + 1;
  if (steps > left / STEP) {
    return nullptr;
  }
  void* const memory = m_provision + m_cut;
  m_cut += steps * STEP;
  return memory;
}

bool KPT_XML_MEMORY::was_provided(const void* block) const noexcept {
  const auto* const at = static_cast<const std::byte*>(block);
  return m_provision != nullptr && !std::less<>()(at, m_provision) && std::less<>()(at, m_provision + m_provided);
}

void KPT_XML_MEMORY::release() noexcept {
  while (m_blocks != nullptr) {
    give_back(std::exchange(m_blocks, m_blocks->next));
  }
  if (m_provision != nullptr) {
    give_back(std::exchange(m_provision, nullptr));
  }
  m_provided = 0;
  m_cut = 0;
}
