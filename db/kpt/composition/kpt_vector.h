// A vector whose memory the host counts.
//
// Ownership: owns its elements.
#ifndef KPT_VECTOR_H
#define KPT_VECTOR_H

#include <vector>

#include "h/mem_alloc_sys.h"

template <class T>
using KPT_VECTOR = std::vector<T, MEM_STL_ALLOCATOR<T>>;

#endif
