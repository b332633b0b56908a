// show: in words, what became of a register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "commands.h"
#include "files.h"
#include "find.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// Nobody reads further, and a table can have 65,535 states.
constexpr unsigned MOST_STATES_SHOWN = 64;

// The registers of one side of a map, seen from one register: those that carry its value, and
// those that carry the inverse.
struct RELATIVES {
  std::vector<KPT_REGISTER_KEYPOINT> same;
  std::vector<KPT_REGISTER_KEYPOINT> inverse;
};

// What an index of a side lists, seen from a register of the one group or of the other.
void add_relatives(RELATIVES& relatives, const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index,
                   bool inverting) {
  for (const bool inverse : {false, true}) {
    std::vector<KPT_REGISTER_KEYPOINT>& to = inverse ? relatives.inverse : relatives.same;
    const KPT_REGISTER_GROUP group = map.get_group(side, index, inverting != inverse);
    to.insert(to.end(), group.begin(), group.end());
  }
}

// On its own side a register has relatives at its own index alone.
RELATIVES siblings(const REGISTER& reg, const PLACE& place) {
  RELATIVES result;
  add_relatives(result, reg.map, reg.side, place.index, place.inverting);
  for (std::vector<KPT_REGISTER_KEYPOINT>* relatives : {&result.same, &result.inverse}) {
    std::erase(*relatives, reg.keypoint);
  }
  return result;
}

// Across a state machine no single register carries the value of another: the table relates them.
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

// Whether the register moves with the representative of an index across the map, or against it;
// empty when the map does not say. The map answers for the register's own representative, which a
// register of the other group opposes.
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
  JSON result = json_of(reg);
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

std::string verdict(const REGISTER& reg) {
  if (reg.map.is_null()) {
    return "  no map says what became of it\n";
  }
  const std::string_view reason = reason_word(reg.map);
  switch (kind_of(reg.map)) {
    case STATE_MACHINE:
      return reason.empty()
                 ? "  a register of a re-encoded state machine\n"
                 : fmt::format("  a register of a re-encoded state machine that lost a register: {}\n", reason);
    case ELIMINATED_MAP:
      return fmt::format("  eliminated: {}\n", reason == "eliminated" ? "no reason given" : reason);
    case OPEN_MAP:
      return fmt::format("  its map lists no {} register and gives no reason\n", side_word(other_side(reg.side)));
    case ONE_TO_ONE:
      return "  kept one to one\n";
    case MANY_TO_MANY:
      break;
  }
  return "  kept in a group\n";
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
  std::string text =
      fmt::format("{} register {}, id {}\n", side_word(reg.side), label(reg.keypoint), reg.keypoint.get_id());
  text += verdict(reg);
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

EXIT_CODE answer_nothing(const DATABASE& db, const SHOW_OPTIONS& options, RESULT_FILE& out) {
  const std::string close = close_name(db, options.name, options.side);
  if (options.json) {
    JSON result;
    result["registers"] = JSON::array();
    result["close"] = close.empty() ? JSON(nullptr) : JSON(close);
    out.write(json_text(result) + "\n");
    out.finish();
  }
  throw FAILURE(EXIT_FOUND, not_found_text(options.file, options.name, options.side, close));
}

}  // namespace

EXIT_CODE run_show(const SHOW_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  const std::vector<REGISTER> found = find_registers(db, options.name, options.side);
  RESULT_FILE out("");
  if (found.empty()) {
    return answer_nothing(db, options, out);
  }
  JSON answers = JSON::array();
  std::string text;
  for (const REGISTER& reg : found) {
    if (options.json) {
      answers.push_back(json_of_answer(reg));
    } else {
      text += fmt::format("{}{}", text.empty() ? "" : "\n", text_of_answer(reg));
    }
  }
  out.write(options.json ? json_text(JSON{{"registers", answers}}) + "\n" : text);
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
