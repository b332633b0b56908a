// Zero-filled allocation for the library's own classes.
//
// Ownership: whoever writes `new` owns the object and writes `delete`; the
// pair always matches because a class takes both from here.
//
// Neither half is inlined into clients: a compiler that sees `free` but not
// the `calloc` behind the other half takes the two for a mismatch and warns.
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
