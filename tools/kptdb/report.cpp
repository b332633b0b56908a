// report: one page for a browser, which shows what became of the registers.
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "commands.h"
#include "database.h"
#include "files.h"
#include "report/report_data.h"

namespace kptdb {

namespace {

std::string text_of_time(std::time_t time) { return fmt::format("{:%FT%TZ}", fmt::gmtime(time)); }

std::string time_of_file(const std::string& path) {
  std::error_code problem;
  const auto time = std::filesystem::last_write_time(path, problem);
  return problem ? "" : text_of_time(std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(time)));
}

// A build that must be reproducible sets the time with the usual variable.
std::string now() {
  const char* fixed = std::getenv("SOURCE_DATE_EPOCH");
  return text_of_time(fixed == nullptr ? std::time(nullptr) : std::strtoll(fixed, nullptr, 10));
}

std::vector<std::string> texts_of(const KPT_STRING_VECTOR& lines) { return {lines.begin(), lines.end()}; }

// What the stages say together, and the messages of the composition.
struct WHOLE {
  DATABASE db;
  std::vector<std::string> told, contradictions;
};

// When stages contradict each other, the page has no answer for any register and
// says why. Stages that do not follow each other are refused.
WHOLE whole_of(const std::vector<DATABASE>& databases) {
  KPT_KEYPOINTS_DB_LIST stages;
  for (const DATABASE& db : databases) {
    stages.push_back(db.handle());
  }
  WHOLE whole{DATABASE::create(databases.front().name()), {}, {}};
  KPT_COMPOSITION_REPORT report;
  if (whole.db.handle().compose(stages, {}, &report)) {
    whole.told = texts_of(report.warnings);
    return whole;
  }
  const std::vector<std::string> errors = texts_of(report.errors);
  KPT_COMPOSITION_OPTIONS any;
  any.least_share = 0;
  if (DATABASE::create("").handle().compose(stages, any)) {
    throw FAILURE(EXIT_FOUND, fmt::format("{}", fmt::join(errors, "; ")));
  }
  whole.contradictions = errors;
  return whole;
}

REPORT_DATA data_of(const std::vector<REPORT_STAGE>& stages, const std::vector<DATABASE>& databases,
                    std::optional<WHOLE>& whole) {
  if (databases.size() == 1) {
    return {stages, KPT_KEYPOINTS_DB()};
  }
  whole = whole_of(databases);
  REPORT_DATA data(stages, whole->db.handle());
  data.set_told(whole->told);
  for (const std::string& text : whole->contradictions) {
    data.add_contradiction(text);
  }
  return data;
}

}  // namespace

EXIT_CODE run_report(const REPORT_OPTIONS& options) {
  std::vector<DATABASE> databases;
  databases.reserve(options.files.size());
  std::vector<REPORT_STAGE> stages;
  for (const std::string& file : options.files) {
    databases.push_back(DATABASE::load(file));
    stages.push_back({databases.back().handle(), file, time_of_file(file)});
  }
  std::optional<WHOLE> whole;
  REPORT_DATA data = data_of(stages, databases, whole);
  if (!options.title.empty()) {
    data.set_title(options.title);
  }
  if (!options.against.empty()) {
    const DATABASE older = DATABASE::load(options.against);
    data.set_changes({options.against, changes_between(older, whole ? whole->db : databases.front())});
  }
  RESULT_FILE out(options.output);
  data.write(out, now(), "kptdb " KPTDB_VERSION);
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
