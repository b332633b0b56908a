// A part of a file that is being read: consecutive bytes in memory, with a null
// after the last.
//
// Ownership: owns the memory. Pointers into it are valid until `more`.
#ifndef KPT_WINDOW_H
#define KPT_WINDOW_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "db/kpt/files/kpt_file_bytes.h"

class KPT_WINDOW {
 public:
  /// The number of bytes after the end that may be read; they are null.
  static constexpr std::size_t SLACK = 64;

  explicit KPT_WINDOW(KPT_BYTES& bytes)
      : m_bytes(bytes), m_room(first_room(bytes.size())), m_buffer(m_room + SLACK), m_end(m_buffer.data()) {}

  const char* begin() const { return m_buffer.data(); }
  const char* end() const { return m_end; }

  /// Reads more. The bytes from `keep` on stay in the window, and `keep` is set
  /// to their new position. At the end of the file: false, and nothing changes.
  bool more(const char*& keep) {
    const auto kept = static_cast<std::size_t>(m_end - keep);
    if (2 * kept > m_room) {
      grow(keep, kept);
    } else {
      std::memmove(m_buffer.data(), keep, kept);
    }
    keep = m_buffer.data();
    char* to = m_buffer.data() + kept;
    const std::ptrdiff_t count = m_bytes.read(to, m_room - kept);
    m_has_failed = m_has_failed || count < 0;
    m_end = to + std::max<std::ptrdiff_t>(count, 0);
    std::memset(m_end, 0, SLACK);
    return count > 0;
  }
  /// Whether reading failed; the end is then not the end of the file.
  bool has_failed() const { return m_has_failed; }

 private:
  static std::size_t first_room(std::uint64_t size) {
    constexpr std::uint64_t LEAST = 4096;
    constexpr std::uint64_t MOST = 262144;
    return std::clamp(size + 1, LEAST, MOST);
  }
  void grow(const char* keep, std::size_t kept) {
    decltype(m_buffer) larger(2 * m_room + SLACK);
    std::memcpy(larger.data(), keep, kept);
    m_buffer.swap(larger);
    m_room *= 2;
  }

  KPT_BYTES& m_bytes;
  std::size_t m_room;
  std::vector<char, MEM_STL_ALLOCATOR<char>> m_buffer;
  char* m_end;
  bool m_has_failed = false;
};

#endif
