// export: the facts in other formats. json and csv are here.
#include "export.h"

#include <fmt/format.h>

#include "export_facts.h"
#include "fates.h"
#include "text.h"

namespace kptdb {

namespace {

// One fact at a time, because the text of all facts of a netlist is too large.
class JSON_LIST {
 public:
  JSON_LIST(RESULT_FILE& out, std::string_view name) : m_out(out) { m_out.write(fmt::format(",\n\"{}\": [", name)); }
  /// The arguments are those of `put`.
  template <class... A>
  void add(const A&... what) {
    m_line.clear();
    put(m_line, what...);
    m_out.write(m_is_first ? "\n" : ",\n");
    m_out.write(m_line.text());
    m_is_first = false;
  }
  void close() { m_out.write("]"); }

 private:
  RESULT_FILE& m_out;
  JSON_LINE m_line;
  bool m_is_first = true;
};

void export_json(const DATABASE& db, RESULT_FILE& out) {
  out.write("{\"format\": 1,\n\"name\": " + json_text(JSON(db.name())));
  JSON_LIST registers(out, "registers");
  FATES fates;
  EXPORT_PROGRESS progress(db);
  for_each_register(db, [&](const REGISTER& reg) {
    progress.next();
    registers.add(reg, fates.of(reg));
  });
  registers.close();
  JSON_LIST maps(out, "maps");
  for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
    progress.next();
    maps.add(map);
  }
  maps.close();
  out.write("}\n");
}

std::string csv_text(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    return std::string(text);
  }
  std::string result = "\"";
  for (const char c : text) {
    result += c == '"' ? "\"\"" : std::string(1, c);
  }
  return result + '"';
}

std::string columns_of(const KPT_REGISTER_KEYPOINT& reg) {
  if (reg.is_null()) {
    return ",,,,,,";
  }
  return fmt::format("{},{},{},{},{},,", reg.get_id(), csv_text(reg.get_name()), register_kind_word(reg),
                     csv_text(reg.get_entity_name()), csv_text(reg.get_type()));
}

void write_map_rows(RESULT_FILE& out, std::size_t number, const KPT_REGISTER_TRANSFORMATION& map) {
  const std::string_view kind = kind_word(kind_of(map));
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for_each_place(map, side, [&](std::size_t index, bool inverting, const KPT_REGISTER_KEYPOINT& reg) {
      out.write(fmt::format("{},{},{},{},{},{},{}\n", number, kind, reason_word(map), side_word(side), index,
                            inverting ? "inverting" : "noninverting", columns_of(reg)));
    });
  }
}

void write_state_rows(RESULT_FILE& out, std::size_t number, const KPT_REGISTER_TRANSFORMATION& map) {
  if (!map.has_fsm()) {
    return;
  }
  const KPT_STATE_TABLE table = map.get_state_table();
  for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
    out.write(fmt::format("{},state,,,{},,,,,,,{},{}\n", number, s, code_of(table, KPT_REFERENCE_SET, s),
                          code_of(table, KPT_TRANSFORMED_SET, s)));
  }
}

// One row for every occurrence of a register in a map, and one for every state of
// a state machine. A register without a map has a row with an empty map.
void export_csv(const DATABASE& db, RESULT_FILE& out) {
  out.write(
      "map,kind,elimination,side,index,group,id,name,register_kind,entity,type,reference_code,"
      "transformed_code\n");
  std::size_t number = 0;
  EXPORT_PROGRESS progress(db);
  for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
    progress.next();
    write_map_rows(out, number, map);
    write_state_rows(out, number, map);
    ++number;
  }
  for_each_register(db, [&](const REGISTER& reg) {
    progress.next();
    if (reg.map.is_null()) {
      out.write(fmt::format(",,,{},,,{}\n", side_word(reg.side), columns_of(reg.keypoint)));
    }
  });
}

void refuse_options_of_other_formats(const EXPORT_OPTIONS& options) {
  if (!options.around.empty() && options.format != "dot") {
    throw FAILURE(EXIT_WRONG_USE, "--around needs --format dot");
  }
  if (!options.module.empty() && options.format != "encfile" && options.format != "eqy") {
    throw FAILURE(EXIT_WRONG_USE, "--module needs --format encfile or eqy");
  }
  if ((options.append || !options.design.empty()) && options.format != "sqlite") {
    throw FAILURE(EXIT_WRONG_USE, "--append and --design need --format sqlite");
  }
  if ((!options.dump.empty() || !options.scope.empty()) && options.format != "gtkwave") {
    throw FAILURE(EXIT_WRONG_USE, "--dump and --scope need --format gtkwave");
  }
}

}  // namespace

EXIT_CODE run_export(const EXPORT_OPTIONS& options) {
  if (options.format.empty()) {
    throw FAILURE(EXIT_WRONG_USE, "export needs --format or --json");
  }
  refuse_options_of_other_formats(options);
  const DATABASE db = DATABASE::load(options.file);
  if (export_facts(db, options)) {
    return EXIT_DONE;
  }
  RESULT_FILE out(options.output);
  if (options.format == "json") {
    export_json(db, out);
  } else if (options.format == "csv") {
    export_csv(db, out);
  } else if (options.format == "dot") {
    export_dot(db, options, out);
  } else if (options.format == "events") {
    export_events(db, out);
  } else {
    export_encfile(db, options, out);
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
