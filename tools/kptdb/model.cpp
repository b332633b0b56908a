#include "model.h"

#include <fmt/format.h>

#include <algorithm>

#include "text.h"

namespace kptdb {

std::string_view side_word(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? "reference" : "transformed"; }

std::string_view kind_word(MAP_KIND kind) {
  switch (kind) {
    case ONE_TO_ONE:
      return "1:1";
    case MANY_TO_MANY:
      return "n:m";
    case STATE_MACHINE:
      return "fsm";
    case ELIMINATED_MAP:
      return "eliminated";
    case OPEN_MAP:
      break;
  }
  return "open";
}

std::string_view reason_word(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_ELIM_ENUM reason = map.get_elimination();
  return reason == KPT_NOT_ELIMINATED ? std::string_view() : kpt_elim_word(reason);
}

std::string_view register_kind_word(const KPT_REGISTER_KEYPOINT& reg) {
  return reg.is_signal() ? "signal" : "instance";
}

std::size_t member_count(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  std::size_t count = 0;
  for_each_member(map, side, [&](const KPT_REGISTER_KEYPOINT&) { ++count; });
  return count;
}

namespace {

// 0, 1, or 2 for more. A group may have all registers of a netlist, and this is called for each of them.
unsigned none_one_or_many(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  unsigned found = 0;
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < count && found < 2; ++index) {
    for (const bool inverting : {false, true}) {
      const KPT_REGISTER_GROUP group = map.get_group(side, index, inverting);
      for (auto reg = group.begin(); reg != group.end() && found < 2; ++reg) {
        found += (*reg).is_null() ? 0U : 1U;
      }
    }
  }
  return found;
}

}  // namespace

bool has_members(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) { return none_one_or_many(map, side) > 0; }

// A state machine that lost one of its registers is a state machine: the elimination only adds a note.
MAP_KIND kind_of(const KPT_REGISTER_TRANSFORMATION& map) {
  const unsigned r = none_one_or_many(map, KPT_REFERENCE_SET);
  const unsigned t = none_one_or_many(map, KPT_TRANSFORMED_SET);
  if (map.has_fsm() && r > 0 && t > 0) {
    return STATE_MACHINE;
  }
  if (!reason_word(map).empty()) {
    return ELIMINATED_MAP;
  }
  if (r == 0 || t == 0) {
    return OPEN_MAP;
  }
  return r == 1 && t == 1 ? ONE_TO_ONE : MANY_TO_MANY;
}

bool has_void_table(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STRING partial = map.get_attribute("partial");
  return std::string_view(partial) == "table";
}

KPT_SET_ENUM other_side(KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET;
}

std::vector<KPT_REGISTER_KEYPOINT> members(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  std::vector<KPT_REGISTER_KEYPOINT> result;
  for_each_member(map, side, [&](const KPT_REGISTER_KEYPOINT& reg) { result.push_back(reg); });
  return result;
}

std::vector<KPT_REGISTER_KEYPOINT> columns(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  std::vector<KPT_REGISTER_KEYPOINT> result;
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < count; ++index) {
    const KPT_REGISTER_GROUP group = map.get_group(side, index, false);
    result.push_back((group.empty() ? map.get_group(side, index, true) : group)[0]);
  }
  return result;
}

PLACE place_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) {
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < count; ++index) {
    for (const bool inverting : {false, true}) {
      const KPT_REGISTER_GROUP group = map.get_group(side, index, inverting);
      if (std::find(group.begin(), group.end(), reg) != group.end()) {
        return {true, index, inverting};
      }
    }
  }
  return {};
}

std::string label(const KPT_REGISTER_KEYPOINT& reg) {
  if (reg.is_null()) {
    return "(no register)";
  }
  if (reg.is_signal()) {
    return printable(reg.get_name());
  }
  return fmt::format("{} ({}, {})", printable(reg.get_name()), printable(reg.get_entity_name()),
                     printable(reg.get_type()));
}

KPT_REGISTER_TRANSFORMATION map_of(const DATABASE& db, KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) {
  return side == KPT_REFERENCE_SET ? db.handle().get_reference_register_transformation(reg)
                                   : db.handle().get_transformed_register_transformation(reg);
}

unsigned width_of(const KPT_STATE_TABLE& table, KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? table.get_state_reference_size() : table.get_state_transformed_size();
}

std::string code_of(const KPT_STATE_TABLE& table, KPT_SET_ENUM side, unsigned state) {
  const unsigned width = width_of(table, side);
  const auto row = static_cast<unsigned short>(state + 1);
  std::string code;
  for (unsigned k = 1; k <= width; ++k) {
    const auto column = static_cast<unsigned short>(k);
    const int bit =
        side == KPT_REFERENCE_SET ? table.get_reference_entry(row, column) : table.get_transformed_entry(row, column);
    code += bit == 0 ? '0' : bit == 1 ? '1' : '?';
  }
  return code;
}

JSON new_result() { return JSON{{"format", 1}}; }

void put_parts(JSON_LINE& line, const KPT_REGISTER_KEYPOINT& reg) {
  line.add("name", std::string_view(reg.get_name()));
  if (!reg.is_signal()) {
    line.add("entity", std::string_view(reg.get_entity_name()));
    line.add("type", std::string_view(reg.get_type()));
  }
}

void put(JSON_LINE& line, const KPT_REGISTER_KEYPOINT& reg) {
  if (reg.is_null()) {
    line.add(nullptr);
    return;
  }
  line.open_object();
  put_parts(line, reg);
  line.close_object();
}

void put_states(JSON_LINE& line, const KPT_STATE_TABLE& table) {
  line.open_list();
  for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
    line.open_list();
    line.add(code_of(table, KPT_REFERENCE_SET, s));
    line.add(code_of(table, KPT_TRANSFORMED_SET, s));
    line.close_list();
  }
  line.close_list();
}

namespace {

void put_group(JSON_LINE& line, const KPT_REGISTER_GROUP& group) {
  line.open_list();
  for (const KPT_REGISTER_KEYPOINT& reg : group) {
    put(line, reg);
  }
  line.close_list();
}

void put_side(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  line.open_list();
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t k = 0; k < count; ++k) {
    line.open_object();
    line.key("noninverting");
    put_group(line, map.get_group(side, k, false));
    line.key("inverting");
    put_group(line, map.get_group(side, k, true));
    line.close_object();
  }
  line.close_list();
}

}  // namespace

void put_elimination(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map) {
  const std::string_view reason = reason_word(map);
  line.key("elimination");
  if (reason.empty()) {
    line.add(nullptr);
  } else {
    line.add(reason);
  }
}

void put(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map) {
  line.open_object();
  line.add("kind", kind_word(kind_of(map)));
  put_elimination(line, map);
  line.key("reference");
  put_side(line, map, KPT_REFERENCE_SET);
  line.key("transformed");
  put_side(line, map, KPT_TRANSFORMED_SET);
  if (map.has_fsm()) {
    line.key("states");
    put_states(line, map.get_state_table());
  }
  line.close_object();
}

std::string json_text(const JSON& json, int indent) {
  return json.dump(indent, ' ', false, JSON::error_handler_t::replace);
}

}  // namespace kptdb
