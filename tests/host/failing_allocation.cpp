#include "tests/host/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace kpt_test {

long s_allocations_left = -1;
bool s_fails_for_good = false;
bool s_has_failed = false;

}  // namespace kpt_test

using namespace kpt_test;

void* operator new(std::size_t size) {
  if (s_allocations_left == 0) {
    s_has_failed = true;
    s_allocations_left = s_fails_for_good ? 0 : -1;
    throw std::bad_alloc();
  }
  s_allocations_left -= s_allocations_left > 0 ? 1 : 0;
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
