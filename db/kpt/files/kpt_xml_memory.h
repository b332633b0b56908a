// Memory of the host for xerces-c. It frees all its blocks at the end, because
// nothing else knows the blocks of a constructor that failed.
//
// Ownership: owns every block that was allocated and not freed. Its destructor or
// `release` frees them; the objects in them must be destroyed before.
#ifndef KPT_XML_MEMORY_H
#define KPT_XML_MEMORY_H

#include <cstddef>
#include <mutex>
#include <xercesc/framework/MemoryManager.hpp>

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_XML_MEMORY : public XERCES_CPP_NAMESPACE::MemoryManager {
 public:
  KPT_XML_MEMORY() = default;
  ~KPT_XML_MEMORY() override { release(); }
  KPT_XML_MEMORY(const KPT_XML_MEMORY&) = delete;
  KPT_XML_MEMORY& operator=(const KPT_XML_MEMORY&) = delete;

  // From the parser. Throws its OutOfMemoryException when the host has none.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* block) override;
  /// The memory manager of the process, because an exception outlives the parser that throws it.
  XERCES_CPP_NAMESPACE::MemoryManager* getExceptionMemoryManager() override;

  /// Allocates this many bytes at once. Later blocks are taken from them while
  /// they last, so these allocations cannot fail. Throws std::bad_alloc.
  void provide(std::size_t bytes);
  /// Frees everything.
  void release() noexcept;

 private:
  struct alignas(std::max_align_t) BLOCK {
    BLOCK* next;
    BLOCK* previous;
  };

  void unlink(const BLOCK& block) noexcept;
  static void* take(std::size_t bytes);
  static void give_back(void* memory) noexcept;
  void* cut(std::size_t bytes) noexcept;
  bool was_provided(const void* block) const noexcept;

  std::mutex m_lock;  // parsers of several threads share it
  BLOCK* m_blocks = nullptr;
  std::byte* m_provision = nullptr;
  std::size_t m_provided = 0;
  std::size_t m_cut = 0;
};

#endif
