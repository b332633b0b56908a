// The bytes of a database file, block by block.
//
// Ownership: owns the open file. Who reads from it owns the blocks.
//
// Blocks and not a mapped file: a file that another process cuts short while it
// is mapped ends the process that reads it.
#ifndef KPT_FILE_BYTES_H
#define KPT_FILE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "db/kpt/kpt_bytes.h"
#include "db/kpt/kpt_types.h"

/// The path under which the host opens a file of that name.
KPT_STRING kpt_path_to_open(std::string_view file_name);

/// A file, opened by its name and by nothing but its name.
class KPT_FILE_BYTES : public KPT_BYTES {
 public:
  explicit KPT_FILE_BYTES(const KPT_STRING& file_name);
  ~KPT_FILE_BYTES() override;
  KPT_FILE_BYTES(const KPT_FILE_BYTES&) = delete;
  KPT_FILE_BYTES& operator=(const KPT_FILE_BYTES&) = delete;

  /// False for a folder too: it opens, and then nothing can be read.
  bool is_open() const { return m_descriptor >= 0; }

  std::ptrdiff_t read(char* to, std::size_t size) override;
  bool rewind() override;
  std::uint64_t size() const override { return m_size; }

 private:
  int m_descriptor = -1;
  bool m_is_regular = false;
  std::uint64_t m_size = 0;
};

#endif
