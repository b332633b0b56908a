#include "findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace kptdb {

namespace {

constexpr std::size_t MOST_FINDINGS = 1000;
constexpr unsigned MOST_COUNTED_COLUMNS = 20;

std::string code(const STAGE_MAP& map, unsigned state) {
  std::string text;
  for (unsigned column = 0; column < map.columns[0]; ++column) {
    text += static_cast<char>('0' + map.bit(0, state, column));
  }
  return text;
}

const STAGE_MEMBER* first_member(const std::vector<STAGE_PAIR>& side) {
  for (const STAGE_PAIR& pair : side) {
    const std::vector<STAGE_MEMBER>& group = pair.same.empty() ? pair.inverse : pair.same;
    if (!group.empty()) {
      return &group.front();
    }
  }
  return nullptr;
}

}  // namespace

void FINDINGS::look_at(const STAGE_MAP& map, const NETLIST& source, const std::string& stage) {
  if (map.is_machine && m_unreachable.size() < MOST_FINDINGS) {
    look_at_codes(map, source);
  }
  if (m_contradictions.size() < MOST_FINDINGS) {
    look_at_groups(map, source, stage);
  }
}

void FINDINGS::look_at_codes(const STAGE_MAP& map, const NETLIST& source) {
  const STAGE_MEMBER* member = first_member(map.sides[0]);
  if (member == nullptr || map.states == 0) {
    return;
  }
  std::set<std::string> codes;
  for (unsigned state = 0; state < map.states; ++state) {
    codes.insert(code(map, state));
  }
  const bool is_counted = map.columns[0] <= MOST_COUNTED_COLUMNS;
  const std::size_t all = is_counted ? std::size_t{1} << map.columns[0] : SIZE_MAX;
  if (codes.size() < all) {
    const std::string missing =
        is_counted ? std::to_string(all - codes.size()) : fmt::format("nearly 2^{}", map.columns[0]);
    m_unreachable.push_back({source.find(member->key), missing, static_cast<std::uint32_t>(codes.size())});
  }
}

// Finds a register that is in a group with its own inverse, and a machine that is in no state.
void FINDINGS::look_at_groups(const STAGE_MAP& map, const NETLIST& source, const std::string& stage) {
  for (const std::vector<STAGE_PAIR>& side : map.sides) {
    for (const STAGE_PAIR& pair : side) {
      for (const STAGE_MEMBER& member : pair.inverse) {
        const auto is_it = [&](const STAGE_MEMBER& other) { return other.is_register && other.key == member.key; };
        if (member.is_register && std::any_of(pair.same.begin(), pair.same.end(), is_it)) {
          add({fmt::format("{} says that {} equals its own inverse", stage, member.key.name),
               &side == &map.sides[0] ? source.find(member.key) : NO_REGISTER});
        }
      }
    }
  }
  const STAGE_MEMBER* first = first_member(map.sides[0]);
  if (map.is_machine && map.states == 0 && first != nullptr) {
    add({fmt::format("{} leaves the machine of {} no state", stage, first->key.name), source.find(first->key)});
  }
}

}  // namespace kptdb
