// The share of reference registers that have an answer.
//
// Ownership: plain values.
#ifndef KPTDB_COVERAGE_H
#define KPTDB_COVERAGE_H

#include <optional>
#include <string>

#include "database.h"
#include "outcome.h"

namespace kptdb {

/// "82.6%"; "-" when `whole` is 0.
std::string percent(std::size_t part, std::size_t whole);

/// EXIT_FOUND, with a message on standard error, when less than the given percentage of the reference
/// registers is known. EXIT_DONE otherwise, without a bound, and without registers.
EXIT_CODE judge_coverage(const DATABASE& db, const std::string& file, std::optional<double> fail_under);

}  // namespace kptdb

#endif
