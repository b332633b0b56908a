// The bytes of a file, of a pipe or of standard input, unpacked if they are packed by gzip.
//
// Ownership: a source owns its file. Every failure is a FAILURE that names the file.
#ifndef KPTDB_BYTE_SOURCE_H
#define KPTDB_BYTE_SOURCE_H

#include <zlib.h>

#include <memory>
#include <string>

namespace kptdb {

class BYTE_SOURCE {
 public:
  /// "-" stands for standard input.
  explicit BYTE_SOURCE(const std::string& path);
  /// Up to `size` bytes; 0 at the end alone.
  std::size_t read(char* into, std::size_t size);
  const std::string& path() const { return m_path; }

 private:
  [[noreturn]] void fail(const std::string& reason) const;

  std::string m_path;
  std::unique_ptr<gzFile_s, int (*)(gzFile)> m_file;
};

}  // namespace kptdb

#endif
