// explain: the path of one register through the stages, with one line for each stage.
#include <fmt/format.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "commands.h"
#include "database.h"
#include "fates.h"
#include "files.h"
#include "model.h"
#include "stages.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr KPT_SET_ENUM SIDES[] = {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

// A register between two stages.
struct STEP {
  KPT_REGISTER_KEYPOINT keypoint;
  bool inverted = false;  // relative to the explained register
  bool encoded = false;   // a machine is between: there is no polarity
};
using STEPS = std::vector<STEP>;

std::string name_of(const KPT_REGISTER_KEYPOINT& keypoint) {
  return keypoint.is_null() ? "?" : std::string(std::string_view(keypoint.get_name()));
}

std::string told(const STEP& step) {
  return name_of(step.keypoint) + (step.encoded ? "" : step.inverted ? ", inverted" : "");
}

KPT_REGISTER_KEYPOINT found_in(const KPT_KEYPOINT_SET& set, const KPT_REGISTER_KEYPOINT& keypoint) {
  return keypoint.is_signal() ? set.get_register(keypoint.get_name())
                              : set.get_register(keypoint.get_name(), keypoint.get_entity_name(), keypoint.get_type());
}

bool lists(const KPT_REGISTER_GROUP& group, const KPT_REGISTER_KEYPOINT& keypoint) {
  for (const KPT_REGISTER_KEYPOINT& other : group) {
    if (other == keypoint) {
      return true;
    }
  }
  return false;
}

// The position of a register on a side, and its polarity.
struct PLACE {
  std::size_t index = 0;
  bool inverted = false;
};
PLACE place_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& keypoint) {
  for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
    for (const bool inverted : {false, true}) {
      if (lists(map.get_group(side, k, inverted), keypoint)) {
        return {k, inverted};
      }
    }
  }
  return {};
}

std::string passes_of(const KPT_REGISTER_TRANSFORMATION& map) {
  const std::string pass(std::string_view(map.get_attribute("pass")));
  const std::string note(std::string_view(map.get_attribute("note")));
  return (pass.empty() ? "" : " by " + pass) + (note.empty() ? "" : " (" + note + ")");
}

std::string list_of(const STEPS& steps) {
  std::string text;
  for (const STEP& step : steps) {
    text += (text.empty() ? "" : "; ") + told(step);
  }
  return text;
}

// The names of the bits of a machine, then one line for each state.
std::string table_of(const KPT_REGISTER_TRANSFORMATION& map) {
  std::string text = "   ";
  for (const KPT_SET_ENUM side : SIDES) {
    for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
      const bool inverted = map.get_group(side, k, false).empty();
      text += " " + name_of(map.get_group(side, k, inverted)[0]);
    }
    text += side == KPT_REFERENCE_SET ? " |" : "\n";
  }
  const KPT_STATE_TABLE table = map.get_state_table();
  const auto value = [](int entry) { return entry == 1 ? '1' : '0'; };
  for (unsigned row = 1; row <= table.get_number_of_states(); ++row) {
    const auto state = static_cast<unsigned short>(row);
    text += "    ";
    for (unsigned k = 1; k <= table.get_state_reference_size(); ++k) {
      text += value(table.get_reference_entry(state, static_cast<unsigned short>(k)));
    }
    text += " | ";
    for (unsigned k = 1; k <= table.get_state_transformed_size(); ++k) {
      text += value(table.get_transformed_entry(state, static_cast<unsigned short>(k)));
    }
    text += "\n";
  }
  return text;
}

// The registers of the other side of a plain map's index, or of a whole machine.
STEPS followed(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM to, const PLACE& place, const STEP& step) {
  STEPS steps;
  for (std::size_t k = 0; k < map.get_number_of_indices(to); ++k) {
    for (const bool inverted : {false, true}) {
      if (map.has_fsm() || k == place.index) {
        for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_group(to, k, inverted)) {
          if (!keypoint.is_null()) {
            steps.push_back({keypoint, step.inverted != (inverted != place.inverted), step.encoded || map.has_fsm()});
          }
        }
      }
    }
  }
  return steps;
}

// A status is the value of the first register of the n group.
std::string value_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  const bool first_inverted = map.get_reference_group(0, false).empty() && !map.get_reference_group(0, true).empty();
  return map.is_stuck_at_one() != (place.inverted != first_inverted) ? "1" : "0";
}

// What one stage says of one register, and the registers that it becomes.
std::string line_of(const KPT_KEYPOINTS_DB& stage, KPT_SET_ENUM from, const STEP& step, STEPS* next) {
  const std::string name = name_of(step.keypoint);
  const KPT_REGISTER_KEYPOINT keypoint = found_in(stage.get_set(from), step.keypoint);
  if (keypoint.is_null()) {
    return name + " is not mentioned";
  }
  const KPT_REGISTER_TRANSFORMATION map = stage.get_register_transformation(keypoint);
  if (map.is_null()) {
    return name + " has no map";
  }
  const bool forwards = from == KPT_REFERENCE_SET;
  const PLACE place = place_of(map, from, keypoint);
  const STEPS steps = followed(map, forwards ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET, place, step);
  next->insert(next->end(), steps.begin(), steps.end());
  std::string text = name;
  if (!map.has_fsm() && (map.is_stuck_at_zero() || map.is_stuck_at_one())) {
    text += " is always " + value_of(map, place);
  } else if (map.has_fsm()) {
    text += steps.empty() ? " is a bit of a machine" : (forwards ? " is encoded in " : " encodes ") + list_of(steps);
  } else if (map.has_no_fanout() && steps.empty()) {
    text += " drives nothing";
  } else if (steps.empty()) {
    text += forwards ? " is not said to become anything" : " comes from nothing";
  } else {
    text += (forwards ? " becomes " : " comes from ") + list_of(steps);
  }
  return text + passes_of(map) + (map.has_fsm() ? "\n" + table_of(map) : "");
}

std::string without_end(std::string text) {
  if (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  return text;
}

// What is said of one register, by one stage or by all together, and the registers that it becomes.
struct ANSWER {
  std::size_t stage = 0;
  KPT_REGISTER_KEYPOINT keypoint;
  std::string text;
  STEPS next;
};
using ANSWERS = std::vector<ANSWER>;

ANSWER answer_of(std::size_t number, const KPT_KEYPOINTS_DB& stage, KPT_SET_ENUM from, const STEP& step) {
  ANSWER answer{number, step.keypoint, {}, {}};
  answer.text = without_end(line_of(stage, from, step, &answer.next));
  return answer;
}

ANSWERS way(const std::list<DATABASE>& stages, KPT_SET_ENUM from, const KPT_REGISTER_KEYPOINT& start) {
  ANSWERS answers;
  STEPS steps{{start, false, false}};
  std::size_t number = from == KPT_REFERENCE_SET ? 0 : stages.size() + 1;
  const auto tell = [&](const DATABASE& stage) {
    number = from == KPT_REFERENCE_SET ? number + 1 : number - 1;
    STEPS next;
    for (const STEP& step : steps) {
      answers.push_back(answer_of(number, stage.handle(), from, step));
      next.insert(next.end(), answers.back().next.begin(), answers.back().next.end());
    }
    steps = next;
  };
  if (from == KPT_REFERENCE_SET) {
    std::for_each(stages.begin(), stages.end(), tell);
  } else {
    std::for_each(stages.rbegin(), stages.rend(), tell);
  }
  return answers;
}

KPT_FATE_ENUM fate_of(const KPT_KEYPOINTS_DB& all, const KPT_REGISTER_KEYPOINT& start) {
  const KPT_REGISTER_KEYPOINT keypoint = found_in(all.get_reference_set(), start);
  const KPT_REGISTER_TRANSFORMATION map = all.get_reference_register_transformation(keypoint);
  const std::size_t index = map.is_null() ? 0 : place_of(map, KPT_REFERENCE_SET, keypoint).index;
  return map.get_fate(static_cast<unsigned short>(index));
}

JSON json_of(const ANSWER& answer) {
  JSON result;
  result["register"] = name_of(answer.keypoint);
  result["text"] = answer.text;
  result["registers"] = JSON::array();
  for (const STEP& step : answer.next) {
    result["registers"].push_back(
        {{"register", name_of(step.keypoint)}, {"inverted", step.encoded ? JSON(nullptr) : JSON(step.inverted)}});
  }
  return result;
}

JSON json_of(const ANSWERS& answers, const ANSWER& together, KPT_SET_ENUM from, const KPT_KEYPOINTS_DB& all) {
  JSON result = new_result();
  result["register"] = name_of(together.keypoint);
  result["side"] = side_word(from);
  result["steps"] = JSON::array();
  for (const ANSWER& answer : answers) {
    JSON step{{"stage", answer.stage}};
    step.update(json_of(answer));
    result["steps"].push_back(std::move(step));
  }
  result["together"] = json_of(together);
  result["fate"] = from == KPT_REFERENCE_SET ? JSON(fate_word(fate_of(all, together.keypoint))) : JSON(nullptr);
  return result;
}

// A name means a signal, or the only block instance of that name. When there are
// several instances, it means none of them.
KPT_REGISTER_KEYPOINT named(const KPT_KEYPOINT_SET& set, const std::string& name) {
  KPT_REGISTER_KEYPOINT found = set.get_register(name);
  if (!found.is_null()) {
    return found;
  }
  for (const KPT_REGISTER_KEYPOINT& keypoint : set) {
    if (std::string_view(keypoint.get_name()) != name) {
      continue;
    }
    if (!found.is_null()) {
      throw FAILURE(EXIT_FOUND, fmt::format("several block instances are called {}", name));
    }
    found = keypoint;
  }
  return found;
}

}  // namespace

EXIT_CODE run_explain(const EXPLAIN_OPTIONS& options) {
  const STAGES stages(options.files);
  const KPT_SET_ENUM from = options.transformed ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET;
  const DATABASE& first = options.transformed ? stages.databases().back() : stages.databases().front();
  const KPT_REGISTER_KEYPOINT start = named(first.handle().get_set(from), options.name);
  if (start.is_null()) {
    throw FAILURE(EXIT_FOUND, fmt::format("{} is no register of the {} netlist", options.name,
                                          options.transformed ? "last" : "first"));
  }
  const ANSWERS answers = way(stages.databases(), from, start);
  RESULT_FILE out("");
  for (const ANSWER& answer : answers) {
    if (!options.json) {
      out.write(fmt::format("stage {}: {}\n", answer.stage, answer.text));
    }
  }
  KPT_COMPOSITION_REPORT report;
  const DATABASE all = stages.composed({options.share, false}, &report);
  const ANSWER together = answer_of(0, all.handle(), from, {start, false, false});
  if (options.json) {
    out.write(json_text(json_of(answers, together, from, all.handle())) + "\n");
  } else {
    out.write(fmt::format("together: {}\n", together.text));
    if (from == KPT_REFERENCE_SET) {
      out.write(fmt::format("{}: {}\n", name_of(start), kpt_fate_word(fate_of(all.handle(), start))));
    }
  }
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
