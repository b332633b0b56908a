// The names of the open elements of a file, innermost last.
//
// Ownership: owns copies of the names.
#ifndef KPT_OPEN_ELEMENTS_H
#define KPT_OPEN_ELEMENTS_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "db/kpt/files/kpt_plain_characters.h"
#include "db/kpt/kpt_types.h"

class KPT_OPEN_ELEMENTS {
 public:
  bool empty() const { return m_end == 0; }

  /// `name` has `kpt_plain::BLOCK` readable bytes after its end.
  void push(std::string_view name) {
    const std::size_t size = name.size();
    if (m_names.size() - m_end < size + kpt_plain::BLOCK) {
      make_room(size);
    }
    char* const to = m_names.data() + m_end;
    kpt_plain::copy_blocks(to, name);
    std::memcpy(to + size, &size, sizeof size);
    m_end += size + sizeof size;
  }
  /// The number of bytes of the innermost name. There has to be one.
  std::size_t size_of_last() const {
    std::size_t size = 0;
    std::memcpy(&size, m_names.data() + m_end - sizeof size, sizeof size);
    return size;
  }
  /// Whether the innermost name, which has `size` bytes, stands at `p`. There are
  /// `size + kpt_plain::BLOCK` readable bytes at `p`.
  bool last_is_at(const char* p, std::size_t size) const {
    return kpt_plain::are_same(p, {m_names.data() + m_end - sizeof size - size, size});
  }
  void pop(std::size_t size) { m_end -= size + sizeof size; }

 private:
  [[gnu::noinline]] void make_room(std::size_t size) {
    m_names.resize(std::max(2 * m_names.size(), m_end + size + 2 * kpt_plain::BLOCK));
  }

  // Joined, each with its size after it, and then room for a block.
  std::vector<char, MEM_STL_ALLOCATOR<char>> m_names;
  std::size_t m_end = 0;  // of the last size
};

#endif
