// The bytes of an input: a file, a pipe or, for "-", standard input. Bytes that
// are compressed by gzip are unpacked, whatever the name is.
//
// Ownership: an input owns its file. A problem is a FAILURE that names the file
// or, for a reader that must not throw, the text of `problem`.
#ifndef KPTDB_INPUT_H
#define KPTDB_INPUT_H

#include <zlib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "db/kpt/kpt.h"
#include "progress.h"

namespace kptdb {

class INPUT : public KPT_BYTES {
 public:
  /// FAILURE for a path that cannot be opened, a folder or a device.
  explicit INPUT(const std::string& path);

  std::ptrdiff_t read(char* to, std::size_t size) override;
  bool rewind() override;
  std::uint64_t size() const override { return m_is_plain_file ? m_size : 0; }

  /// From now on, shows the progress of reading if it takes long. `passes` is the
  /// number of times that the bytes are read.
  void show_progress(const std::string& what, unsigned passes);

  /// "standard input", or the path.
  const std::string& shown() const { return m_shown; }
  /// Why reading failed; empty when it succeeded.
  const std::string& problem() const { return m_problem; }
  /// The number of unpacked bytes that were read since the last rewind.
  std::uint64_t bytes_read() const { return m_bytes; }
  /// The position in the file, which may be compressed.
  std::uint64_t position() const;
  /// Whether the input is empty.
  bool is_empty() const { return m_beginning.empty(); }
  /// Whether the first character may begin an event, but not a database.
  bool begins_like_events() const;

 private:
  [[noreturn]] void fail(const std::string& reason) const;
  void note_beginning(const char* bytes, std::size_t size);

  std::string m_shown;
  bool m_is_plain_file = false;
  std::uint64_t m_size = 0;  // of the file, which may be compressed; 0 when it is not known
  std::unique_ptr<gzFile_s, int (*)(gzFile)> m_file;
  std::string m_problem;
  std::string m_beginning;
  std::uint64_t m_bytes = 0;
  std::optional<PROGRESS> m_progress;
  std::uint64_t m_before = 0;  // bytes of the passes before this one
};

/// Whether a file of that name is written compressed.
bool is_packed_name(std::string_view path);

}  // namespace kptdb

#endif
