// Where the bytes of a database file come from, when not from a file by its
// name: memory, a stream, a file that is unpacked while it is read. Clients
// derive from it.
//
// Ownership: the caller's, for the length of the load.
#ifndef KPT_BYTES_H
#define KPT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpt_export.h"

class KPT_EXPORT KPT_BYTES {
 public:
  virtual ~KPT_BYTES() = default;
  /// As many bytes as there are, up to `size`. 0 at the end; negative when
  /// reading fails.
  virtual std::ptrdiff_t read(char* to, std::size_t size) = 0;
  /// Starts again from the first byte. False when the bytes can be had only
  /// once: they are then read by xerces-c, which takes longer.
  virtual bool rewind() = 0;
  /// How many there are, where that is known; else 0.
  virtual std::uint64_t size() const { return 0; }
};

/// Bytes in memory, which stay the caller's.
class KPT_EXPORT KPT_MEMORY_BYTES : public KPT_BYTES {
 public:
  explicit KPT_MEMORY_BYTES(std::string_view bytes) : m_bytes(bytes) {}

  std::ptrdiff_t read(char* to, std::size_t size) override;
  bool rewind() override;
  std::uint64_t size() const override { return m_bytes.size(); }

 private:
  std::string_view m_bytes;
  std::size_t m_position = 0;
};

#endif
