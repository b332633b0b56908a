// The algebra of literals of a SAT solver, for FRAME.
//
// Ownership: the owner of the algebra also owns the solver, or the solver outlives the algebra.
#ifndef LITERALS_H
#define LITERALS_H

#include "kernel/satgen.h"

namespace kpt_yosys {

struct LITERALS {
  using VALUE = int;
  ezSAT& m_solver;

  static VALUE zero() { return ezSAT::CONST_FALSE; }
  static VALUE one() { return ezSAT::CONST_TRUE; }
  VALUE any() { return m_solver.frozen_literal(); }
  VALUE inverse(VALUE a) { return m_solver.NOT(a); }
  VALUE both(VALUE a, VALUE b) { return m_solver.AND(a, b); }
  VALUE differ(VALUE a, VALUE b) { return m_solver.XOR(a, b); }
  VALUE either(VALUE a, VALUE b) { return m_solver.OR(a, b); }
  VALUE chosen(VALUE select, VALUE one, VALUE zero) { return m_solver.ITE(select, one, zero); }
};

/// A solver that gives up a question after a while, for example about a large multiplier.
struct TIMED_SOLVER {
  static constexpr int MOST_SECONDS = 30;  // for one question

  TIMED_SOLVER() { m_solver->setSolverTimeout(MOST_SECONDS); }

  Yosys::ezSatPtr m_solver;
  LITERALS m_literals{*m_solver};
};

}  // namespace kpt_yosys

#endif
