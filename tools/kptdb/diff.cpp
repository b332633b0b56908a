// diff: the differences of what two databases say about registers.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <unordered_map>

#include "colour.h"
#include "commands.h"
#include "diff.h"
#include "fates.h"
#include "files.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

// Separates texts that are joined. No name contains it.
constexpr char SEPARATOR = '\x01';

std::string text_of(const KPT_REGISTER_KEYPOINT& reg) {
  if (reg.is_null()) {
    return "?";
  }
  std::string text(std::string_view(reg.get_name()));
  for (const KPT_STRING* part : {&reg.get_entity_name(), &reg.get_type()}) {
    text += SEPARATOR;
    text += std::string_view(*part);
  }
  return text;
}

std::string text_of(const KPT_REGISTER_GROUP& group) {
  std::vector<std::string> names;
  std::transform(group.begin(), group.end(), std::back_inserter(names),
                 [](const KPT_REGISTER_KEYPOINT& k) { return text_of(k); });
  std::sort(names.begin(), names.end());
  return fmt::format("[{}]", fmt::join(names, "\x02"));
}

// An index: the group with its value comes first, or the other group when it is swapped.
std::string text_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index, bool swapped) {
  return text_of(map.get_group(side, index, swapped)) + text_of(map.get_group(side, index, !swapped));
}

// The order of a side's indices is not a fact, so they are sorted by their texts.
std::vector<std::size_t> order_of(const std::vector<std::string>& texts) {
  std::vector<std::size_t> order(texts.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return texts[a] < texts[b]; });
  return order;
}

std::string in_order(const std::string& code, const std::vector<std::size_t>& order) {
  if (code.size() != order.size()) {
    return code;
  }
  std::string result;
  for (const std::size_t k : order) {
    result += code[k];
  }
  return result;
}

struct SIDE_TEXT {
  std::vector<std::size_t> order;
  std::string text;
};

SIDE_TEXT side_text(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, bool swapped) {
  std::vector<std::string> texts;
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < count; ++index) {
    texts.push_back(text_of(map, side, index, swapped));
  }
  SIDE_TEXT result{order_of(texts), {}};
  std::sort(texts.begin(), texts.end());
  result.text = fmt::format("{}", fmt::join(texts, "\x03"));
  return result;
}

// The states, sorted and each once, with the columns in the order of their side.
std::string states_text(const KPT_STATE_TABLE& table, const SIDE_TEXT& r, const SIDE_TEXT& t) {
  std::vector<std::string> states;
  for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
    states.push_back(in_order(code_of(table, KPT_REFERENCE_SET, s), r.order) + ":" +
                     in_order(code_of(table, KPT_TRANSFORMED_SET, s), t.order));
  }
  std::sort(states.begin(), states.end());
  states.erase(std::unique(states.begin(), states.end()), states.end());
  return fmt::format("{}", fmt::join(states, " "));
}

std::string oriented_text(const KPT_REGISTER_TRANSFORMATION& map, bool swapped) {
  const SIDE_TEXT r = side_text(map, KPT_REFERENCE_SET, swapped);
  const SIDE_TEXT t = side_text(map, KPT_TRANSFORMED_SET, swapped);
  std::string text = fmt::format("{} {} {}", reason_word(map), r.text, t.text);
  if (map.has_fsm()) {
    text += " fsm " + states_text(map.get_state_table(), r, t);
  }
  return text;
}

// Equal for maps that say the same. A plain map says the same when the groups of both sides are swapped.
std::string fact_of(const KPT_REGISTER_TRANSFORMATION& map) {
  const std::string text = oriented_text(map, false);
  return map.has_fsm() ? text : std::min(text, oriented_text(map, true));
}

// Whether two groups of at most one register each have the same names. Several
// registers may be in any order.
enum ANSWER { SAME, OTHER, NOT_PLAIN };

ANSWER compare(const KPT_REGISTER_KEYPOINT& a, const KPT_REGISTER_KEYPOINT& b) {
  if (a.is_null() || b.is_null()) {
    return a.is_null() == b.is_null() ? SAME : OTHER;
  }
  return a.get_name() == b.get_name() && a.get_entity_name() == b.get_entity_name() && a.get_type() == b.get_type()
             ? SAME
             : OTHER;
}

// Most maps list one register on each side, with the same value, and need no text.
ANSWER compare_plain(const KPT_REGISTER_TRANSFORMATION& a, const KPT_REGISTER_TRANSFORMATION& b) {
  if (a.has_fsm() || b.has_fsm() || a.get_elimination() != b.get_elimination()) {
    return NOT_PLAIN;
  }
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for (const KPT_REGISTER_TRANSFORMATION* map : {&a, &b}) {
      if (map->get_number_of_indices(side) != 1 || map->get_group(side, 0, false).size() != 1 ||
          !map->get_group(side, 0, true).empty()) {
        return NOT_PLAIN;
      }
    }
    if (compare(a.get_group(side, 0, false)[0], b.get_group(side, 0, false)[0]) == OTHER) {
      return OTHER;
    }
  }
  return SAME;
}

// The facts of maps as texts. Each text is made once.
class FACT_TEXTS {
 public:
  const std::string& of(const KPT_REGISTER_TRANSFORMATION& map) {
    std::string& fact = m_facts[map];
    if (fact.empty()) {
      fact = fact_of(map);
    }
    return fact;
  }

 private:
  std::unordered_map<KPT_REGISTER_TRANSFORMATION, std::string> m_facts;
};

// A register about which the databases differ, or that only one of them has.
struct DIFFERENCE {
  std::optional<REGISTER> first;
  std::optional<REGISTER> second;
  const REGISTER& reg() const { return first ? *first : *second; }
};

// The same register in the other database, if there is one.
std::optional<REGISTER> counterpart(const DATABASE& db, const REGISTER& reg) {
  const KPT_REGISTER_KEYPOINT& k = reg.keypoint;
  const KPT_KEYPOINT_SET set = db.registers(reg.side);
  const KPT_REGISTER_KEYPOINT found = k.is_signal() ? set.get_register(k.get_name())
                                                    : set.get_register(k.get_name(), k.get_entity_name(), k.get_type());
  if (found.is_null() || found.get_entity_name() != k.get_entity_name()) {
    return std::nullopt;
  }
  return REGISTER{reg.side, found, map_of(db, reg.side, found)};
}

bool say_the_same(const REGISTER& a, const REGISTER& b, FACT_TEXTS& texts) {
  if (a.map.is_null() || b.map.is_null()) {
    return a.map.is_null() == b.map.is_null();
  }
  const ANSWER answer = compare_plain(a.map, b.map);
  return answer == NOT_PLAIN ? texts.of(a.map) == texts.of(b.map) : answer == SAME;
}

std::string key_of(const DIFFERENCE& difference) {
  const REGISTER& reg = difference.reg();
  return std::to_string(reg.side) + std::string(register_kind_word(reg.keypoint)) + SEPARATOR + text_of(reg.keypoint);
}

void sort_by_register(std::vector<DIFFERENCE>& differences) {
  std::vector<std::pair<std::string, std::size_t>> order;
  for (std::size_t k = 0; k < differences.size(); ++k) {
    order.emplace_back(key_of(differences[k]), k);
  }
  std::sort(order.begin(), order.end());
  std::vector<DIFFERENCE> sorted;
  sorted.reserve(differences.size());
  for (const auto& [key, k] : order) {
    sorted.push_back(differences[k]);
  }
  differences.swap(sorted);
}

std::size_t size_of(const DATABASE& db) {
  return db.registers(KPT_REFERENCE_SET).size() + db.registers(KPT_TRANSFORMED_SET).size();
}

// Makes no list of all registers: each is looked up in the other database.
std::vector<DIFFERENCE> differences(const DATABASE& first, const DATABASE& second) {
  std::vector<DIFFERENCE> result;
  FACT_TEXTS texts;
  PROGRESS progress("comparing", size_of(first) + size_of(second), PROGRESS::REGISTERS);
  std::size_t done = 0;
  for_each_register(first, [&](const REGISTER& reg) {
    progress.at(++done);
    const std::optional<REGISTER> other = counterpart(second, reg);
    if (!other || !say_the_same(reg, *other, texts)) {
      result.push_back({reg, other});
    }
  });
  for_each_register(second, [&](const REGISTER& reg) {
    progress.at(++done);
    if (!counterpart(first, reg)) {
      result.push_back({std::nullopt, reg});
    }
  });
  sort_by_register(result);
  return result;
}

// A short text of the register's map, with "~" before a register of the inverse value.
std::string in_short(const REGISTER& reg) {
  if (reg.map.is_null()) {
    return "no map";
  }
  const bool inverting = place_of(reg.map, reg.side, reg.keypoint).inverting;
  std::vector<std::string> names;
  for_each_place(reg.map, other_side(reg.side), [&](std::size_t, bool inverse, const KPT_REGISTER_KEYPOINT& other) {
    names.push_back(fmt::format("{}{}", inverse != inverting ? "~" : "", label(other)));
  });
  std::string text(reason_word(reg.map).empty() ? kind_word(kind_of(reg.map)) : fate_text(FATES().of(reg)));
  return names.empty() ? text : fmt::format("{} with {}", text, fmt::join(names, ", "));
}

std::string text_of(const DIFFERENCE& d) {
  const REGISTER& reg = d.reg();
  const std::string who = fmt::format("{} register {}", side_word(reg.side), label(reg.keypoint));
  if (!d.second) {
    return painted(fmt::format("- {}: {}", who, in_short(reg)), RED) + "\n";
  }
  if (!d.first) {
    return painted(fmt::format("+ {}: {}", who, in_short(reg)), GREEN) + "\n";
  }
  const std::string before = in_short(*d.first);
  const std::string after = in_short(*d.second);
  const std::string change = before == after ? before + ", with other relatives or another state table"
                                             : fmt::format("{} -> {}", before, after);
  return painted(fmt::format("~ {}: {}", who, change), YELLOW) + "\n";
}

JSON json_of_map(const std::optional<REGISTER>& reg) {
  return !reg || reg->map.is_null() ? JSON(nullptr) : kptdb::json_of(reg->map);
}

JSON json_of(const DIFFERENCE& d) {
  const REGISTER& reg = d.reg();
  JSON result;
  result["difference"] = !d.first ? "only_in_second" : !d.second ? "only_in_first" : "changed";
  result["side"] = side_word(reg.side);
  result["register"] = kptdb::json_of(reg.keypoint);
  result["first"] = json_of_map(d.first);
  result["second"] = json_of_map(d.second);
  return result;
}

}  // namespace

std::vector<CHANGE> changes_between(const DATABASE& first, const DATABASE& second) {
  const auto said = [](const std::optional<REGISTER>& reg) { return !reg ? "no such register" : in_short(*reg); };
  std::vector<CHANGE> result;
  for (const DIFFERENCE& d : differences(first, second)) {
    const REGISTER& reg = d.reg();
    const std::string text = text_of(reg.keypoint);
    result.push_back({reg.side, text.substr(0, text.find(SEPARATOR)), said(d.first), said(d.second)});
    if (result.back().first == result.back().second) {
      result.back().second += ", with other relatives or another state table";
    }
  }
  return result;
}

EXIT_CODE run_diff(const DIFF_OPTIONS& options) {
  const DATABASE first = DATABASE::load(options.first);
  const DATABASE second = DATABASE::load(options.second);
  const std::vector<DIFFERENCE> found = differences(first, second);
  RESULT_FILE out("");
  if (options.json) {
    JSON list = JSON::array();
    for (const DIFFERENCE& d : found) {
      list.push_back(json_of(d));
    }
    JSON result = new_result();
    result["differences"] = std::move(list);
    out.write(json_text(result) + "\n");
  } else {
    for (const DIFFERENCE& d : found) {
      out.write(text_of(d));
    }
  }
  out.finish();
  return found.empty() ? EXIT_DONE : EXIT_FOUND;
}

}  // namespace kptdb
