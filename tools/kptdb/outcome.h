// The end of a command.
//
// Ownership: a failure owns its text.
#ifndef KPTDB_OUTCOME_H
#define KPTDB_OUTCOME_H

#include <stdexcept>
#include <string>

namespace kptdb {

/// The exit codes. Scripts rely on them, so the meaning of a code must not change.
enum EXIT_CODE : int {
  EXIT_DONE = 0,
  EXIT_FOUND = 1,       // something was found, or something was refused
  EXIT_WRONG_USE = 2,   // the command line is wrong
  EXIT_UNREADABLE = 3,  // an input file cannot be read, or has another format
};

/// Ends the command: the text goes to standard error, and no result is written.
class FAILURE : public std::runtime_error {
 public:
  FAILURE(EXIT_CODE code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  EXIT_CODE code() const { return m_code; }

 private:
  EXIT_CODE m_code;
};

/// Prints on standard error why a command failed.
void print_failure(const std::string& text);

}  // namespace kptdb

#endif
