// A source of the bytes of a database file other than a file name: memory, a
// stream, or a file that is unpacked while it is read. Clients derive a class
// from it.
//
// Ownership: the caller owns the source, which has to outlive the load.
#ifndef KPT_BYTES_H
#define KPT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpt_export.h"

class KPT_EXPORT KPT_BYTES {
 public:
  virtual ~KPT_BYTES() = default;
  /// Reads up to `size` bytes and returns how many it read: 0 only at the end,
  /// a negative number when reading fails.
  virtual std::ptrdiff_t read(char* to, std::size_t size) = 0;
  /// Starts again from the first byte. False when the bytes can be read only
  /// once. xerces-c then reads them, which takes longer.
  virtual bool rewind() = 0;
  /// The number of bytes; 0 when it is not known.
  virtual std::uint64_t size() const { return 0; }
};

/// Bytes in memory, which the caller owns.
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
