// Zero-filled slots for many objects of one class, in blocks.
//
// Ownership: the pool owns the memory. Its user owns the objects and destroys
// each of them before the pool. A slot has the same address as long as the pool
// exists, so a pointer to a destroyed object reads zeros or a later object of the
// class, never other memory.
#ifndef KPT_POOL_H
#define KPT_POOL_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "h/mem_alloc_sys.h"

template <class T>
class KPT_POOL {
 public:
  KPT_POOL() = default;
  KPT_POOL(const KPT_POOL&) = delete;
  KPT_POOL& operator=(const KPT_POOL&) = delete;
  ~KPT_POOL() {
    for (SLOT* block : m_blocks) {
      std::free(block);
    }
  }

  /// Builds an object in the slot that was freed last, or else in a new one. The
  /// slot counts as taken only after the object is built. When a constructor
  /// throws, the slot is cleared.
  template <class... A>
  T* construct(A&&... arguments) {
    if (m_free != nullptr) {
      SLOT* next = nullptr;
      std::memcpy(&next, static_cast<const void*>(m_free), sizeof next);
      T* object = build(m_free, next, std::forward<A>(arguments)...);
      m_free = next;
      return object;
    }
    if (m_count == m_blocks.size() * BLOCK) {
      add_block();
    }
    T* object = build(slot_at(m_count), nullptr, std::forward<A>(arguments)...);
    ++m_count;
    return object;
  }

  /// Destroys the object, fills its slot with zeros and keeps it for a later object.
  void destroy(T* object) noexcept {
    std::destroy_at(object);
    auto* slot = reinterpret_cast<SLOT*>(object);
    clear(slot, m_free);
    m_free = slot;
  }

  /// The number of slots that have been taken.
  std::uint32_t count() const noexcept { return m_count; }
  /// The object in the k-th slot (from 0). This is the order of creation if no
  /// object was destroyed.
  T* at(std::uint32_t k) const noexcept { return std::launder(reinterpret_cast<T*>(slot_at(k))); }

 private:
  static constexpr std::uint32_t BLOCK = 256;
  static constexpr std::size_t LINE = 64;
  // An object that fills whole cache lines begins at the start of one.
  struct alignas(sizeof(T) % LINE == 0 ? LINE : alignof(T)) SLOT {
    std::byte bytes[sizeof(T)];
  };
  static_assert(sizeof(SLOT) >= sizeof(void*));

  template <class... A>
  static T* build(SLOT* slot, SLOT* next, A&&... arguments) {
    try {
      return std::construct_at(reinterpret_cast<T*>(slot), std::forward<A>(arguments)...);
    } catch (...) {
      clear(slot, next);
      throw;
    }
  }

  // Fills a free slot with zeros, except for its link.
  static void clear(SLOT* slot, SLOT* next) noexcept {
    std::memset(static_cast<void*>(slot), 0, sizeof(SLOT));
    std::memcpy(static_cast<void*>(slot), &next, sizeof next);
  }

  SLOT* slot_at(std::uint32_t k) const noexcept { return m_blocks[k / BLOCK] + k % BLOCK; }

  void add_block() {
    if (m_blocks.size() == m_blocks.capacity()) {
      m_blocks.reserve(2 * m_blocks.size() + 1);
    }
    void* block = std::aligned_alloc(LINE, BLOCK * sizeof(SLOT));
    if (block == nullptr) {
      throw std::bad_alloc();
    }
    std::memset(block, 0, BLOCK * sizeof(SLOT));
    m_blocks.push_back(static_cast<SLOT*>(block));
  }

  std::vector<SLOT*, MEM_STL_ALLOCATOR<SLOT*>> m_blocks;
  SLOT* m_free = nullptr;  // a free slot begins with the address of the next one
  std::uint32_t m_count = 0;
};

#endif
