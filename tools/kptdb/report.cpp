// report: one page, for a browser, that shows where the registers went.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

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

// A build that has to give the same bytes again sets the time by the usual variable.
std::string now() {
  const char* fixed = std::getenv("SOURCE_DATE_EPOCH");
  return text_of_time(fixed == nullptr ? std::time(nullptr) : std::strtoll(fixed, nullptr, 10));
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
  REPORT_DATA data(stages, KPT_KEYPOINTS_DB());
  if (!options.title.empty()) {
    data.set_title(options.title);
  }
  RESULT_FILE out(options.output);
  data.write(out, now(), "kptdb " KPTDB_VERSION);
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
