#include "host/services/switches.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace {

bool is_one_of(std::string_view word, const std::array<std::string_view, 4>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace

std::optional<bool> kpt_services::switch_in_environment(const std::string& key) {
  const char* const word = std::getenv(("KPT_SWITCH_" + key).c_str());
  if (word == nullptr) {
    return std::nullopt;
  }
  if (is_one_of(word, {"1", "on", "true", "yes"})) {
    return true;
  }
  return is_one_of(word, {"0", "off", "false", "no"}) ? std::optional(false) : std::nullopt;
}
