// The library's messages and lines, which are kept instead of shown.
//
// Ownership: while an object exists, it has the reference host's sinks, which the
// host gets back afterwards. One at a time.
#ifndef KPTDB_HOST_LINES_H
#define KPTDB_HOST_LINES_H

#include <string>
#include <vector>

namespace kptdb {

class HOST_LINES {
 public:
  HOST_LINES();
  ~HOST_LINES();
  HOST_LINES(const HOST_LINES&) = delete;
  HOST_LINES& operator=(const HOST_LINES&) = delete;

  /// Deletes the lines so far.
  void clear();
  /// The first error message or, when there is none, the first debug line about a
  /// failure, on one line; empty when there is neither.
  std::string reason() const;

 private:
  std::vector<std::string> m_debug_lines;
  std::vector<std::string> m_errors;
};

}  // namespace kptdb

#endif
