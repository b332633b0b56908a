// The files of the commands.
//
// Ownership: the caller owns the texts. Every failure is a FAILURE that names the file.
#ifndef KPTDB_FILES_H
#define KPTDB_FILES_H

#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"

namespace kptdb {

/// 0 when it is not known.
std::uint64_t file_size(const std::string& path);

/// Reads a text line by line, from a file or, for "-", from standard input.
class LINE_READER {
 public:
  explicit LINE_READER(const std::string& path);
  /// False at the end. A line that is too long for any event ends the command.
  bool next(std::string& line);
  /// The number of the last line that was read, from 1.
  std::size_t line_number() const { return m_line; }
  /// The position in the file, which may be compressed.
  std::uint64_t bytes_read() const { return m_input.position(); }

 private:
  bool fill();

  std::string m_path;
  INPUT m_input;
  std::vector<char> m_block;
  std::size_t m_at = 0;   // position in the block
  std::size_t m_end = 0;  // end of the bytes in it
  std::size_t m_line = 0;
};

/// The destination of a command's result: standard output, or a file that is written completely or not at all.
class RESULT_FILE {
 public:
  /// An empty path and "-" mean standard output. A file whose name ends with ".gz" is compressed.
  explicit RESULT_FILE(const std::string& path);
  /// For messages beside a result that goes to `output`: standard output, unless the result uses it.
  static RESULT_FILE beside(const std::string& output);
  ~RESULT_FILE();
  RESULT_FILE(const RESULT_FILE&) = delete;
  RESULT_FILE& operator=(const RESULT_FILE&) = delete;

  void write(std::string_view text);
  /// Call it when everything is written: gives the file its name.
  void finish();
  /// Its name in messages.
  std::string shown() const { return m_path.empty() ? "standard output" : m_path; }

  /// Whether anything was written to standard output.
  static bool has_used_standard_output();

 private:
  explicit RESULT_FILE(std::FILE* stream) : m_file(stream) {}
  void open_temporary();
  void pack(int descriptor);
  bool close();
  [[noreturn]] void fail() const;

  std::string m_path;       // empty for a stream
  std::string m_temporary;  // empty when there is nothing to remove
  std::FILE* m_file = nullptr;
  gzFile m_packed = nullptr;
};

/// A new private folder, which is removed with everything in it.
class SCRATCH_FOLDER {
 public:
  SCRATCH_FOLDER();
  ~SCRATCH_FOLDER();
  SCRATCH_FOLDER(const SCRATCH_FOLDER&) = delete;
  SCRATCH_FOLDER& operator=(const SCRATCH_FOLDER&) = delete;
  const std::string& path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace kptdb

#endif
