#include "export_facts.h"

#include <fmt/format.h>

namespace kptdb {

namespace {

void need_output(const EXPORT_OPTIONS& options, std::string_view what) {
  if (options.output.empty() || options.output == "-") {
    throw FAILURE(EXIT_WRONG_USE, fmt::format("--format {} needs -o and the name of a {}", options.format, what));
  }
}

VIEWER_OPTIONS viewer_options(const EXPORT_OPTIONS& options) {
  need_output(options, "folder");
  if (options.divider.size() != 1) {
    throw FAILURE(EXIT_WRONG_USE, "--divider takes one character");
  }
  return {options.output, options.dump, options.scope, options.divider.front()};
}

void write_sqlite(const FACTS& facts, const std::string& name, const EXPORT_OPTIONS& options) {
  need_output(options, "file");
  const std::string design = options.design.empty() ? name : options.design;
  (options.append ? append_sqlite : export_sqlite)(facts, design, options.file, options.output);
}

void write_gtkwave(const FACTS& facts, const std::string& name, const EXPORT_OPTIONS& options) {
  if (options.dump.empty()) {
    throw FAILURE(EXIT_WRONG_USE, "--format gtkwave needs --dump: the names of the viewer are those of a dump");
  }
  export_gtkwave(facts, name, viewer_options(options));
}

}  // namespace

bool export_facts(const DATABASE& db, const EXPORT_OPTIONS& options) {
  const std::string& format = options.format;
  const bool is_text = format == "tcl" || format == "eqy";
  if (!is_text && format != "sqlite" && format != "gtkwave" && format != "surfer") {
    return false;
  }
  const FACTS facts(db.handle());
  if (format == "sqlite") {
    write_sqlite(facts, db.name(), options);
  } else if (format == "gtkwave") {
    write_gtkwave(facts, db.name(), options);
  } else if (format == "surfer") {
    export_surfer(facts, viewer_options(options));
  } else {
    RESULT_FILE out(options.output);
    if (format == "tcl") {
      export_tcl(facts, out);
    } else {
      export_eqy(facts, options.module.empty() ? db.name() : options.module, out);
    }
    out.finish();
  }
  return true;
}

}  // namespace kptdb
