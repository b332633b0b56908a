// A register of one netlist and a register of another, or a constant, that hold the same value or the inverse.
//
// Ownership: none.
#ifndef REGISTER_PAIR_H
#define REGISTER_PAIR_H

namespace kpt_yosys {

/// Both are numbers in storage(); m_after is -1 for the constant 0.
struct REGISTER_PAIR {
  int m_before = -1;
  int m_after = -1;
  bool m_inverted = false;
};

}  // namespace kpt_yosys

#endif
