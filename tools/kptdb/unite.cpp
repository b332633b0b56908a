// unite: makes one database of successive stages.
#include <fmt/format.h>

#include <list>
#include <utility>

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
  PROGRESS progress("uniting " + file);
  if (!first.handle().unite(next.handle(), &progress)) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND, fmt::format("{}: cannot be united with the stages before it{}", file,
                                          reason.empty() ? "" : ": " + reason));
  }
}

// The union of the stages, which are consumed: each goes when it is united, so that no
// more of them are in memory than needed.
DATABASE united(std::list<DATABASE> stages, const std::vector<std::string>& files) {
  DATABASE first = std::move(stages.front());
  stages.pop_front();
  for (std::size_t k = 1; !stages.empty(); ++k) {
    unite(first, stages.front(), files[k]);
    stages.pop_front();
  }
  return first;
}

// Where the union's answers differ from what the stages say together, if they say anything.
void compare(const DATABASE& of_union, const std::optional<DATABASE>& exact, KPT_COMPOSITION_REPORT& report) {
  if (!exact) {
    report.warnings.emplace_back("the stages say nothing together: " +
                                 KPT_STRING(std::string_view(joined(report.errors))));
    return;
  }
  KPT_COMPOSITION_REPORT contradictions;
  const std::optional<DATABASE> said = compose({of_union.handle()}, of_union.name(), {}, &contradictions);
  if (!said) {
    report.warnings.emplace_back("the union contradicts itself: " +
                                 KPT_STRING(std::string_view(joined(contradictions.errors))));
    return;
  }
  for (const KPT_STRING& line : differing_answers(said->handle(), exact->handle())) {
    report.warnings.push_back(line);
  }
}

}  // namespace

// The stages are composed before they are united, because the union changes the first one. The
// findings do not change the union.
EXIT_CODE run_unite(const UNITE_OPTIONS& options) {
  STAGES stages(options.files);
  KPT_COMPOSITION_REPORT report;
  const std::optional<DATABASE> exact = stages.try_composed({0.0, options.keep_unrecorded}, &report);
  const DATABASE all = united(stages.release(), options.files);
  compare(all, exact, report);
  all.save(options.output);
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
                          counted(all.registers(KPT_REFERENCE_SET).size(), "reference register")));
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
