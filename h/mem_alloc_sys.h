// Memory services of the host.
//
// Ownership: the code that allocates a block owns it until it gives the block to delete_wrapper.
// Trackers exist as long as the process.
#ifndef H_MEM_ALLOC_SYS_H
#define H_MEM_ALLOC_SYS_H

#include <atomic>
#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>

// Every symbol of the host is visible, because all libraries of a process call the same host.
#define KPT_HOST_API __attribute__((visibility("default")))

/// The account of one allocated type. All members are zero at first. The caller sets m_type before
/// the type's first allocation. Only the host uses the counters.
struct KPT_HOST_API MEM_TRACKER_THUNK {
  const std::type_info* m_type;
  unsigned long m_live_bytes;
  unsigned long m_live_blocks;
  unsigned long m_peak_bytes;
  unsigned long m_peak_blocks;
};

/// One tracker for each allocated type. The numbers identify the library that allocates.
template <class T, int MODULE, int KIND>
class KPT_HOST_API MEM_TRACKER_TEMPLATE_KPT {
 public:
  inline static MEM_TRACKER_THUNK s_thunk{};
};

class KPT_HOST_API MEM_MANAGER {
 public:
  /// Returns `size` bytes, which are aligned for std::max_align_t, and counts them in `thunk`, whose
  /// m_type is set. `file` is the path of the allocating header. Never returns null, not even for
  /// size 0: throws std::bad_alloc when memory runs out.
  static void* new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char* file);

  /// Frees a block of new_wrapper and subtracts it from its tracker. Ignores null. `tag` is the
  /// module that frees the block. Never fails.
  static void delete_wrapper(void* p, const char* tag);
};

/// Each library has a static object of this class. Its constructor tells the host's memory system
/// that the library is loaded, its destructor that the library is unloaded. The library may also
/// allocate before the constructor and free after the destructor. `tag` is a literal, not copied.
class KPT_HOST_API MEM_INITIALIZER {
 public:
  explicit MEM_INITIALIZER(const char* tag);
  ~MEM_INITIALIZER();  // NOLINT(performance-trivially-destructible): each host has its own
  MEM_INITIALIZER(const MEM_INITIALIZER&) = delete;
  MEM_INITIALIZER& operator=(const MEM_INITIALIZER&) = delete;
};

/// The allocator of every container. It has no state, so all instances are equal and containers
/// can be swapped and moved.
template <class T>
class KPT_HOST_API MEM_STL_ALLOCATOR {
 public:
  using value_type = T;
  using is_always_equal = std::true_type;
  using propagate_on_container_move_assignment = std::true_type;

  MEM_STL_ALLOCATOR() noexcept = default;
  template <class U>
  MEM_STL_ALLOCATOR(const MEM_STL_ALLOCATOR<U>&)
  noexcept {}

  /// The tracker of T. The first use sets its m_type.
  static MEM_TRACKER_THUNK* tracker() noexcept {
    MEM_TRACKER_THUNK& thunk = MEM_TRACKER_TEMPLATE_KPT<T, 1255, 1>::s_thunk;
    const std::atomic_ref type(thunk.m_type);  // every thread stores the same value
    if (type.load(std::memory_order_relaxed) == nullptr) {
      type.store(&typeid(T), std::memory_order_relaxed);
    }
    return &thunk;
  }

  [[nodiscard]] T* allocate(std::size_t n) {
    static_assert(alignof(T) <= alignof(std::max_align_t), "the host aligns no further");
    if (n > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    return static_cast<T*>(MEM_MANAGER::new_wrapper(n * sizeof(T), tracker(), "h/mem_alloc_sys"));
  }

  void deallocate(T* p, std::size_t) noexcept { MEM_MANAGER::delete_wrapper(p, "KPT"); }

  template <class U>
  friend bool operator==(const MEM_STL_ALLOCATOR&, const MEM_STL_ALLOCATOR<U>&) noexcept {
    return true;
  }
};

using MEM_STRING = std::basic_string<char, std::char_traits<char>, MEM_STL_ALLOCATOR<char>>;

#endif
