// The switches that the library asks of its host: the environment alone sets them.
#include "h/cfg_sys.h"
#include "host/services/switches.h"

bool cfg_is_on(const char* key, bool default_value) {
  return key != nullptr ? kpt_services::switch_in_environment(key).value_or(default_value) : default_value;
}
