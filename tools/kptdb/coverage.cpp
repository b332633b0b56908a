#include "coverage.h"

#include <fmt/format.h>

#include "fates.h"

namespace kptdb {

std::string percent(std::size_t part, std::size_t whole) {
  return whole == 0 ? "-" : fmt::format("{:.1f}%", 100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

// Compares counts, so that rounding has no effect.
EXIT_CODE judge_coverage(const DATABASE& db, const std::string& file, std::optional<double> fail_under) {
  if (!fail_under) {
    return EXIT_DONE;
  }
  const std::size_t all = db.registers(KPT_REFERENCE_SET).size();
  std::size_t answered = 0;
  FATES fates;
  for_each_register(db, KPT_REFERENCE_SET,
                    [&](const REGISTER& reg) { answered += fates.of(reg).word == KPT_FATE_UNKNOWN ? 0U : 1U; });
  if (static_cast<double>(answered) * 100.0 >= *fail_under * static_cast<double>(all)) {
    return EXIT_DONE;
  }
  print_failure(fmt::format("{}: {} of the reference registers have an answer ({} of {}), less than {}%", file,
                            percent(answered, all), answered, all, *fail_under));
  return EXIT_FOUND;
}

}  // namespace kptdb
