#include "stages.h"

#include <fmt/format.h>

#include "host_lines.h"
#include "outcome.h"
#include "progress.h"

namespace kptdb {

STAGES::STAGES(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    m_databases.push_back(DATABASE::load(file));
  }
}

std::optional<DATABASE> STAGES::try_composed(const KPT_COMPOSITION_OPTIONS& options,
                                             KPT_COMPOSITION_REPORT* report) const {
  KPT_KEYPOINTS_DB_LIST handles;
  for (const DATABASE& stage : m_databases) {
    handles.push_back(stage.handle());
  }
  return compose(handles, m_databases.front().name(), options, report);
}

DATABASE STAGES::composed(const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) const {
  std::optional<DATABASE> all = try_composed(options, report);
  if (!all) {
    throw FAILURE(EXIT_FOUND, joined(report->errors));
  }
  return std::move(*all);
}

std::optional<DATABASE> compose(const KPT_KEYPOINTS_DB_LIST& stages, const std::string& name,
                                const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) {
  const HOST_LINES lines;
  PROGRESS progress("composing");
  KPT_COMPOSITION_OPTIONS shown = options;
  shown.progress = &progress;
  DATABASE all = DATABASE::create(name);
  return all.handle().compose(stages, shown, report) ? std::optional(std::move(all)) : std::nullopt;
}

std::string joined(const KPT_STRING_VECTOR& lines) {
  std::string text;
  for (const KPT_STRING& line : lines) {
    text += text.empty() ? "" : "; ";
    text += std::string_view(line);
  }
  return text;
}

JSON listed(const KPT_STRING_VECTOR& lines) {
  JSON list = JSON::array();
  for (const KPT_STRING& line : lines) {
    list.push_back(std::string(std::string_view(line)));
  }
  return list;
}

std::string report_text(const KPT_COMPOSITION_REPORT& report) {
  std::string text;
  for (const KPT_STRING& line : report.fits) {
    text += fmt::format("{}\n", std::string_view(line));
  }
  for (const KPT_STRING& line : report.warnings) {
    text += fmt::format("warning: {}\n", std::string_view(line));
  }
  return text;
}

}  // namespace kptdb
