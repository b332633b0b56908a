// The messages for typing errors, and the help of commands.
//
// Ownership: reads the description of the command line only during a call.
#ifndef KPTDB_USAGE_H
#define KPTDB_USAGE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "outcome.h"

namespace kptdb {

/// All commands, in the order of the list.
std::vector<const CLI::App*> commands_of(const CLI::App& app);

/// Prints the help of the program or of a command. EXIT_WRONG_USE, with the nearest command, for an unknown one.
EXIT_CODE print_help(const CLI::App& app, const std::string& command);

/// The message about the first argument when it should be a command and is not; otherwise empty.
std::string unknown_command(const CLI::App& app, const std::vector<std::string>& arguments);

/// The message for a command line that was refused.
std::string told(const CLI::App& app, const CLI::ParseError& problem);

}  // namespace kptdb

#endif
