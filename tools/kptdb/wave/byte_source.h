// The bytes of a file, a pipe or standard input, which are unpacked if gzip compressed them.
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
  /// "-" means standard input.
  explicit BYTE_SOURCE(const std::string& path);
  /// Up to `size` bytes; 0 only at the end.
  std::size_t read(char* into, std::size_t size);
  const std::string& path() const { return m_path; }

 private:
  [[noreturn]] void fail(const std::string& reason) const;

  std::string m_path;
  std::unique_ptr<gzFile_s, int (*)(gzFile)> m_file;
};

}  // namespace kptdb

#endif
