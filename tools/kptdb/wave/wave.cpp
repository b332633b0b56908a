#include "wave.h"

#include <fmt/format.h>

#include "../database.h"
#include "../model.h"
#include "../text.h"
#include "wave_translator.h"

namespace kptdb {

namespace {

JSON json_of(const WAVE_EVENT& event) {
  JSON json;
  json["count"] = event.count;
  if (event.count > 0) {
    json["first"] = {{"register", event.name}, {"time", event.time}};
  }
  return json;
}

JSON json_of(const WAVE_COUNTS& counts, const WAVE_OPTIONS& options) {
  JSON json;
  json["format"] = 1;
  json["written"] = options.output;
  json["registers"] = counts.written;
  json["from_the_dump"] = counts.followed;
  json["decoded"] = counts.decoded;
  json["constant"] = counts.constant;
  json["without_successor"] = counts.no_successor;
  json["not_in_the_dump"] = counts.not_in_dump;
  json["ambiguous"] = counts.ambiguous;
  json["disagreements"] = json_of(counts.disagreement);
  json["unknown_codes"] = json_of(counts.unknown_code);
  return json;
}

std::string event_line(const WAVE_EVENT& event, std::string_view what) {
  return event.count == 0 ? ""
                          : fmt::format("  {}: {}, first {} at {}\n", what, counted(event.count, "time"),
                                        printable(event.name), event.time);
}

std::string count_line(std::size_t count, std::string_view what) {
  return count == 0 ? "" : fmt::format("  {} {}\n", count, what);
}

std::string text_of(const WAVE_COUNTS& counts, const WAVE_OPTIONS& options) {
  return fmt::format("{}: {} written\n", options.output.empty() ? "standard output" : options.output,
                     counted(counts.written, "register")) +
         count_line(counts.followed, "from the dump") + count_line(counts.decoded, "decoded through state tables") +
         count_line(counts.constant, "constant") + count_line(counts.no_successor, "without a successor") +
         count_line(counts.not_in_dump, "not in the dump") +
         count_line(counts.ambiguous, "ambiguous: their names stand for several signals of the dump") +
         event_line(counts.disagreement, "copies of a register disagreed") +
         event_line(counts.unknown_code, "a state machine had a code that its table does not list");
}

void refuse_nothing_found(const WAVE_COUNTS& counts, const WAVE_OPTIONS& options) {
  if (counts.followed + counts.decoded == 0 && counts.not_in_dump + counts.ambiguous > 0) {
    throw FAILURE(EXIT_FOUND,
                  fmt::format("{}: it has none of the registers of {} in {}; see --scope", options.dump, options.file,
                              options.scope.empty() ? "its outermost scope" : "scope " + options.scope));
  }
}

char divider_of(const std::string& text) {
  if (text.size() != 1) {
    throw FAILURE(EXIT_WRONG_USE, "--divider takes one character");
  }
  return text.front();
}

}  // namespace

EXIT_CODE run_wave(const WAVE_OPTIONS& options) {
  const char divider = divider_of(options.divider);
  const DATABASE db = DATABASE::load(options.file);
  const FACTS facts(db.handle());
  VCD_READER reader(options.dump);
  const VCD_NAMES names(reader, options.scope, divider);
  WAVE_TRANSLATOR translator(facts, reader, names, divider);
  const std::vector<std::string_view> written = translator.plan(options.only, options.with_unknown);
  refuse_nothing_found(translator.counts(), options);
  RESULT_FILE out(options.output);
  WAVE_WRITER writer(out, translator.bits());
  writer.write_header(written, options.to_scope.empty() ? options.scope : options.to_scope, reader.timescale(),
                      divider);
  while (reader.next_step()) {
    translator.translate(writer);
    writer.end_step(reader.time(), false);
  }
  translator.translate(writer);
  writer.end_step(reader.time(), true);
  out.finish();
  const std::string report =
      options.json ? json_text(json_of(translator.counts(), options)) + "\n" : text_of(translator.counts(), options);
  std::fputs(report.c_str(), options.output.empty() || options.output == "-" ? stderr : stdout);
  return EXIT_DONE;
}

}  // namespace kptdb
