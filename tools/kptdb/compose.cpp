// compose: makes one database of successive stages, which says what they say together.
#include <fmt/format.h>

#include <array>

#include "commands.h"
#include "database.h"
#include "files.h"
#include "model.h"
#include "stages.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr std::array FATES = {KPT_FATE_CONSTANT, KPT_FATE_MACHINE, KPT_FATE_MAPPED, KPT_FATE_WITHOUT_FANOUT,
                              KPT_FATE_UNKNOWN};
using COUNTS = std::array<std::size_t, FATES.size()>;

// Counts what became of the registers of the first netlist.
COUNTS count_fates(const KPT_KEYPOINTS_DB& db) {
  COUNTS counts{};
  std::size_t told = 0;
  for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set()) {
    for (std::size_t k = 0; k < map.get_number_of_indices(KPT_REFERENCE_SET); ++k) {
      const std::size_t registers = map.get_reference_group(k, false).size() + map.get_reference_group(k, true).size();
      counts.at(static_cast<std::size_t>(map.get_fate(static_cast<unsigned short>(k)))) += registers;
      told += registers;
    }
  }
  counts.back() += db.get_reference_set().size() - told;
  return counts;
}

std::string text_of(const COMPOSE_OPTIONS& options, const KPT_COMPOSITION_REPORT& report, const COUNTS& counts) {
  std::string text = report_text(report);
  text += fmt::format("{}: {} composed", options.output, counted(options.files.size(), "stage"));
  for (const KPT_FATE_ENUM fate : FATES) {
    text += fmt::format("{}{} {}", fate == FATES.front() ? "; of the reference registers " : ", ",
                        counts.at(static_cast<std::size_t>(fate)), kpt_fate_word(fate));
  }
  return text + "\n";
}

JSON json_of(const COMPOSE_OPTIONS& options, const KPT_COMPOSITION_REPORT& report, const COUNTS& counts) {
  JSON result = new_result();
  result["written"] = options.output;
  result["stages"] = options.files;
  result["fits"] = listed(report.fits);
  result["warnings"] = listed(report.warnings);
  for (const KPT_FATE_ENUM fate : FATES) {
    result["registers"][fate == KPT_FATE_WITHOUT_FANOUT ? "without_fanout" : kpt_fate_word(fate)] =
        counts.at(static_cast<std::size_t>(fate));
  }
  return result;
}

}  // namespace

EXIT_CODE run_compose(const COMPOSE_OPTIONS& options) {
  const STAGES stages(options.files);
  KPT_COMPOSITION_REPORT report;
  const DATABASE all = stages.composed({options.share, options.keep_unrecorded}, &report);
  all.save(options.output);
  const COUNTS counts = count_fates(all.handle());
  RESULT_FILE out = RESULT_FILE::beside(options.output);
  out.write(options.json ? json_text(json_of(options, report, counts)) + "\n" : text_of(options, report, counts));
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
