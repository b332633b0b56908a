#include "events.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

#include "text.h"

namespace kptdb {

namespace {

using JSON = nlohmann::json;

// A state table counts states and registers with 16 bits.
constexpr std::size_t MOST_STATES = std::numeric_limits<unsigned short>::max();
// An event is an object with lists of lists. Anything deeper is not an event.
constexpr int DEEPEST_EVENT = 5;

[[noreturn]] void refuse(const std::string& text) { throw EVENT_ERROR(text); }

std::string without_exception_tag(std::string_view what) {
  const std::size_t end = what.find("] ");
  return printable(end == std::string_view::npos ? what : what.substr(end + 2));
}

// The parser would keep the last of two values of one key.
class KEYS {
 public:
  void check(JSON::parse_event_t event, const JSON& parsed) {
    if (event == JSON::parse_event_t::object_start) {
      m_open.emplace_back();
    } else if (event == JSON::parse_event_t::object_end) {
      m_open.pop_back();
    } else if (event == JSON::parse_event_t::key && !m_open.back().insert(parsed.get<std::string>()).second) {
      refuse(fmt::format("the key \"{}\" occurs twice", printable(parsed.get<std::string>())));
    }
  }

 private:
  std::vector<std::unordered_set<std::string>> m_open;
};

JSON parse_object(std::string_view line) {
  KEYS keys;
  const auto check = [&](int depth, JSON::parse_event_t event, JSON& parsed) {
    if (depth > DEEPEST_EVENT) {
      refuse("not an event: it is nested too deeply");
    }
    keys.check(event, parsed);
    return true;
  };
  try {
    JSON object = JSON::parse(line, check);
    if (!object.is_object()) {
      refuse("not an event: a JSON object is expected");
    }
    return object;
  } catch (const JSON::exception& problem) {
    refuse("not JSON: " + without_exception_tag(problem.what()));
  }
}

// Every event may name its pass, and have a note for people.
constexpr std::string_view REMARKS[] = {"event", "pass", "note"};

void refuse_other_keys(const JSON& object, std::initializer_list<std::string_view> keys, bool is_event = true) {
  for (const auto& [key, value] : object.items()) {
    const bool is_remark = is_event && std::find(std::begin(REMARKS), std::end(REMARKS), key) != std::end(REMARKS);
    if (!is_remark && std::find(keys.begin(), keys.end(), key) == keys.end()) {
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

EVENT_REGISTER register_of(const JSON& value, std::string_view what) {
  if (value.is_string()) {
    return {text_of(value, what), {}};
  }
  if (!value.is_object()) {
    refuse(fmt::format("\"{}\" is neither a name nor a block instance", what));
  }
  refuse_other_keys(value, {"name", "entity", "type"}, false);
  return {text_at(value, "name"), EVENT_REGISTER::INSTANCE{text_at(value, "entity"), text_at(value, "type")}};
}

EVENT_REGISTER register_at(const JSON& object, const char* key) { return register_of(required(object, key), key); }

const JSON& list_at(const JSON& object, const char* key, bool may_be_empty = false) {
  const JSON& value = required(object, key);
  if (!value.is_array() || (value.empty() && !may_be_empty)) {
    refuse(fmt::format("\"{}\" is not a list{}", key, may_be_empty ? "" : " with entries"));
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

std::vector<std::pair<std::string, std::string>> states_at(const JSON& object, std::size_t reference,
                                                           std::size_t transformed, bool may_be_empty) {
  std::vector<std::pair<std::string, std::string>> states;
  for (const JSON& state : list_at(object, "states", may_be_empty)) {
    if (!state.is_array() || state.size() != 2) {
      refuse("a state is not a pair of codes");
    }
    states.emplace_back(code_of(state[0], reference, "reference"), code_of(state[1], transformed, "transformed"));
  }
  return states;
}

using WHAT = decltype(EVENT::what);

WHAT parse_associate(const JSON& object) {
  refuse_other_keys(object, {"reference", "transformed"});
  return ASSOCIATE{register_at(object, "reference"), register_at(object, "transformed")};
}

WHAT parse_associate_fsm(const JSON& object) {
  refuse_other_keys(object, {"reference", "transformed", "states"});
  ASSOCIATE_FSM event{names_at(object, "reference"), names_at(object, "transformed"), {}};
  event.states = states_at(object, event.reference.size(), event.transformed.size(), false);
  return event;
}

WHAT parse_replicate(const JSON& object) {
  refuse_other_keys(object, {"register", "replica"});
  return REPLICATE{text_at(object, "register"), text_at(object, "replica")};
}

WHAT parse_merge(const JSON& object) {
  refuse_other_keys(object, {"kept", "merged"});
  return MERGE{text_at(object, "kept"), text_at(object, "merged")};
}

WHAT parse_retime_inverter(const JSON& object) {
  refuse_other_keys(object, {"register"});
  return RETIME_INVERTER{text_at(object, "register")};
}

// A reason for the reference register, or the transformed register's own value.
WHAT parse_eliminate(const JSON& object) {
  refuse_other_keys(object, {"register", "reason", "value"});
  const auto value = object.find("value");
  if (value != object.end()) {
    if (object.contains("reason")) {
      refuse("\"reason\" and \"value\" exclude each other");
    }
    if (!value->is_number_integer() || (*value != 0 && *value != 1)) {
      refuse("\"value\" is neither 0 nor 1");
    }
    return ELIMINATE{text_at(object, "register"), *value == 1 ? KPT_STUCK_AT_ONE : KPT_STUCK_AT_ZERO, *value == 1};
  }
  const std::string word = text_at(object, "reason");
  const KPT_ELIM_ENUM reason = kpt_elim_status(word);
  if (reason == KPT_NOT_ELIMINATED) {
    refuse(fmt::format("unknown reason \"{}\"", word));
  }
  return ELIMINATE{text_at(object, "register"), reason, {}};
}

// ---- Maps of any shape ----

EVENT_GROUPS::GROUP group_at(const JSON& object, const char* key) {
  EVENT_GROUPS::GROUP group;
  if (object.contains(key)) {
    for (const JSON& value : list_at(object, key, true)) {
      group.push_back(register_of(value, key));
    }
  }
  return group;
}

std::vector<EVENT_GROUPS> side_at(const JSON& object, const char* key) {
  std::vector<EVENT_GROUPS> side;
  for (const JSON& value : list_at(object, key, true)) {
    if (!value.is_object()) {
      refuse(fmt::format("an index of \"{}\" is not an object", key));
    }
    refuse_other_keys(value, {"same", "inverse"}, false);
    side.push_back({group_at(value, "same"), group_at(value, "inverse")});
  }
  return side;
}

// The number of columns of each side, when the indices do not give it.
void read_columns(const JSON& object, MAP::TABLE* table) {
  const JSON& columns = required(object, "columns");
  const auto is_count = [](const JSON& value) {
    return value.is_number_unsigned() && value.get<std::uint64_t>() <= MOST_STATES;
  };
  if (!columns.is_array() || columns.size() != 2 || !is_count(columns[0]) || !is_count(columns[1])) {
    refuse(fmt::format("\"columns\" is not a pair of numbers up to {}", MOST_STATES));
  }
  table->reference = columns[0].get<std::size_t>();
  table->transformed = columns[1].get<std::size_t>();
}

MAP::TABLE table_of(const JSON& object, const MAP& map) {
  MAP::TABLE table{map.reference.size(), map.transformed.size(), {}};
  if (object.contains("columns")) {
    read_columns(object, &table);
  }
  table.states = states_at(object, table.reference, table.transformed, map.as_it_is);
  return table;
}

ATTRIBUTES attributes_at(const JSON& object) {
  ATTRIBUTES attributes;
  const auto found = object.find("attributes");
  if (found == object.end()) {
    return attributes;
  }
  if (!found->is_object()) {
    refuse("\"attributes\" is not an object of texts");
  }
  for (const auto& [name, value] : found->items()) {
    attributes.emplace_back(text_of(JSON(name), "attributes"), text_of(value, name));
  }
  return attributes;
}

bool flag_at(const JSON& object, const char* key) {
  const auto found = object.find(key);
  if (found != object.end() && !found->is_boolean()) {
    refuse(fmt::format("\"{}\" is neither true nor false", key));
  }
  return found != object.end() && found->get<bool>();
}

WHAT parse_map(const JSON& object) {
  refuse_other_keys(object, {"reference", "transformed", "states", "columns", "status", "attributes", "as_it_is"});
  MAP map;
  map.as_it_is = flag_at(object, "as_it_is");
  map.reference = side_at(object, "reference");
  map.transformed = side_at(object, "transformed");
  if (object.contains("states")) {
    map.table = table_of(object, map);
  }
  if (object.contains("columns") && (!map.as_it_is || !map.table)) {
    refuse("\"columns\" stands beside \"states\" of a map as it is");
  }
  if (object.contains("status")) {
    const std::string word = text_at(object, "status");
    map.status = kpt_elim_status(word);
    if (map.status == KPT_NOT_ELIMINATED) {
      refuse(fmt::format("unknown status \"{}\"", word));
    }
  }
  map.attributes = attributes_at(object);
  return map;
}

WHAT parse_register(const JSON& object) {
  refuse_other_keys(object, {"side", "register", "attributes"});
  const std::string side = text_at(object, "side");
  if (side != "reference" && side != "transformed") {
    refuse(fmt::format("unknown side \"{}\"", side));
  }
  return KNOWN_REGISTER{side == "reference" ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET, register_at(object, "register"),
                        attributes_at(object)};
}

WHAT parse_end(const JSON& object) {
  refuse_other_keys(object, {"event", "events"}, false);
  const JSON& events = required(object, "events");
  if (!events.is_number_unsigned()) {
    refuse("\"events\" is not a number of events");
  }
  return END{events.get<std::uint64_t>()};
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
std::string in_words(const ELIMINATE& e) {
  return e.value ? fmt::format("eliminate {} (its value is {})", e.name, *e.value ? 1 : 0)
                 : fmt::format("eliminate {} ({})", e.name, kpt_elim_word(e.reason));
}

std::string in_words(const std::vector<EVENT_GROUPS>& side) {
  std::string text;
  for (const EVENT_GROUPS& groups : side) {
    for (const EVENT_GROUPS::GROUP& group : {groups.same, groups.inverse}) {
      for (const EVENT_REGISTER& reg : group) {
        text += (text.empty() ? "" : ", ") + describe(reg);
      }
    }
  }
  return text.empty() ? "nothing" : text;
}
std::string in_words(const MAP& e) {
  return fmt::format("map {} to {}", in_words(e.reference), in_words(e.transformed));
}
std::string in_words(const KNOWN_REGISTER& e) {
  return fmt::format("{} register {}", e.side == KPT_REFERENCE_SET ? "reference" : "transformed", describe(e.reg));
}
std::string in_words(const END& e) { return fmt::format("end of {} events", e.events); }

void add_remarks_as_attributes(const EVENT& event, MAP& map) {
  if (!event.pass.empty()) {
    map.attributes.emplace_back("pass", event.pass);
  }
  if (!event.note.empty()) {
    map.attributes.emplace_back("note", event.note);
  }
}

using PARSE = WHAT (*)(const JSON&);
constexpr std::array<std::pair<std::string_view, PARSE>, 9> PARSERS{{{"associate", parse_associate},
                                                                     {"associate_fsm", parse_associate_fsm},
                                                                     {"replicate", parse_replicate},
                                                                     {"merge", parse_merge},
                                                                     {"retime_inverter", parse_retime_inverter},
                                                                     {"eliminate", parse_eliminate},
                                                                     {"map", parse_map},
                                                                     {"register", parse_register},
                                                                     {"end", parse_end}}};

}  // namespace

EVENT parse_event(std::string_view line) {
  const JSON object = parse_object(line);
  const std::string word = text_at(object, "event");
  const auto parser = std::find_if(PARSERS.begin(), PARSERS.end(), [&](const auto& p) { return p.first == word; });
  if (parser == PARSERS.end()) {
    refuse(fmt::format("unknown event \"{}\"", word));
  }
  const auto remark = [&](const char* key) { return object.contains(key) ? text_at(object, key) : std::string(); };
  EVENT event{parser->second(object), remark("pass"), remark("note")};
  if (MAP* const map = std::get_if<MAP>(&event.what)) {
    add_remarks_as_attributes(event, *map);
  }
  return event;
}

std::string describe(const EVENT_REGISTER& reg) {
  return reg.instance ? fmt::format("{} ({}, {})", reg.name, reg.instance->entity, reg.instance->type) : reg.name;
}

std::string describe(const EVENT& event) {
  constexpr std::size_t LONGEST = 160;
  std::string text = std::visit([](const auto& e) { return in_words(e); }, event.what);
  if (text.size() > LONGEST) {
    text.resize(LONGEST);
    text += "...";
  }
  return text;
}

}  // namespace kptdb
