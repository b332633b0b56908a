// show: says in words what became of a register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "colour.h"
#include "commands.h"
#include "fates.h"
#include "files.h"
#include "find.h"
#include "name_query.h"
#include "text.h"

namespace kptdb {

namespace {

// More states are not useful to read, and a table can have 65,535.
constexpr unsigned MOST_STATES_SHOWN = 64;

// The registers of one side of a map, relative to one register: those that hold
// its value, and those that hold the inverse.
struct RELATIVES {
  std::vector<KPT_REGISTER_KEYPOINT> same;
  std::vector<KPT_REGISTER_KEYPOINT> inverse;
};

// The registers at an index of a side, relative to a register of one of the two groups.
void add_relatives(RELATIVES& relatives, const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index,
                   bool inverting) {
  for (const bool inverse : {false, true}) {
    std::vector<KPT_REGISTER_KEYPOINT>& to = inverse ? relatives.inverse : relatives.same;
    const KPT_REGISTER_GROUP group = map.get_group(side, index, inverting != inverse);
    to.insert(to.end(), group.begin(), group.end());
  }
}

// On its own side, a register has relatives only at its own index.
RELATIVES siblings(const REGISTER& reg, const PLACE& place) {
  RELATIVES result;
  add_relatives(result, reg.map, reg.side, place.index, place.inverting);
  for (std::vector<KPT_REGISTER_KEYPOINT>* relatives : {&result.same, &result.inverse}) {
    std::erase(*relatives, reg.keypoint);
  }
  return result;
}

// In a state machine, no register of one side holds the value of a register of the other: the table relates them.
RELATIVES partners(const REGISTER& reg, const PLACE& place) {
  RELATIVES result;
  const KPT_SET_ENUM across = other_side(reg.side);
  const std::size_t count = reg.map.get_number_of_indices(across);
  for (std::size_t index = 0; index < count; ++index) {
    add_relatives(result, reg.map, across, index, !reg.map.has_fsm() && place.inverting);
  }
  if (reg.map.has_fsm()) {
    result.same.insert(result.same.end(), result.inverse.begin(), result.inverse.end());
    result.inverse.clear();
  }
  return result;
}

std::vector<std::string> labels(const std::vector<KPT_REGISTER_KEYPOINT>& keypoints) {
  std::vector<std::string> result;
  std::transform(keypoints.begin(), keypoints.end(), std::back_inserter(result), label);
  return result;
}

JSON json_list(const std::vector<KPT_REGISTER_KEYPOINT>& keypoints) {
  JSON list = JSON::array();
  for (const KPT_REGISTER_KEYPOINT& k : keypoints) {
    list.push_back(json_of(k));
  }
  return list;
}

// Whether the register has the same value as the representative of an index on the other
// side, or the inverse; empty when the map does not say. The map answers for the
// representative of the register's own index; a register of the other group has the inverse.
std::string_view unateness(const REGISTER& reg, const PLACE& place, std::size_t other) {
  const bool is_reference = reg.side == KPT_REFERENCE_SET;
  const auto r = static_cast<unsigned short>(is_reference ? place.index : other);
  const auto t = static_cast<unsigned short>(is_reference ? other : place.index);
  const bool positive = reg.map.is_positive_unate(r, t);
  const bool negative = reg.map.is_negative_unate(r, t);
  if (positive == negative) {
    return positive ? "both" : "";
  }
  const bool opposes = place.inverting && !reg.map.get_group(reg.side, place.index, false).empty();
  return positive != opposes ? "positive" : "negative";
}

JSON json_of_unateness(const REGISTER& reg, const PLACE& place) {
  JSON result = JSON::array();
  const std::size_t count = reg.map.get_number_of_indices(other_side(reg.side));
  for (std::size_t k = 0; k < count; ++k) {
    const std::string_view word = unateness(reg, place, k);
    result.push_back(word.empty() ? JSON(nullptr) : JSON(word));
  }
  return result;
}

JSON json_of_answer(const REGISTER& reg) {
  JSON result = json_of(reg, FATES().of(reg));
  if (reg.map.is_null()) {
    result["map"] = nullptr;
    return result;
  }
  const PLACE place = place_of(reg.map, reg.side, reg.keypoint);
  if (place.found) {
    const RELATIVES own = siblings(reg, place);
    const RELATIVES other = partners(reg, place);
    result["index"] = place.index;
    result["inverting"] = place.inverting;
    result["equivalents"] = json_list(own.same);
    result["inverted_equivalents"] = json_list(own.inverse);
    result["partners"] = json_list(other.same);
    result["inverted_partners"] = json_list(other.inverse);
    result["unateness"] = json_of_unateness(reg, place);
  }
  result["map"] = json_of(reg.map);
  return result;
}

void add_line(std::string& text, std::string_view what, const std::vector<KPT_REGISTER_KEYPOINT>& keypoints) {
  if (!keypoints.empty()) {
    text += fmt::format("  {} {}\n", what, fmt::join(labels(keypoints), ", "));
  }
}

std::string why_unknown(const REGISTER& reg) {
  if (reg.map.is_null()) {
    return "no map lists it";
  }
  if (reg.map.has_fsm()) {
    return "its state table does not fit its registers";
  }
  if (reason_word(reg.map) == "eliminated") {
    return "it was eliminated, and no reason is given";
  }
  return reason_word(reg.map).empty() && !has_members(reg.map, other_side(reg.side))
             ? fmt::format("its map lists no {} register and gives no reason", side_word(other_side(reg.side)))
             : "its map does not say";
}

std::string verdict(const REGISTER& reg) {
  const FATE fate = FATES().of(reg);
  const bool is_machine = !reg.map.is_null() && kind_of(reg.map) == STATE_MACHINE;
  switch (fate.word) {
    case KPT_FATE_MACHINE:
      return reason_word(reg.map).empty() ? "a register of a re-encoded state machine"
                                          : "a register of a re-encoded state machine that lost a register";
    case KPT_FATE_MAPPED:
      return kind_of(reg.map) == ONE_TO_ONE ? "kept one to one" : "kept in a group";
    case KPT_FATE_UNKNOWN:
      return "unknown: " + why_unknown(reg);
    default:
      return fate_text(fate) + (is_machine ? ", in a re-encoded state machine" : "");
  }
}

std::string text_of_states(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STATE_TABLE states = map.get_state_table();
  TEXT_TABLE table({"state", "reference", "transformed"});
  const unsigned count = states.get_number_of_states();
  for (unsigned s = 0; s < std::min(count, MOST_STATES_SHOWN); ++s) {
    table.add({std::to_string(s), code_of(states, KPT_REFERENCE_SET, s), code_of(states, KPT_TRANSFORMED_SET, s)});
  }
  std::string text = table.text("  ");
  if (count > MOST_STATES_SHOWN) {
    text += fmt::format("  ... and {} more; --json lists them all\n", counted(count - MOST_STATES_SHOWN, "state"));
  }
  return text;
}

std::string text_of_machine(const KPT_REGISTER_TRANSFORMATION& map) {
  const auto names = [&](KPT_SET_ENUM side) {
    std::vector<std::string> result;
    for (const KPT_REGISTER_KEYPOINT& reg : columns(map, side)) {
      result.push_back(reg.is_null() ? "-" : label(reg));
    }
    return result;
  };
  return fmt::format("  reference columns: {}\n  transformed columns: {}\n{}",
                     fmt::join(names(KPT_REFERENCE_SET), ", "), fmt::join(names(KPT_TRANSFORMED_SET), ", "),
                     text_of_states(map));
}

std::string text_of_unateness(const REGISTER& reg, const PLACE& place) {
  const std::string_view word = unateness(reg, place, 0);
  if (word.empty() || word == "both") {
    return {};
  }
  return fmt::format("  {} unate\n", word);
}

std::string text_of_answer(const REGISTER& reg) {
  std::string text = painted(
      fmt::format("{} register {}, id {}", side_word(reg.side), label(reg.keypoint), reg.keypoint.get_id()), BOLD);
  text += "\n  " + verdict(reg) + "\n";
  const PLACE place = reg.map.is_null() ? PLACE() : place_of(reg.map, reg.side, reg.keypoint);
  if (!place.found) {
    return text;
  }
  const RELATIVES own = siblings(reg, place);
  const RELATIVES other = partners(reg, place);
  const bool fsm = reg.map.has_fsm();
  const std::string_view across = side_word(other_side(reg.side));
  add_line(text, fmt::format("{} {}:", across, fsm ? "state registers" : "with the same value"), other.same);
  add_line(text, fmt::format("{} with the inverse:", across), other.inverse);
  add_line(text, "equivalents:", own.same);
  add_line(text, "inverted equivalents:", own.inverse);
  return text + (fsm ? text_of_machine(reg.map) : text_of_unateness(reg, place));
}

// The registers of every given name, in the order of the names.
std::vector<std::vector<REGISTER>> found_registers(const DATABASE& db, const NAME_QUERY& query,
                                                   const std::string& side) {
  std::vector<std::vector<REGISTER>> found(query.names().size());
  for (const KPT_SET_ENUM wanted : sides_named(side)) {
    for (const KPT_REGISTER_KEYPOINT& reg : db.registers(wanted)) {
      query.for_each_match(std::string_view(reg.get_name()), [&](std::size_t k) {
        found[k].push_back({wanted, reg, map_of(db, wanted, reg)});
      });
    }
  }
  return found;
}

struct MISSING {
  std::string name;
  std::string close;
};

// Finding a close name reads all names, so it is done only for the first few unknown names.
std::vector<MISSING> missing_names(const DATABASE& db, const NAME_QUERY& query, const SHOW_OPTIONS& options,
                                   const std::vector<std::vector<REGISTER>>& found) {
  constexpr std::size_t MOST_LOOKED_FOR = 8;
  std::vector<MISSING> missing;
  for (std::size_t k = 0; k < found.size(); ++k) {
    if (found[k].empty()) {
      const std::string& name = query.names()[k];
      const bool is_looked_for = !options.names.is_regex && missing.size() < MOST_LOOKED_FOR;
      missing.push_back({name, is_looked_for ? close_name(db, name, options.side) : ""});
    }
  }
  return missing;
}

void write_text(RESULT_FILE& out, const std::vector<std::vector<REGISTER>>& found) {
  bool is_first = true;
  for (const auto& registers : found) {
    for (const REGISTER& reg : registers) {
      out.write((is_first ? "" : "\n") + text_of_answer(reg));
      is_first = false;
    }
  }
}

void write_json(RESULT_FILE& out, const std::vector<std::vector<REGISTER>>& found,
                const std::vector<MISSING>& missing) {
  JSON result = new_result();
  result["registers"] = JSON::array();
  for (const auto& registers : found) {
    for (const REGISTER& reg : registers) {
      result["registers"].push_back(json_of_answer(reg));
    }
  }
  result["missing"] = JSON::array();
  for (const MISSING& m : missing) {
    result["missing"].push_back({{"name", m.name}, {"close", m.close.empty() ? JSON(nullptr) : JSON(m.close)}});
  }
  out.write(json_text(result) + "\n");
}

}  // namespace

EXIT_CODE run_show(const SHOW_OPTIONS& options) {
  const NAME_QUERY query(options.names);
  if (query.names().empty()) {
    throw FAILURE(EXIT_WRONG_USE, "show needs a register's name, or --names-from");
  }
  const DATABASE db = DATABASE::load(options.file);
  const std::vector<std::vector<REGISTER>> found = found_registers(db, query, options.side);
  const std::vector<MISSING> missing = missing_names(db, query, options, found);
  RESULT_FILE out("");
  options.json ? write_json(out, found, missing) : write_text(out, found);
  out.finish();
  for (const MISSING& m : missing) {
    print_failure(not_found_text(options.file, m.name, options.side, m.close));
  }
  return missing.empty() ? EXIT_DONE : EXIT_FOUND;
}

}  // namespace kptdb
