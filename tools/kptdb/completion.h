// Completions for shells, made from the description of the command line, so that
// they contain every option.
//
// Ownership: reads the description only during the call.
#ifndef KPTDB_COMPLETION_H
#define KPTDB_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>

namespace kptdb {

/// A script for "bash", "zsh" or "fish".
std::string completion_script(const CLI::App& app, const std::string& shell);

}  // namespace kptdb

#endif
