// The switches that the environment sets. Not installed.
//
// Ownership: the key is read only during the call.
#ifndef HOST_SERVICES_SWITCHES_H
#define HOST_SERVICES_SWITCHES_H

#include <optional>
#include <string>

namespace kpt_services {

/// The value of KPT_SWITCH_<key>: 1, on, true or yes; 0, off, false or no. Empty for any other word.
std::optional<bool> switch_in_environment(const std::string& key);

}  // namespace kpt_services

#endif
