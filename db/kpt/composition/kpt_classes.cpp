#include "db/kpt/composition/kpt_classes.h"

#include <utility>

namespace {

constexpr std::uint8_t VALUES = KPT_CLASSES::IS_ZERO | KPT_CLASSES::IS_ONE;

// Marks without a value are the same for the inverse.
std::uint8_t turned(std::uint8_t marks) {
  return (marks & VALUES) == 0 ? marks : static_cast<std::uint8_t>(marks ^ VALUES);
}

}  // namespace

KPT_CLASSES::OUTCOME KPT_CLASSES::unite(NODE a, NODE b, bool inverse, NODE* absorbed) {
  LITERAL first = find(a);
  LITERAL second = find(b);
  const bool turn = first.inverted != (second.inverted != inverse);
  if (first.leader == second.leader) {
    return turn ? CONTRADICTION : NOTHING_NEW;
  }
  if (second.leader < first.leader) {
    std::swap(first, second);
  }
  const std::uint8_t kept = m_marks[first.leader];
  const std::uint8_t joined = turn ? turned(m_marks[second.leader]) : m_marks[second.leader];
  if (((kept | joined) & VALUES) == VALUES) {
    return CONTRADICTION;
  }
  m_marks[first.leader] = static_cast<std::uint8_t>(kept | joined);
  m_links[second.leader] = first.leader << 1U | (turn ? 1U : 0U);
  if (absorbed != nullptr) {
    *absorbed = second.leader;
  }
  return TAKEN;
}

KPT_CLASSES::OUTCOME KPT_CLASSES::set_value(NODE node, bool value) {
  const LITERAL literal = find(node);
  std::uint8_t& marks = m_marks[literal.leader];
  const std::uint8_t mark = value != literal.inverted ? IS_ONE : IS_ZERO;
  if ((marks & VALUES) != 0) {
    return (marks & mark) != 0 ? NOTHING_NEW : CONTRADICTION;
  }
  marks |= mark;
  return TAKEN;
}
