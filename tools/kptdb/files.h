// Files as the commands need them.
//
// Ownership: texts are values of the caller. Every failure is a FAILURE that names the file.
#ifndef KPTDB_FILES_H
#define KPTDB_FILES_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace kptdb {

/// Input files are read more than once, so a pipe or a device will not do.
void refuse_unless_regular(const std::string& path);
std::uint64_t file_size(const std::string& path);
std::string read_file(const std::string& path);

/// Reads a text line by line, from a file or, for "-", from standard input.
class LINE_READER {
 public:
  explicit LINE_READER(const std::string& path);
  /// False at the end. A line longer than any event could be ends the command.
  bool next(std::string& line);
  /// The number of the line last read, from 1.
  std::size_t line_number() const { return m_line; }
  std::uint64_t bytes_read() const { return m_bytes; }

 private:
  std::string m_path;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
  std::size_t m_line = 0;
  std::uint64_t m_bytes = 0;
};

/// Where a command's result goes: standard output, or a file that is there whole or not at all.
class RESULT_FILE {
 public:
  /// An empty path stands for standard output.
  explicit RESULT_FILE(const std::string& path);
  ~RESULT_FILE();
  RESULT_FILE(const RESULT_FILE&) = delete;
  RESULT_FILE& operator=(const RESULT_FILE&) = delete;

  void write(std::string_view text);
  /// Everything is written: gives the file its name.
  void finish();

 private:
  void fail() const;

  std::string m_path;
  std::string m_temporary;  // empty once there is nothing to remove
  std::FILE* m_file;
};

}  // namespace kptdb

#endif
