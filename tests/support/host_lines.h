// The lines that the host gets during a test.
//
// Ownership: the object owns copies of all lines. Only one exists at a time: it
// sets the reference host's sinks and turns debug output on, and its destructor
// restores the default sinks and turns the output off.
#ifndef TESTS_SUPPORT_HOST_LINES_H
#define TESTS_SUPPORT_HOST_LINES_H

#include <string>
#include <vector>

namespace kpt_test {

using LINES = std::vector<std::string>;

struct INTERNAL_ERROR {
  std::string condition;
  std::string tag;
  std::string file;
  int line;
};

class HOST_LINES {
 public:
  HOST_LINES();
  ~HOST_LINES();
  HOST_LINES(const HOST_LINES&) = delete;
  HOST_LINES& operator=(const HOST_LINES&) = delete;

  /// Debug lines and, in the same order, their tags.
  const std::vector<std::string>& debug() const { return m_debug; }
  const std::vector<std::string>& tags() const { return m_tags; }

  /// Texts of posted errors and, in the same order, their tags.
  const std::vector<std::string>& errors() const { return m_errors; }
  const std::vector<std::string>& error_tags() const { return m_error_tags; }

  const std::vector<INTERNAL_ERROR>& internal_errors() const { return m_internal_errors; }

  /// Deletes all lines so far.
  void clear();

  /// Returns the debug lines so far, and deletes them and their tags.
  std::vector<std::string> take_debug();

 private:
  std::vector<std::string> m_debug;
  std::vector<std::string> m_tags;
  std::vector<std::string> m_errors;
  std::vector<std::string> m_error_tags;
  std::vector<INTERNAL_ERROR> m_internal_errors;
};

}  // namespace kpt_test

#endif
