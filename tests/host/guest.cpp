// A library on the reference host, which is built twice under two names. It
// allocates a type of its own and a type that both share.
#include <vector>

#include "h/mem_alloc_sys.h"

namespace GUEST {

struct OWN {
  double m_value;
};

}  // namespace GUEST

namespace {

const MEM_INITIALIZER s_initializer("KPT");

using OWN_VECTOR = std::vector<GUEST::OWN, MEM_STL_ALLOCATOR<GUEST::OWN>>;

}  // namespace

// Allocates and frees blocks of both types.
extern "C" __attribute__((visibility("default"))) unsigned long guest_allocates() {
  const OWN_VECTOR own(5);
  const MEM_STRING shared(100, 'x');
  return own.size() + shared.size();
}
