// unite: makes one database of successive stages.
#include <fmt/format.h>

#include "answers.h"
#include "commands.h"
#include "database.h"
#include "files.h"
#include "host_lines.h"
#include "model.h"
#include "progress.h"
#include "stages.h"
#include "text.h"

namespace kptdb {

namespace {

void unite(const DATABASE& first, const DATABASE& next, const std::string& file) {
  HOST_LINES lines;
  const WAITING waiting("uniting " + file, next.registers(KPT_REFERENCE_SET).size());
  if (!first.handle().unite(next.handle())) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND, fmt::format("{}: cannot be united with the stages before it{}", file,
                                          reason.empty() ? "" : ": " + reason));
  }
}

// How the stages fit, and where the union's answers differ from what they say
// together. The findings do not change the union.
KPT_COMPOSITION_REPORT compared(const DATABASE& united, const STAGES& stages, bool keep_unrecorded) {
  KPT_COMPOSITION_REPORT report;
  const std::optional<DATABASE> exact = stages.try_composed({0.0, keep_unrecorded}, &report);
  if (!exact) {
    report.warnings.emplace_back("the stages say nothing together: " +
                                 KPT_STRING(std::string_view(joined(report.errors))));
    return report;
  }
  KPT_COMPOSITION_REPORT of_union;
  const std::optional<DATABASE> said = compose({united.handle()}, united.name(), {0.0, false}, &of_union);
  if (!said) {
    report.warnings.emplace_back("the union contradicts itself: " +
                                 KPT_STRING(std::string_view(joined(of_union.errors))));
    return report;
  }
  for (const KPT_STRING& line : differing_answers(said->handle(), exact->handle())) {
    report.warnings.push_back(line);
  }
  return report;
}

}  // namespace

EXIT_CODE run_unite(const UNITE_OPTIONS& options) {
  const STAGES stages(options.files);
  const DATABASE united = DATABASE::load(options.files.front());
  std::size_t k = 0;
  for (const DATABASE& stage : stages.databases()) {
    if (k > 0) {
      unite(united, stage, options.files[k]);
    }
    ++k;
  }
  const KPT_COMPOSITION_REPORT report = compared(united, stages, options.keep_unrecorded);
  united.save(options.output);
  RESULT_FILE out = RESULT_FILE::beside(options.output);
  if (options.json) {
    JSON result = new_result();
    result["written"] = options.output;
    result["stages"] = options.files;
    result["fits"] = listed(report.fits);
    result["warnings"] = listed(report.warnings);
    out.write(json_text(result) + "\n");
  } else {
    out.write(report_text(report));
    out.write(fmt::format("{}: {} united, {}\n", options.output, counted(options.files.size(), "stage"),
                          counted(united.registers(KPT_REFERENCE_SET).size(), "reference register")));
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
