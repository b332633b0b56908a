// The host's switches, which only the environment sets.
#include "h/cfg_sys.h"
#include "host/services/switches.h"

bool cfg_is_on(const char* key, bool default_value) {
  return key != nullptr ? kpt_services::switch_in_environment(key).value_or(default_value) : default_value;
}
