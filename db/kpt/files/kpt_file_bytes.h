// The bytes of a database file, block by block.
//
// Ownership: owns the open file. The reader owns the blocks.
//
// Reads blocks and does not map the file: when another process truncates a mapped
// file, the process that reads it crashes.
#ifndef KPT_FILE_BYTES_H
#define KPT_FILE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "db/kpt/kpt_bytes.h"
#include "db/kpt/kpt_types.h"

/// The path by which the host opens a file of that name.
KPT_STRING kpt_path_to_open(std::string_view file_name);

/// A file that is opened by its name, which is never taken for a URL.
class KPT_FILE_BYTES : public KPT_BYTES {
 public:
  explicit KPT_FILE_BYTES(const KPT_STRING& file_name);
  ~KPT_FILE_BYTES() override;
  KPT_FILE_BYTES(const KPT_FILE_BYTES&) = delete;
  KPT_FILE_BYTES& operator=(const KPT_FILE_BYTES&) = delete;

  /// False also for a folder, which could be opened but not read.
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
