// diff: what two databases say differently about a register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>

#include "commands.h"
#include "diff.h"
#include "files.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// Texts are put together with this between them: no name holds it.
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

// An index: the group with its value first, or where it is swapped the other.
std::string text_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index, bool swapped) {
  return text_of(map.get_group(side, index, swapped)) + text_of(map.get_group(side, index, !swapped));
}

// The order of a side's indices is no fact: they are taken in the order of their texts.
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

// The states in any order, each once, with the columns in the order of their side.
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

// Equal for maps that say the same. A plain map with the groups of both sides exchanged does.
std::string fact_of(const KPT_REGISTER_TRANSFORMATION& map) {
  const std::string text = oriented_text(map, false);
  return map.has_fsm() ? text : std::min(text, oriented_text(map, true));
}

// The facts of one database, each map's made once.
class FACTS {
 public:
  explicit FACTS(const DATABASE& db) {
    for (const REGISTER& reg : registers_of(db)) {
      m_registers.emplace(key(reg), reg);
    }
  }

  const std::map<std::string, REGISTER>& registers() const { return m_registers; }

  const std::string& fact(const REGISTER& reg) {
    std::string& fact = m_facts[reg.map];
    if (fact.empty()) {
      fact = reg.map.is_null() ? "none" : fact_of(reg.map);
    }
    return fact;
  }

 private:
  static std::string key(const REGISTER& reg) {
    return std::to_string(reg.side) + std::string(register_kind_word(reg.keypoint)) + SEPARATOR + text_of(reg.keypoint);
  }

  std::map<std::string, REGISTER> m_registers;
  std::unordered_map<KPT_REGISTER_TRANSFORMATION, std::string> m_facts;
};

// A register that one database has differently, or not at all.
struct DIFFERENCE {
  const REGISTER* first;
  const REGISTER* second;
};

std::vector<DIFFERENCE> differences(FACTS& first, FACTS& second) {
  std::vector<DIFFERENCE> result;
  auto a = first.registers().begin();
  auto b = second.registers().begin();
  const auto a_end = first.registers().end();
  const auto b_end = second.registers().end();
  while (a != a_end || b != b_end) {
    if (b == b_end || (a != a_end && a->first < b->first)) {
      result.push_back({&a->second, nullptr});
      ++a;
    } else if (a == a_end || b->first < a->first) {
      result.push_back({nullptr, &b->second});
      ++b;
    } else {
      if (first.fact(a->second) != second.fact(b->second)) {
        result.push_back({&a->second, &b->second});
      }
      ++a;
      ++b;
    }
  }
  return result;
}

// What the register's map says, briefly; "~" stands before a register of the inverse value.
std::string in_short(const REGISTER& reg) {
  if (reg.map.is_null()) {
    return "no map";
  }
  const bool inverting = place_of(reg.map, reg.side, reg.keypoint).inverting;
  std::vector<std::string> names;
  for_each_place(reg.map, other_side(reg.side), [&](std::size_t, bool inverse, const KPT_REGISTER_KEYPOINT& other) {
    names.push_back(fmt::format("{}{}", inverse != inverting ? "~" : "", label(other)));
  });
  std::string text(kind_word(kind_of(reg.map)));
  text += reason_word(reg.map).empty() ? "" : fmt::format(" {}", reason_word(reg.map));
  return names.empty() ? text : fmt::format("{} with {}", text, fmt::join(names, ", "));
}

std::string text_of(const DIFFERENCE& d) {
  const REGISTER& reg = d.first == nullptr ? *d.second : *d.first;
  const std::string who = fmt::format("{} register {}", side_word(reg.side), label(reg.keypoint));
  if (d.second == nullptr) {
    return fmt::format("- {}: {}\n", who, in_short(reg));
  }
  if (d.first == nullptr) {
    return fmt::format("+ {}: {}\n", who, in_short(reg));
  }
  const std::string before = in_short(*d.first);
  const std::string after = in_short(*d.second);
  return before == after ? fmt::format("~ {}: {}, with other relatives or another state table\n", who, before)
                         : fmt::format("~ {}: {} -> {}\n", who, before, after);
}

JSON json_of_map(const REGISTER* reg) {
  return reg == nullptr || reg->map.is_null() ? JSON(nullptr) : kptdb::json_of(reg->map);
}

JSON json_of(const DIFFERENCE& d) {
  const REGISTER& reg = d.first == nullptr ? *d.second : *d.first;
  JSON result;
  result["difference"] = d.first == nullptr ? "only_in_second" : d.second == nullptr ? "only_in_first" : "changed";
  result["side"] = side_word(reg.side);
  result["register"] = kptdb::json_of(reg.keypoint);
  result["first"] = json_of_map(d.first);
  result["second"] = json_of_map(d.second);
  return result;
}

}  // namespace

std::vector<CHANGE> changes_between(const DATABASE& first, const DATABASE& second) {
  const auto said = [](const REGISTER* reg) { return reg == nullptr ? "no such register" : in_short(*reg); };
  FACTS a(first);
  FACTS b(second);
  std::vector<CHANGE> result;
  for (const DIFFERENCE& d : differences(a, b)) {
    const REGISTER& reg = d.first == nullptr ? *d.second : *d.first;
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
  FACTS a(first);
  FACTS b(second);
  const std::vector<DIFFERENCE> found = differences(a, b);
  RESULT_FILE out("");
  if (options.json) {
    JSON list = JSON::array();
    for (const DIFFERENCE& d : found) {
      list.push_back(json_of(d));
    }
    out.write(json_text(JSON{{"differences", std::move(list)}}) + "\n");
  } else {
    for (const DIFFERENCE& d : found) {
      out.write(text_of(d));
    }
  }
  out.finish();
  return found.empty() ? EXIT_DONE : EXIT_FOUND;
}

}  // namespace kptdb
