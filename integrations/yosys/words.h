// The algebra of words, for FRAME: 64 values at once.
//
// Ownership: owns its random numbers.
#ifndef WORDS_H
#define WORDS_H

#include <cstdint>
#include <random>

namespace kpt_yosys {

// Each bit of a word is a separate value.
struct WORDS {
  using VALUE = std::uint64_t;
  std::mt19937_64 m_random;

  static VALUE zero() { return 0; }
  static VALUE one() { return ~std::uint64_t{0}; }
  VALUE any() { return m_random(); }
  static VALUE inverse(VALUE a) { return ~a; }
  static VALUE both(VALUE a, VALUE b) { return a & b; }
  static VALUE differ(VALUE a, VALUE b) { return a ^ b; }
  static VALUE either(VALUE a, VALUE b) { return a | b; }
  static VALUE chosen(VALUE select, VALUE one, VALUE zero) { return (select & one) | (~select & zero); }
};

}  // namespace kpt_yosys

#endif
