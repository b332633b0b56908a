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
  std::vector<const KPT_KEYPOINT*> same;
  std::vector<const KPT_KEYPOINT*> inverse;
};

void add_relatives(RELATIVES& relatives, const NI_PAIR& pair, bool inverting, const KPT_KEYPOINT* self) {
  const auto add = [&](const KPT_KEYPOINT_LIST& group, std::vector<const KPT_KEYPOINT*>& to) {
    std::copy_if(group.begin(), group.end(), std::back_inserter(to), [&](const KPT_KEYPOINT* k) { return k != self; });
  };
  add(inverting ? pair.second : pair.first, relatives.same);
  add(inverting ? pair.first : pair.second, relatives.inverse);
}

// On its own side a register has relatives at its own index alone.
RELATIVES siblings(const REGISTER& reg, const PLACE& place) {
  RELATIVES result;
  add_relatives(result, side_of(*reg.map, reg.side)[place.index], place.inverting, reg.keypoint);
  return result;
}

// Across a state machine no single register carries the value of another: the table relates them.
RELATIVES partners(const REGISTER& reg, const PLACE& place) {
  RELATIVES result;
  for (const NI_PAIR& pair : side_of(*reg.map, other_side(reg.side))) {
    add_relatives(result, pair, !reg.map->map_has_fsm_transformation() && place.inverting, nullptr);
  }
  if (reg.map->map_has_fsm_transformation()) {
    result.same.insert(result.same.end(), result.inverse.begin(), result.inverse.end());
    result.inverse.clear();
  }
  return result;
}

std::vector<std::string> labels(const std::vector<const KPT_KEYPOINT*>& keypoints) {
  std::vector<std::string> result;
  std::transform(keypoints.begin(), keypoints.end(), std::back_inserter(result), label);
  return result;
}

JSON json_list(const std::vector<const KPT_KEYPOINT*>& keypoints) {
  JSON list = JSON::array();
  for (const KPT_KEYPOINT* k : keypoints) {
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
  const bool positive = reg.map->association_is_positive_unate(r, t);
  const bool negative = reg.map->association_is_negative_unate(r, t);
  if (positive == negative) {
    return positive ? "both" : "";
  }
  const bool opposes = place.inverting && !side_of(*reg.map, reg.side)[place.index].first.empty();
  return positive != opposes ? "positive" : "negative";
}

JSON json_of_unateness(const REGISTER& reg, const PLACE& place) {
  JSON result = JSON::array();
  const std::size_t count = side_of(*reg.map, other_side(reg.side)).size();
  for (std::size_t k = 0; k < count; ++k) {
    const std::string_view word = unateness(reg, place, k);
    result.push_back(word.empty() ? JSON(nullptr) : JSON(word));
  }
  return result;
}

JSON json_of_answer(const REGISTER& reg) {
  JSON result = json_of(reg);
  if (reg.map == nullptr) {
    result["map"] = nullptr;
    return result;
  }
  const PLACE place = place_of(*reg.map, reg.side, reg.keypoint);
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
  result["map"] = json_of(*reg.map);
  return result;
}

void add_line(std::string& text, std::string_view what, const std::vector<const KPT_KEYPOINT*>& keypoints) {
  if (!keypoints.empty()) {
    text += fmt::format("  {} {}\n", what, fmt::join(labels(keypoints), ", "));
  }
}

std::string verdict(const REGISTER& reg) {
  if (reg.map == nullptr) {
    return "  no map says what became of it\n";
  }
  const std::string_view reason = reason_word(*reg.map);
  switch (kind_of(*reg.map)) {
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

std::string text_of_states(const KPT_TRANSFORMATION_IMPL& map) {
  const KPT_STATE_TABLE_IMPL& states = map.state_table();
  TEXT_TABLE table({"state", "reference", "transformed"});
  const unsigned count = states.get_num_states();
  for (unsigned s = 0; s < std::min(count, MOST_STATES_SHOWN); ++s) {
    table.add({std::to_string(s), code_of(states, KPT_REFERENCE_SET, s), code_of(states, KPT_TRANSFORMED_SET, s)});
  }
  std::string text = table.text("  ");
  if (count > MOST_STATES_SHOWN) {
    text += fmt::format("  ... and {} more; --json lists them all\n", counted(count - MOST_STATES_SHOWN, "state"));
  }
  return text;
}

std::string text_of_machine(const KPT_TRANSFORMATION_IMPL& map) {
  const auto columns = [&](KPT_SET_ENUM side) {
    std::vector<std::string> result;
    for (const NI_PAIR& pair : side_of(map, side)) {
      const KPT_KEYPOINT_LIST& group = pair.first.empty() ? pair.second : pair.first;
      result.push_back(group.empty() ? "-" : label(group.front()));
    }
    return result;
  };
  return fmt::format("  reference columns: {}\n  transformed columns: {}\n{}",
                     fmt::join(columns(KPT_REFERENCE_SET), ", "), fmt::join(columns(KPT_TRANSFORMED_SET), ", "),
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
      fmt::format("{} register {}, id {}\n", side_word(reg.side), label(reg.keypoint), reg.keypoint->get_kpid());
  text += verdict(reg);
  const PLACE place = reg.map == nullptr ? PLACE() : place_of(*reg.map, reg.side, reg.keypoint);
  if (!place.found) {
    return text;
  }
  const RELATIVES own = siblings(reg, place);
  const RELATIVES other = partners(reg, place);
  const bool fsm = reg.map->map_has_fsm_transformation();
  const std::string_view across = side_word(other_side(reg.side));
  add_line(text, fmt::format("{} {}:", across, fsm ? "state registers" : "with the same value"), other.same);
  add_line(text, fmt::format("{} with the inverse:", across), other.inverse);
  add_line(text, "equivalents:", own.same);
  add_line(text, "inverted equivalents:", own.inverse);
  return text + (fsm ? text_of_machine(*reg.map) : text_of_unateness(reg, place));
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
