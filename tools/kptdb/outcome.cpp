#include "outcome.h"

#include <fmt/format.h>

#include "colour.h"

namespace kptdb {

void print_failure(const std::string& text) {
  std::fflush(stdout);
  fmt::print(stderr, "{} {}\n", painted("kptdb:", RED, stderr), text);
}

}  // namespace kptdb
