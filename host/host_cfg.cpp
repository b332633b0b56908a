#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "h/cfg_sys.h"
#include "host/kpt_host.h"

namespace {

using SWITCHES = std::map<std::string, bool, std::less<>>;

// Never destroyed: a switch may be read while other static objects go.
SWITCHES& switches() {
  static auto* const instance = new SWITCHES;
  return *instance;
}

bool is_one_of(std::string_view word, const std::array<std::string_view, 4>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::optional<bool> from_environment(const std::string& key) {
  const char* const word = std::getenv(("KPT_SWITCH_" + key).c_str());
  if (word == nullptr) {
    return std::nullopt;
  }
  if (is_one_of(word, {"1", "on", "true", "yes"})) {
    return true;
  }
  return is_one_of(word, {"0", "off", "false", "no"}) ? std::optional(false) : std::nullopt;
}

}  // namespace

bool cfg_is_on(const char* key, bool default_value) {
  if (key == nullptr) {
    return default_value;
  }
  const auto found = switches().find(std::string_view(key));
  return found != switches().end() ? found->second : from_environment(key).value_or(default_value);
}

void kpt_host::set_switch(const char* key, bool on) { switches()[key] = on; }

void kpt_host::clear_switches() { switches().clear(); }
