// What the gates of Yosys compute, in any algebra.
//
// An algebra has the type VALUE and the functions inverse(a), both(a, b), differ(a, b) and
// chosen(select, one, zero).
//
// Ownership: plain values.
#ifndef GATE_FUNCTIONS_H
#define GATE_FUNCTIONS_H

#include <string_view>

namespace kpt_yosys {

template <class VALUE>
struct GATE_INPUTS {
  VALUE a, b, c, d, s;  // by port
};

/// False for a type that is no gate. `type` is without its "$_" and "_".
template <class ALGEBRA, class VALUE = typename ALGEBRA::VALUE>
bool gate_value(ALGEBRA& in, std::string_view type, const GATE_INPUTS<VALUE>& of, VALUE& value) {
  struct GATE {
    std::string_view m_type;
    VALUE (*m_function)(ALGEBRA&, const GATE_INPUTS<VALUE>&);
  };
  static constexpr auto either = [](ALGEBRA& m, VALUE x, VALUE y) {
    return m.inverse(m.both(m.inverse(x), m.inverse(y)));
  };
  using I = const GATE_INPUTS<VALUE>&;
  static constexpr GATE GATES[] = {
      {"BUF", [](ALGEBRA& m, I i) { return m.inverse(m.inverse(i.a)); }},
      {"NOT", [](ALGEBRA& m, I i) { return m.inverse(i.a); }},
      {"AND", [](ALGEBRA& m, I i) { return m.both(i.a, i.b); }},
      {"NAND", [](ALGEBRA& m, I i) { return m.inverse(m.both(i.a, i.b)); }},
      {"OR", [](ALGEBRA& m, I i) { return either(m, i.a, i.b); }},
      {"NOR", [](ALGEBRA& m, I i) { return m.inverse(either(m, i.a, i.b)); }},
      {"XOR", [](ALGEBRA& m, I i) { return m.differ(i.a, i.b); }},
      {"XNOR", [](ALGEBRA& m, I i) { return m.inverse(m.differ(i.a, i.b)); }},
      {"ANDNOT", [](ALGEBRA& m, I i) { return m.both(i.a, m.inverse(i.b)); }},
      {"ORNOT", [](ALGEBRA& m, I i) { return either(m, i.a, m.inverse(i.b)); }},
      {"MUX", [](ALGEBRA& m, I i) { return m.chosen(i.s, i.b, i.a); }},
      {"NMUX", [](ALGEBRA& m, I i) { return m.inverse(m.chosen(i.s, i.b, i.a)); }},
      {"AOI3", [](ALGEBRA& m, I i) { return m.inverse(either(m, m.both(i.a, i.b), i.c)); }},
      {"OAI3", [](ALGEBRA& m, I i) { return m.inverse(m.both(either(m, i.a, i.b), i.c)); }},
      {"AOI4", [](ALGEBRA& m, I i) { return m.inverse(either(m, m.both(i.a, i.b), m.both(i.c, i.d))); }},
      {"OAI4", [](ALGEBRA& m, I i) { return m.inverse(m.both(either(m, i.a, i.b), either(m, i.c, i.d))); }},
  };
  for (const GATE& gate : GATES) {
    if (gate.m_type == type) {
      value = gate.m_function(in, of);
      return true;
    }
  }
  return false;
}

}  // namespace kpt_yosys

#endif
