// What is said to someone who mistypes, or asks how a command is used.
//
// Ownership: reads the command line's description during a call.
#ifndef KPTDB_USAGE_H
#define KPTDB_USAGE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "outcome.h"

namespace kptdb {

/// All commands, in the order in which they are listed.
std::vector<const CLI::App*> commands_of(const CLI::App& app);

/// Prints the help of the program, or of a command. EXIT_WRONG_USE, with the nearest, for no command.
EXIT_CODE print_help(const CLI::App& app, const std::string& command);

/// The first argument where a command belongs, if it is none: what to say about it. Else empty.
std::string unknown_command(const CLI::App& app, const std::vector<std::string>& arguments);

/// What is wrong with a command line that was refused.
std::string told(const CLI::App& app, const CLI::ParseError& problem);

}  // namespace kptdb

#endif
