#include "maps.h"

#include <algorithm>

namespace kptdb {

namespace {

// A larger table is cut, and the page says so.
constexpr unsigned MOST_STATES = 4096;
constexpr unsigned MOST_BITS = 1U << 18U;

enum SHAPE : unsigned { ANY_SHAPE, ONE_TO_ONE_SAME, ONE_TO_ONE_INVERSE };

bool is_one(const std::vector<STAGE_MEMBER>& group, const std::vector<STAGE_MEMBER>& other) {
  return group.size() == 1 && other.empty();
}

// Nearly every map has one of the two small shapes.
SHAPE shape_of(const STAGE_MAP& map) {
  const auto& [r, t] = map.sides;
  if (map.is_machine || r.size() != 1 || t.size() != 1 || !is_one(r[0].same, r[0].inverse)) {
    return ANY_SHAPE;
  }
  return is_one(t[0].same, t[0].inverse)   ? ONE_TO_ONE_SAME
         : is_one(t[0].inverse, t[0].same) ? ONE_TO_ONE_INVERSE
                                           : ANY_SHAPE;
}

}  // namespace

void MAP_COLUMN::add(const STAGE_MAP& map, std::uint32_t attributes) {
  ++m_size;
  const SHAPE shape = shape_of(map);
  m_column.add((map.is_machine ? 1U : 0U) | map.reason << 1U | shape << 4U);
  m_column.add(attributes);
  if (shape != ANY_SHAPE) {
    const STAGE_PAIR& other = map.sides[1][0];
    add_member(0, map.sides[0][0].same[0]);
    add_member(1, shape == ONE_TO_ONE_SAME ? other.same[0] : other.inverse[0]);
    return;
  }
  m_column.add(static_cast<std::uint32_t>(map.sides[0].size()));
  m_column.add(static_cast<std::uint32_t>(map.sides[1].size()));
  add_side(0, map.sides[0]);
  add_side(1, map.sides[1]);
  if (map.is_machine) {
    add_table(map);
  }
}

// Most members follow each other, so each is written as its distance from the register after the last member.
void MAP_COLUMN::add_member(unsigned side, const STAGE_MEMBER& member) {
  const NETLIST& netlist = *m_netlists[side];
  const std::int64_t number = member.is_register ? netlist.find(member.key) : netlist.size();
  m_column.add_signed(number - m_last[side] - 1);
  m_last[side] = number;
}

void MAP_COLUMN::add_group(unsigned side, const std::vector<STAGE_MEMBER>& group) {
  m_column.add(static_cast<std::uint32_t>(group.size()));
  for (const STAGE_MEMBER& member : group) {
    add_member(side, member);
  }
}

void MAP_COLUMN::add_side(unsigned side, const std::vector<STAGE_PAIR>& pairs) {
  for (const STAGE_PAIR& pair : pairs) {
    add_group(side, pair.same);
    add_group(side, pair.inverse);
  }
}

void MAP_COLUMN::add_table(const STAGE_MAP& map) {
  const unsigned width = std::max(1U, map.columns[0] + map.columns[1]);
  const unsigned listed = std::min({map.states, MOST_STATES, MOST_BITS / width});
  for (const unsigned number : {map.columns[0], map.columns[1], map.states, listed}) {
    m_column.add(number);
  }
  for (unsigned state = 0; state < listed; ++state) {
    for (unsigned side = 0; side < 2; ++side) {
      for (unsigned column = 0; column < map.columns[side]; ++column) {
        m_column.add(map.bit(side, state, column));
      }
    }
  }
}

}  // namespace kptdb
