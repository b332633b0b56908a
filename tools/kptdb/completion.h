// Completions for the shells, made of the description of the command line, so that they know every
// option it has.
//
// Ownership: reads the description during the call.
#ifndef KPTDB_COMPLETION_H
#define KPTDB_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>

namespace kptdb {

/// A script for "bash", "zsh" or "fish".
std::string completion_script(const CLI::App& app, const std::string& shell);

}  // namespace kptdb

#endif
