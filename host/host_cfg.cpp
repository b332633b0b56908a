#include <map>
#include <string>
#include <string_view>

#include "h/cfg_sys.h"
#include "host/kpt_host.h"
#include "host/services/switches.h"

namespace {

using SWITCHES = std::map<std::string, bool, std::less<>>;

// Never destroyed: a switch may be read while other static objects are destroyed.
SWITCHES& switches() {
  static auto* const instance = new SWITCHES;
  return *instance;
}

}  // namespace

bool cfg_is_on(const char* key, bool default_value) {
  if (key == nullptr) {
    return default_value;
  }
  const auto found = switches().find(std::string_view(key));
  return found != switches().end() ? found->second : kpt_services::switch_in_environment(key).value_or(default_value);
}

void kpt_host::set_switch(const char* key, bool on) { switches()[key] = on; }

void kpt_host::clear_switches() { switches().clear(); }
