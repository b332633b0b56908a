#include "open_to_read.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

#include "outcome.h"

namespace kptdb {

namespace {

bool s_standard_input_is_taken = false;

}  // namespace

int open_to_read(const std::string& path) {
  if (path != "-") {
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  }
  if (std::exchange(s_standard_input_is_taken, true)) {
    throw FAILURE(EXIT_WRONG_USE, "standard input is named twice");
  }
  return ::dup(STDIN_FILENO);
}

}  // namespace kptdb
