// The bytes of an input: a file, a pipe or, for "-", standard input; unpacked where they are packed
// by gzip, whatever the name says.
//
// Ownership: an input owns its file. What it tells of problems is a FAILURE that names the file, or
// for a reader that cannot be left by an exception, the text of `problem`.
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
  /// FAILURE for what cannot be opened, for a folder and for a device.
  explicit INPUT(const std::string& path);

  std::ptrdiff_t read(char* to, std::size_t size) override;
  bool rewind() override;
  std::uint64_t size() const override { return m_is_plain_file ? m_size : 0; }

  /// Shows how far reading has come, from here on, if it takes long. `passes` is how often the bytes
  /// are read.
  void show_progress(const std::string& what, unsigned passes);

  /// "standard input", or the path.
  const std::string& shown() const { return m_shown; }
  /// Why reading failed; empty when it did not.
  const std::string& problem() const { return m_problem; }
  /// How much was read since the last rewind, unpacked.
  std::uint64_t bytes_read() const { return m_bytes; }
  /// How far reading has come in the file as it lies there.
  std::uint64_t position() const;
  /// Whether there was nothing to read.
  bool is_empty() const { return m_beginning.empty(); }
  /// Whether the first character is one that begins an event and no database.
  bool begins_like_events() const;

 private:
  [[noreturn]] void fail(const std::string& reason) const;
  void note_beginning(const char* bytes, std::size_t size);

  std::string m_shown;
  bool m_is_plain_file = false;
  std::uint64_t m_size = 0;  // of the file as it lies there; 0 when that is not known
  std::unique_ptr<gzFile_s, int (*)(gzFile)> m_file;
  std::string m_problem;
  std::string m_beginning;
  std::uint64_t m_bytes = 0;
  std::optional<PROGRESS> m_progress;
  std::uint64_t m_before = 0;  // bytes of the passes before this one
};

/// Whether a file of that name is written packed.
bool is_packed_name(std::string_view path);

}  // namespace kptdb

#endif
