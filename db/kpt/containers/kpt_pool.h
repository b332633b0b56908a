// Zero-filled slots for many objects of one class, in blocks.
//
// Ownership: the pool owns the memory, its user owns the objects and destroys
// each of them before the pool goes. A slot keeps its address for the life of
// the pool, so a pointer to a destroyed object still reads zeros or a later
// object of the class, never foreign memory.
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

  /// Builds an object in the slot that was given back last, else in the next
  /// new one. The slot counts as taken only once the object is built; what a
  /// constructor that throws left in it is cleared.
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

  /// Destroys the object and gives its slot, zero-filled, to a later one.
  void destroy(T* object) noexcept {
    std::destroy_at(object);
    auto* slot = reinterpret_cast<SLOT*>(object);
    clear(slot, m_free);
    m_free = slot;
  }

  /// How many slots were ever taken.
  std::uint32_t count() const noexcept { return m_count; }
  /// The object in the k-th slot (from 0). Where none was ever destroyed,
  /// this is the order of creation.
  T* at(std::uint32_t k) const noexcept { return std::launder(reinterpret_cast<T*>(slot_at(k))); }

 private:
  static constexpr std::uint32_t BLOCK = 256;
  static constexpr std::size_t LINE = 64;
  // An object that fills lines of the cache exactly begins at one.
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

  // Zeros, but for the link of a slot that is free.
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
  SLOT* m_free = nullptr;  // each free slot begins with the address of the next
  std::uint32_t m_count = 0;
};

#endif
