// Files of many kinds that are as large as one likes: those with which a reader that
// keeps more than it needs, or looks for something again and again, takes longest.
//
// Ownership: plain values.
#ifndef TESTS_FORMAT_LARGE_FILES_H
#define TESTS_FORMAT_LARGE_FILES_H

#include <string>
#include <vector>

namespace kpt_test {

struct LARGE_FILE {
  std::string kind;
  std::string text;
  /// Whether the document tree reads it in a time that is linear in its size.
  bool is_for_document = true;
};

/// One well-formed file of each kind, of about `size` bytes. A scanner of plain files reads most of them.
std::vector<LARGE_FILE> large_files(std::size_t size);

}  // namespace kpt_test

#endif
