// Puts the registers of all netlists into classes of equal and inverse ones:
// disjoint sets with parity.
//
// Ownership: owns its arrays. A register is a number here, which is called a node.
//
// The first node of a class is its leader, so results that are written in the
// order of nodes are in the order of the first netlist. Nearly linear: every walk
// halves the paths that it follows.
#ifndef KPT_CLASSES_H
#define KPT_CLASSES_H

#include <cstdint>

#include "db/kpt/composition/kpt_vector.h"

class KPT_CLASSES {
 public:
  using NODE = std::uint32_t;

  /// A node expressed by its leader: the leader's value, or the inverse.
  struct LITERAL {
    NODE leader;
    bool inverted;
  };
  enum OUTCOME { NOTHING_NEW, TAKEN, CONTRADICTION };
  /// What is known of a class besides its members.
  enum MARK : std::uint8_t {
    UNMARKED = 0,
    IS_ZERO = 1,
    IS_ONE = 2,
    PARTIAL = 4,         // what became of it is known only in part
    WITHOUT_FANOUT = 8,  // a member was removed because it drove nothing
    AT_AN_END = 16       // a member is of the first or the last netlist
  };

  void reserve(std::size_t nodes) {
    m_links.reserve(nodes);
    m_marks.reserve(nodes);
  }
  NODE add(MARK mark = UNMARKED) {
    const auto node = static_cast<NODE>(m_links.size());
    m_links.push_back(node << 1U);
    m_marks.push_back(mark);
    return node;
  }
  std::size_t size() const { return m_links.size(); }

  LITERAL find(NODE node) {
    std::uint32_t inverted = 0;
    for (std::uint32_t link = m_links[node]; link >> 1U != node; link = m_links[node]) {
      const std::uint32_t above = m_links[link >> 1U];
      if (above >> 1U != link >> 1U) {
        link = above ^ (link & 1U);
        m_links[node] = link;
      }
      inverted ^= link & 1U;
      node = link >> 1U;
    }
    return {node, inverted != 0};
  }

  /// Records that two nodes are equal, or inverse. `*absorbed` gets the leader that is one no more.
  OUTCOME unite(NODE a, NODE b, bool inverse, NODE* absorbed = nullptr);
  /// Records that a node is constant.
  OUTCOME set_value(NODE node, bool value);

  bool has_value(NODE leader) const { return (m_marks[leader] & (IS_ZERO | IS_ONE)) != 0; }
  bool value(NODE leader) const { return (m_marks[leader] & IS_ONE) != 0; }
  void mark(NODE node, MARK mark) { m_marks[find(node).leader] |= mark; }
  bool is_marked(NODE leader, MARK mark) const { return (m_marks[leader] & mark) != 0; }

 private:
  KPT_VECTOR<std::uint32_t> m_links;  // the parent node, and whether the node is its inverse
  KPT_VECTOR<std::uint8_t> m_marks;   // for leaders
};

#endif
