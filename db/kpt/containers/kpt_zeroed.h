// Zero-filled allocation for the library's own classes.
//
// Ownership: the code that uses `new` owns the object and uses `delete`. The two
// always match, because a class inherits both from here.
//
// Neither is inlined into clients: a compiler that sees `free` but not the
// `calloc` of the other half would warn of a mismatch.
#ifndef KPT_ZEROED_H
#define KPT_ZEROED_H

#include <cstddef>
#include <cstdlib>
#include <new>

struct KPT_ZEROED {
  [[gnu::noinline]] static void* operator new(std::size_t size) {
    void* block = std::calloc(1, size);
    if (block == nullptr) {
      throw std::bad_alloc();
    }
    return block;
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  [[gnu::noinline]] static void operator delete(void* block) noexcept { std::free(block); }
  static void operator delete(void*, void*) noexcept {}
};

#endif
