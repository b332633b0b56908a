#include "tests/support/seed.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

namespace {

constexpr unsigned DEFAULT_SEED = 20240229;

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

long long positive_number(std::string_view text) {
  return std::max(1LL, std::strtoll(std::string(text).c_str(), nullptr, 10));
}

}  // namespace

namespace kpt_test {

unsigned seed() {
  const std::string_view wanted = environment("KPT_SEED");
  return wanted.empty() ? DEFAULT_SEED : static_cast<unsigned>(std::strtoul(wanted.data(), nullptr, 10));
}

int steps(int default_steps) {
  constexpr long long MOST = std::numeric_limits<int>::max();
  const std::string_view wanted = environment("KPT_STEPS");
  if (wanted.empty()) {
    return default_steps;
  }
  if (wanted.front() == 'x') {
    const long long factor = std::min(MOST, positive_number(wanted.substr(1)));
    return static_cast<int>(std::min(MOST, factor * default_steps));
  }
  return static_cast<int>(std::min(MOST, positive_number(wanted)));
}

}  // namespace kpt_test
