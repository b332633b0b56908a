// export: the facts in other forms; json and csv are here.
#include "export.h"

#include <fmt/format.h>

#include "export_facts.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// One fact at a time: a netlist has more of them than would be wise to hold as text.
class JSON_LIST {
 public:
  JSON_LIST(RESULT_FILE& out, std::string_view name) : m_out(out) { m_out.write(fmt::format(",\n\"{}\": [", name)); }
  void add(const JSON& entry) {
    m_out.write((m_is_first ? "\n" : ",\n") + json_text(entry, -1));
    m_is_first = false;
  }
  void close() { m_out.write("]"); }

 private:
  RESULT_FILE& m_out;
  bool m_is_first = true;
};

void export_json(const DATABASE& db, RESULT_FILE& out) {
  out.write("{\"name\": " + json_text(JSON(db.name())));
  JSON_LIST registers(out, "registers");
  for (const REGISTER& reg : registers_of(db)) {
    registers.add(json_of(reg));
  }
  registers.close();
  JSON_LIST maps(out, "maps");
  for (const KPT_TRANSFORMATION_IMPL* map : db.maps().get_list_of_register_transformations()) {
    maps.add(json_of(*map));
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

std::string columns_of(const KPT_KEYPOINT* keypoint) {
  const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(keypoint);
  if (reg == nullptr) {
    return ",,,,,,";
  }
  return fmt::format("{},{},{},{},{},,", reg->get_kpid(), csv_text(reg->get_element_name()),
                     reg->register_is_signal() ? "signal" : "instance", csv_text(reg->get_entity_name()),
                     csv_text(reg->get_register_type()));
}

void write_map_rows(RESULT_FILE& out, std::size_t number, const KPT_TRANSFORMATION_IMPL& map) {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    std::size_t index = 0;
    for (const NI_PAIR& pair : side_of(map, side)) {
      for (const bool inverting : {false, true}) {
        for (const KPT_KEYPOINT* k : inverting ? pair.second : pair.first) {
          out.write(fmt::format("{},{},{},{},{},{},{}\n", number, kind_word(kind_of(map)), reason_word(map),
                                side_word(side), index, inverting ? "inverting" : "noninverting", columns_of(k)));
        }
      }
      ++index;
    }
  }
}

// One row for every place of a register in a map, and one for every state of a state machine; a
// register without a map has a row with an empty map.
void export_csv(const DATABASE& db, RESULT_FILE& out) {
  out.write(
      "map,kind,elimination,side,index,group,id,name,register_kind,entity,type,reference_code,"
      "transformed_code\n");
  std::size_t number = 0;
  for (const KPT_TRANSFORMATION_IMPL* map : db.maps().get_list_of_register_transformations()) {
    write_map_rows(out, number, *map);
    const unsigned states = map->map_has_fsm_transformation() ? map->state_table().get_num_states() : 0;
    for (unsigned s = 0; s < states; ++s) {
      out.write(fmt::format("{},state,,,{},,,,,,,{},{}\n", number, s, code_of(map->state_table(), KPT_REFERENCE_SET, s),
                            code_of(map->state_table(), KPT_TRANSFORMED_SET, s)));
    }
    ++number;
  }
  for (const REGISTER& reg : registers_of(db)) {
    if (reg.map == nullptr) {
      out.write(fmt::format(",,,{},,,{}\n", side_word(reg.side), columns_of(reg.keypoint)));
    }
  }
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
  } else {
    export_encfile(db, options, out);
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
