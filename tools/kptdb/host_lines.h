// What the library says while it works, kept instead of shown.
//
// Ownership: while one lives, it has the reference host's sinks; they are the host's own again
// afterwards. One at a time.
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

  /// Forgets the lines so far.
  void clear();
  /// The first error message, else the first debug line that tells of a failure, on one line;
  /// empty when the library was silent.
  std::string reason() const;

 private:
  std::vector<std::string> m_debug_lines;
  std::vector<std::string> m_errors;
};

}  // namespace kptdb

#endif
