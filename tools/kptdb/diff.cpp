// diff: what two databases say differently about a register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>

#include "commands.h"
#include "files.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// Texts are put together with this between them: no name holds it.
constexpr char SEPARATOR = '\x01';

std::string text_of(const KPT_KEYPOINT* keypoint) {
  const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(keypoint);
  if (reg == nullptr) {
    return "?";
  }
  std::string text(std::string_view(reg->get_element_name()));
  for (const KPT_STRING* part : {&reg->get_entity_name(), &reg->get_register_type()}) {
    text += SEPARATOR;
    text += std::string_view(*part);
  }
  return text;
}

std::string text_of(const KPT_KEYPOINT_LIST& group) {
  std::vector<std::string> names;
  std::transform(group.begin(), group.end(), std::back_inserter(names),
                 [](const KPT_KEYPOINT* k) { return text_of(k); });
  std::sort(names.begin(), names.end());
  return fmt::format("[{}]", fmt::join(names, "\x02"));
}

std::string text_of(const NI_PAIR& pair, bool swapped) {
  return swapped ? text_of(pair.second) + text_of(pair.first) : text_of(pair.first) + text_of(pair.second);
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

SIDE_TEXT side_text(const NI_PAIR_VECTOR& side, bool swapped) {
  std::vector<std::string> texts;
  for (const NI_PAIR& pair : side) {
    texts.push_back(text_of(pair, swapped));
  }
  SIDE_TEXT result{order_of(texts), {}};
  std::sort(texts.begin(), texts.end());
  result.text = fmt::format("{}", fmt::join(texts, "\x03"));
  return result;
}

// The states in any order, each once, with the columns in the order of their side.
std::string states_text(const KPT_STATE_TABLE_IMPL& table, const SIDE_TEXT& r, const SIDE_TEXT& t) {
  std::vector<std::string> states;
  for (unsigned s = 0; s < table.get_num_states(); ++s) {
    states.push_back(in_order(code_of(table, KPT_REFERENCE_SET, s), r.order) + ":" +
                     in_order(code_of(table, KPT_TRANSFORMED_SET, s), t.order));
  }
  std::sort(states.begin(), states.end());
  states.erase(std::unique(states.begin(), states.end()), states.end());
  return fmt::format("{}", fmt::join(states, " "));
}

std::string oriented_text(const KPT_TRANSFORMATION_IMPL& map, bool swapped) {
  const SIDE_TEXT r = side_text(map.r_vec(), swapped);
  const SIDE_TEXT t = side_text(map.t_vec(), swapped);
  std::string text = fmt::format("{} {} {}", reason_word(map), r.text, t.text);
  if (map.map_has_fsm_transformation()) {
    text += " fsm " + states_text(map.state_table(), r, t);
  }
  return text;
}

// Equal for maps that say the same. A plain map with the groups of both sides exchanged does.
std::string fact_of(const KPT_TRANSFORMATION_IMPL& map) {
  const std::string text = oriented_text(map, false);
  return map.map_has_fsm_transformation() ? text : std::min(text, oriented_text(map, true));
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
      fact = reg.map == nullptr ? "none" : fact_of(*reg.map);
    }
    return fact;
  }

 private:
  static std::string key(const REGISTER& reg) {
    const std::string kind = reg.keypoint->register_is_signal() ? "signal" : "instance";
    return std::to_string(reg.side) + kind + SEPARATOR + text_of(reg.keypoint);
  }

  std::map<std::string, REGISTER> m_registers;
  std::unordered_map<const KPT_TRANSFORMATION_IMPL*, std::string> m_facts;
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
  if (reg.map == nullptr) {
    return "no map";
  }
  const bool inverting = place_of(*reg.map, reg.side, reg.keypoint).inverting;
  std::vector<std::string> names;
  const auto add = [&](const KPT_KEYPOINT_LIST& group, bool inverse) {
    for (const KPT_KEYPOINT* k : group) {
      names.push_back(fmt::format("{}{}", inverse ? "~" : "", label(k)));
    }
  };
  for (const NI_PAIR& pair : side_of(*reg.map, other_side(reg.side))) {
    add(pair.first, inverting);
    add(pair.second, !inverting);
  }
  std::string text(kind_word(kind_of(*reg.map)));
  text += reason_word(*reg.map).empty() ? "" : fmt::format(" {}", reason_word(*reg.map));
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
  return reg == nullptr || reg->map == nullptr ? JSON(nullptr) : kptdb::json_of(*reg->map);
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
