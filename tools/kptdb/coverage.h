// How many of the reference registers have an answer.
//
// Ownership: plain values.
#ifndef KPTDB_COVERAGE_H
#define KPTDB_COVERAGE_H

#include <optional>
#include <string>

#include "database.h"
#include "outcome.h"

namespace kptdb {

/// "82.6%"; "-" of nothing.
std::string percent(std::size_t part, std::size_t whole);

/// EXIT_FOUND, with a word on standard error, when less than so many per cent of the reference registers
/// are mapped or eliminated; EXIT_DONE otherwise, without a bound, and of no registers.
EXIT_CODE judge_coverage(const DATABASE& db, const std::string& file, std::optional<double> fail_under);

}  // namespace kptdb

#endif
