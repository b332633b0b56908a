#include "db/kpt/composition/kpt_composition_facts.h"

#include <algorithm>
#include <string_view>

namespace {

// The items of a list in an attribute are separated by commas, the items of notes
// by semicolons.
void add_items(std::string_view list, std::string_view separator, KPT_VECTOR<KPT_STRING>* items) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(separator), list.size());
    KPT_STRING item(list.substr(0, end));
    if (!item.empty() && std::find(items->begin(), items->end(), item) == items->end()) {
      items->push_back(std::move(item));
    }
    list.remove_prefix(std::min(end + separator.size(), list.size()));
  }
}

KPT_STRING joined(const KPT_VECTOR<KPT_STRING>& items, std::string_view separator) {
  KPT_STRING text;
  for (const KPT_STRING& item : items) {
    text += text.empty() ? "" : separator;
    text += item;
  }
  return text;
}

// In order of increasing certainty. A fact without a status counts as claimed.
constexpr std::string_view WORTH[] = {"refuted", "claimed", "proved"};

std::size_t worth_of(std::string_view status) {
  const auto* const found = std::find(std::begin(WORTH), std::end(WORTH), status);
  return found == std::end(WORTH) ? 1 : static_cast<std::size_t>(found - std::begin(WORTH));
}

}  // namespace

KPT_COMPOSITION_FACTS::KPT_COMPOSITION_FACTS(const KPT_NETLISTS::STAGES& stages, const KPT_NETLISTS& netlists,
                                             const KPT_STATEMENTS& statements, KPT_CLASSES& classes) {
  if (!statements.has_attributes()) {
    return;
  }
  for (std::size_t stage = 0; stage < stages.size(); ++stage) {
    for (const KPT_TRANSFORMATION_IMPL* map :
         stages[stage]->get_transformation_set()->get_list_of_register_transformations()) {
      const NODE node = KPT_STATEMENTS::node_of(*map, netlists, stage);
      if (node != KPT_NETLISTS::NONE) {
        m_of_class[classes.find(node).leader].push_back(static_cast<std::uint32_t>(m_facts.size()));
      }
      m_facts.push_back({stage, map, node});
    }
  }
}

const KPT_COMPOSITION_FACTS::NUMBERS& KPT_COMPOSITION_FACTS::of(NODE leader) const {
  static const NUMBERS s_none;
  const auto found = m_of_class.find(leader);
  return found == m_of_class.end() ? s_none : found->second;
}

void KPT_COMPOSITION_FACTS::hand_on(NUMBERS numbers, KPT_TRANSFORMATION_IMPL& map) const {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  struct LIST {
    std::string_view name;
    std::string_view separator;
  };
  for (const auto& [name, separator] : {LIST{"pass", ", "}, LIST{"stage", ", "}, LIST{"note", "; "}}) {
    KPT_VECTOR<KPT_STRING> items;
    for (const std::uint32_t number : numbers) {
      add_items(m_facts[number].map->get_attribute(name), separator, &items);
    }
    if (!items.empty()) {
      map.add_attribute(name, joined(items, separator));
    }
  }
  bool any = false;
  std::size_t worth = std::size(WORTH) - 1;
  for (const std::uint32_t number : numbers) {
    const KPT_STRING status = m_facts[number].map->get_attribute("status");
    any |= !status.empty();
    worth = std::min(worth, worth_of(status));
  }
  if (any) {
    map.add_attribute("status", WORTH[worth]);
  }
}
