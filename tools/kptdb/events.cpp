#include "events.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

#include "db/kpt/kpt_held_text.h"
#include "text.h"

namespace kptdb {

namespace {

using JSON = nlohmann::json;

// A state table counts states and registers in 16 bits.
constexpr std::size_t MOST_STATES = std::numeric_limits<unsigned short>::max();
// An event is an object of lists of lists; anything deeper is no event, however deep it goes on.
constexpr int DEEPEST_EVENT = 4;

[[noreturn]] void refuse(const std::string& text) { throw EVENT_ERROR(text); }

std::string without_exception_tag(std::string_view what) {
  const std::size_t end = what.find("] ");
  return printable(end == std::string_view::npos ? what : what.substr(end + 2));
}

JSON parse_object(std::string_view line) {
  const auto refuse_deep = [](int depth, JSON::parse_event_t, JSON&) {
    if (depth > DEEPEST_EVENT) {
      refuse("not an event: it is nested too deeply");
    }
    return true;
  };
  try {
    JSON object = JSON::parse(line, refuse_deep);
    if (!object.is_object()) {
      refuse("not an event: a JSON object is expected");
    }
    return object;
  } catch (const JSON::exception& problem) {
    refuse("not JSON: " + without_exception_tag(problem.what()));
  }
}

void refuse_other_keys(const JSON& object, std::initializer_list<std::string_view> keys) {
  for (const auto& [key, value] : object.items()) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      refuse(fmt::format("unknown key \"{}\"", printable(key)));
    }
  }
}

const JSON& required(const JSON& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) {
    refuse(fmt::format("\"{}\" is missing", key));
  }
  return *found;
}

std::string text_of(const JSON& value, std::string_view what) {
  if (!value.is_string()) {
    refuse(fmt::format("\"{}\" is not a string", what));
  }
  const auto& text = value.get_ref<const std::string&>();
  if (text.empty()) {
    refuse(fmt::format("\"{}\" is empty", what));
  }
  if (!kpt_file_can_hold(text)) {
    refuse(fmt::format("\"{}\" is \"{}\": a database file holds no control characters", what, printable(text)));
  }
  return text;
}

std::string text_at(const JSON& object, const char* key) { return text_of(required(object, key), key); }

EVENT_REGISTER register_at(const JSON& object, const char* key) {
  const JSON& value = required(object, key);
  if (value.is_string()) {
    return {text_of(value, key), {}};
  }
  if (!value.is_object()) {
    refuse(fmt::format("\"{}\" is neither a name nor a block instance", key));
  }
  refuse_other_keys(value, {"name", "entity", "type"});
  return {text_at(value, "name"), EVENT_REGISTER::INSTANCE{text_at(value, "entity"), text_at(value, "type")}};
}

const JSON& list_at(const JSON& object, const char* key) {
  const JSON& value = required(object, key);
  if (!value.is_array() || value.empty()) {
    refuse(fmt::format("\"{}\" is not a list with entries", key));
  }
  if (value.size() > MOST_STATES) {
    refuse(fmt::format("\"{}\" has {} entries, more than {}", key, value.size(), MOST_STATES));
  }
  return value;
}

std::vector<std::string> names_at(const JSON& object, const char* key) {
  std::vector<std::string> names;
  std::unordered_set<std::string> seen;
  for (const JSON& value : list_at(object, key)) {
    names.push_back(text_of(value, key));
    if (!seen.insert(names.back()).second) {
      refuse(fmt::format("\"{}\" names {} twice", key, names.back()));
    }
  }
  return names;
}

std::string code_of(const JSON& value, std::size_t width, std::string_view side) {
  if (!value.is_string() || value.get_ref<const std::string&>().find_first_not_of("01") != std::string::npos) {
    refuse("a state's code is not a string of 0 and 1");
  }
  const auto& code = value.get_ref<const std::string&>();
  if (code.size() != width) {
    refuse(fmt::format("the code \"{}\" does not fit the {} {} registers", code, width, side));
  }
  return code;
}

EVENT parse_associate(const JSON& object) {
  refuse_other_keys(object, {"event", "reference", "transformed"});
  return ASSOCIATE{register_at(object, "reference"), register_at(object, "transformed")};
}

EVENT parse_associate_fsm(const JSON& object) {
  refuse_other_keys(object, {"event", "reference", "transformed", "states"});
  ASSOCIATE_FSM event{names_at(object, "reference"), names_at(object, "transformed"), {}};
  for (const JSON& state : list_at(object, "states")) {
    if (!state.is_array() || state.size() != 2) {
      refuse("a state is not a pair of codes");
    }
    event.states.emplace_back(code_of(state[0], event.reference.size(), "reference"),
                              code_of(state[1], event.transformed.size(), "transformed"));
  }
  return event;
}

EVENT parse_replicate(const JSON& object) {
  refuse_other_keys(object, {"event", "register", "replica"});
  return REPLICATE{text_at(object, "register"), text_at(object, "replica")};
}

EVENT parse_merge(const JSON& object) {
  refuse_other_keys(object, {"event", "kept", "merged"});
  return MERGE{text_at(object, "kept"), text_at(object, "merged")};
}

EVENT parse_retime_inverter(const JSON& object) {
  refuse_other_keys(object, {"event", "register"});
  return RETIME_INVERTER{text_at(object, "register")};
}

EVENT parse_eliminate(const JSON& object) {
  refuse_other_keys(object, {"event", "register", "reason"});
  const std::string word = text_at(object, "reason");
  const KPT_ELIM_ENUM reason = kpt_elim_status(word);
  if (reason == KPT_NOT_ELIMINATED) {
    refuse(fmt::format("unknown reason \"{}\"", word));
  }
  return ELIMINATE{text_at(object, "register"), reason};
}

std::string in_words(const ASSOCIATE& e) {
  return fmt::format("associate {} with {}", describe(e.reference), describe(e.transformed));
}
std::string in_words(const ASSOCIATE_FSM& e) {
  return fmt::format("associate state machine {} with {}", fmt::join(e.reference, ", "),
                     fmt::join(e.transformed, ", "));
}
std::string in_words(const REPLICATE& e) { return fmt::format("replicate {} as {}", e.name, e.replica); }
std::string in_words(const MERGE& e) { return fmt::format("merge {} into {}", e.merged, e.kept); }
std::string in_words(const RETIME_INVERTER& e) { return fmt::format("retime an inverter through {}", e.name); }
std::string in_words(const ELIMINATE& e) { return fmt::format("eliminate {} ({})", e.name, kpt_elim_word(e.reason)); }

using PARSE = EVENT (*)(const JSON&);
constexpr std::array<std::pair<std::string_view, PARSE>, 6> PARSERS{{{"associate", parse_associate},
                                                                     {"associate_fsm", parse_associate_fsm},
                                                                     {"replicate", parse_replicate},
                                                                     {"merge", parse_merge},
                                                                     {"retime_inverter", parse_retime_inverter},
                                                                     {"eliminate", parse_eliminate}}};

}  // namespace

EVENT parse_event(std::string_view line) {
  const JSON object = parse_object(line);
  const std::string word = text_at(object, "event");
  const auto parser = std::find_if(PARSERS.begin(), PARSERS.end(), [&](const auto& p) { return p.first == word; });
  if (parser == PARSERS.end()) {
    refuse(fmt::format("unknown event \"{}\"", word));
  }
  return parser->second(object);
}

std::string describe(const EVENT_REGISTER& reg) {
  return reg.instance ? fmt::format("{} ({}, {})", reg.name, reg.instance->entity, reg.instance->type) : reg.name;
}

std::string describe(const EVENT& event) {
  constexpr std::size_t LONGEST = 160;
  std::string text = std::visit([](const auto& e) { return in_words(e); }, event);
  if (text.size() > LONGEST) {
    text.resize(LONGEST);
    text += "...";
  }
  return text;
}

}  // namespace kptdb
