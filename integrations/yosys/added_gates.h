// Gates that are added to a module, without those that constants make superfluous.
//
// Ownership: the module outlives the object, and owns the gates.
#ifndef ADDED_GATES_H
#define ADDED_GATES_H

#include "kernel/yosys.h"

namespace kpt_yosys {

namespace RTLIL = Yosys::RTLIL;

/// Whether it is a constant other than 0 and 1.
inline bool is_undefined(RTLIL::SigBit bit) {
  return bit.wire == nullptr && bit.data != RTLIL::State::S0 && bit.data != RTLIL::State::S1;
}

class ADDED_GATES {
 public:
  using SigBit = RTLIL::SigBit;
  using State = RTLIL::State;

  explicit ADDED_GATES(RTLIL::Module* module) : m_module(module) {}

  SigBit inverse(SigBit a) {
    if (a.wire == nullptr) {
      return a == State::S1 ? State::S0 : State::S1;
    }
    const auto known = m_inverses.find(a);
    if (known != m_inverses.end()) {
      return known->second;
    }
    const SigBit inverse = m_module->NotGate(NEW_ID, a);
    m_inverses[a] = inverse;
    m_inverses[inverse] = a;
    return inverse;
  }
  SigBit both(SigBit a, SigBit b) {
    if (a == State::S0 || b == State::S0) {
      return State::S0;
    }
    return a == State::S1 || a == b ? b : b == State::S1 ? a : m_module->AndGate(NEW_ID, a, b);
  }
  SigBit either(SigBit a, SigBit b) {
    if (a == State::S1 || b == State::S1) {
      return State::S1;
    }
    return a == State::S0 || a == b ? b : b == State::S0 ? a : m_module->OrGate(NEW_ID, a, b);
  }
  SigBit differ(SigBit a, SigBit b) {
    if (a == b) {
      return State::S0;
    }
    if (a.wire == nullptr) {
      return a == State::S1 ? inverse(b) : b;
    }
    if (b.wire == nullptr) {
      return b == State::S1 ? inverse(a) : a;
    }
    return m_module->XorGate(NEW_ID, a, b);
  }
  SigBit chosen(SigBit select, SigBit one, SigBit zero) {
    if (select.wire == nullptr || one == zero) {
      return select == State::S1 ? one : zero;
    }
    return m_module->MuxGate(NEW_ID, zero, one, select);
  }

 private:
  RTLIL::Module* m_module;
  Yosys::dict<SigBit, SigBit> m_inverses;
};

}  // namespace kpt_yosys

#endif
