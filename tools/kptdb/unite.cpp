// unite: successive stages become one database.
#include <fmt/format.h>

#include "commands.h"
#include "database.h"
#include "files.h"
#include "host_lines.h"
#include "model.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

void unite(const DATABASE& first, const DATABASE& next, const std::string& file) {
  HOST_LINES lines;
  const PROGRESS progress("uniting " + file, file_size(file));
  if (!first.handle().unite(next.handle())) {
    const std::string reason = lines.reason();
    throw FAILURE(EXIT_FOUND, fmt::format("{}: cannot be united with the stages before it{}", file,
                                          reason.empty() ? "" : ": " + reason));
  }
}

}  // namespace

// One stage at a time: of all the stages, two are in memory.
EXIT_CODE run_unite(const UNITE_OPTIONS& options) {
  const DATABASE united = DATABASE::load(options.files.front());
  for (std::size_t k = 1; k < options.files.size(); ++k) {
    unite(united, DATABASE::load(options.files[k]), options.files[k]);
  }
  united.save(options.output);
  RESULT_FILE out = RESULT_FILE::beside(options.output);
  if (options.json) {
    JSON result = new_result();
    result["written"] = options.output;
    result["stages"] = options.files;
    out.write(json_text(result) + "\n");
  } else {
    out.write(fmt::format("{}: {} united, {}\n", options.output, counted(options.files.size(), "stage"),
                          counted(united.registers(KPT_REFERENCE_SET).size(), "reference register")));
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
